#pragma once
// Reading a file's bytes, in chunks, so that neither a large file nor a
// hostile one is ever held whole. Digests and small documents are built
// above the port, the same way on every backend.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace connectkit::platform {

class FileContents {
public:
    // Receives the file's bytes in order; false stops the read.
    using Sink = std::function<bool(const uint8_t* data, size_t size)>;

    virtual ~FileContents() = default;
    // Win32 error codes: kErrorFileNotFound, kErrorAccessDenied (a directory
    // among them), kErrorOperationAborted when the sink stopped.
    virtual long Read(const std::wstring& path, const Sink& sink) = 0;
};

}  // namespace connectkit::platform
