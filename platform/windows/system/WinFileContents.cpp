#include "platform/windows/system/WinFileContents.h"

#include <windows.h>

#include <memory>
#include <vector>

#include "platform/ports/Errors.h"

namespace connectkit::win {
namespace {

// Large enough that the hash, not the system call, sets the pace.
constexpr DWORD kChunk = 1u << 20;

struct HandleCloser {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using FileHandle = std::unique_ptr<void, HandleCloser>;

}  // namespace

long WinFileContents::Read(const std::wstring& path, const Sink& sink) {
    if (path.empty()) {
        return platform::kErrorFileNotFound;
    }
    // Others may read and even replace the file meanwhile: we only look.
    HANDLE opened = CreateFileW(path.c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        return static_cast<long>(GetLastError());
    }
    FileHandle file(opened);
    std::vector<uint8_t> buffer(kChunk);
    for (;;) {
        DWORD got = 0;
        if (!ReadFile(file.get(), buffer.data(), kChunk, &got, nullptr)) {
            return static_cast<long>(GetLastError());
        }
        if (got == 0) {
            return 0;
        }
        if (!sink(buffer.data(), got)) {
            return platform::kErrorOperationAborted;
        }
    }
}

}  // namespace connectkit::win
