#pragma once

#include <string>

namespace connectkit::platform {

class FileSystem {
public:
    virtual ~FileSystem() = default;
    // True for an existing file or directory.
    virtual bool Exists(const std::wstring& path) = 0;
    // Folder of the process's executable, ending in a backslash; empty on failure.
    virtual std::wstring MainModuleDirectory() = 0;
};

}  // namespace connectkit::platform
