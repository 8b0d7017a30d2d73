#include "platform/windows/machine/WinFileSystem.h"

#include <windows.h>

#include <vector>

namespace connectkit::win {

bool WinFileSystem::Exists(const std::wstring& path) {
    return !path.empty() && GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring WinFileSystem::MainModuleDirectory() {
    // Long paths exceed MAX_PATH; grow until the name fits.
    for (DWORD size = MAX_PATH; size <= 32768; size *= 2) {
        std::vector<wchar_t> buffer(size);
        DWORD length = GetModuleFileNameW(nullptr, buffer.data(), size);
        if (length == 0) {
            return L"";
        }
        if (length < size) {
            std::wstring path(buffer.data(), length);
            return path.substr(0, path.find_last_of(L"\\/") + 1);
        }
    }
    return L"";
}

}  // namespace connectkit::win
