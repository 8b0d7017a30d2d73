#include "platform/windows/WinLoader.h"

#include <windows.h>

namespace connectkit::win {
namespace {

class WinLoadedLibrary final : public platform::LoadedLibrary {
public:
    explicit WinLoadedLibrary(HMODULE module) : module_(module) {}
    ~WinLoadedLibrary() override { FreeLibrary(module_); }

    platform::ProcAddress FindSymbol(const std::string& name) override {
        return reinterpret_cast<platform::ProcAddress>(GetProcAddress(module_, name.c_str()));
    }

    platform::ProcAddress FindOrdinal(uint16_t ordinal) override {
        return reinterpret_cast<platform::ProcAddress>(
            GetProcAddress(module_, MAKEINTRESOURCEA(ordinal)));
    }

private:
    HMODULE module_;
};

}  // namespace

std::unique_ptr<platform::LoadedLibrary> WinLoader::Load(const std::wstring& nameOrPath,
                                                         uint32_t& error) {
    // No "missing DLL" dialog box for a vendor library that is not installed.
    UINT previous = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    HMODULE module = LoadLibraryW(nameOrPath.c_str());
    error = module ? ERROR_SUCCESS : GetLastError();
    SetErrorMode(previous);
    return module ? std::make_unique<WinLoadedLibrary>(module) : nullptr;
}

void WinLoader::FreeVendorBuffer(void* buffer) {
    if (buffer) {
        LocalFree(buffer);
    }
}

size_t WinLoader::VendorBufferSize(const void* buffer) {
    // LocalSize answers 0 for memory LocalAlloc did not hand out.
    return buffer ? LocalSize(const_cast<void*>(buffer)) : 0;
}

}  // namespace connectkit::win
