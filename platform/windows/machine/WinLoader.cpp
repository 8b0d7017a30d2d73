#include "platform/windows/machine/WinLoader.h"

#include <windows.h>

#include <utility>

#include "platform/windows/core/UniqueHandle.h"

namespace connectkit::win {
namespace {

class WinLoadedLibrary final : public platform::LoadedLibrary {
public:
    explicit WinLoadedLibrary(LoadedModule module) : module_(std::move(module)) {}

    platform::ProcAddress FindSymbol(const std::string& name) override {
        return reinterpret_cast<platform::ProcAddress>(GetProcAddress(module_.Get(), name.c_str()));
    }

    platform::ProcAddress FindOrdinal(uint16_t ordinal) override {
        return reinterpret_cast<platform::ProcAddress>(
            GetProcAddress(module_.Get(), MAKEINTRESOURCEA(ordinal)));
    }

private:
    LoadedModule module_;
};

}  // namespace

std::unique_ptr<platform::LoadedLibrary> WinLoader::Load(const std::wstring& nameOrPath,
                                                         uint32_t& error) {
    // No "missing DLL" dialog box for a vendor library that is not installed.
    UINT previous = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    LoadedModule module(LoadLibraryW(nameOrPath.c_str()));
    error = module ? ERROR_SUCCESS : GetLastError();
    SetErrorMode(previous);
    return module ? std::make_unique<WinLoadedLibrary>(std::move(module)) : nullptr;
}

void WinLoader::FreeVendorBuffer(void* buffer) {
    if (buffer) {
        LocalFree(buffer);
    }
}

}  // namespace connectkit::win
