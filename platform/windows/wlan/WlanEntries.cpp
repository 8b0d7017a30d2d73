#include "platform/windows/wlan/WlanEntries.h"

#include <wchar.h>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/core/UniqueHandle.h"

namespace connectkit::win {
namespace {

struct LoadedEntries final : WlanEntries {
    LoadedModule library;
};

template <typename Function>
bool Resolve(HMODULE module, const char* name, Function& function, uint32_t& error) {
    // GetProcAddress answers one generic function type; the entry's own
    // type is the one wlanapi.h declares.
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    if (!function) {
        error = GetLastError();
        LogErrorFun("[WLAN] entry %s not found, error %lu", name,
                    static_cast<unsigned long>(error));
        return false;
    }
    return true;
}

}  // namespace

std::shared_ptr<const WlanEntries> LoadWlanEntries(const std::wstring& library, uint32_t& error) {
    auto entries = std::make_shared<LoadedEntries>();
    const DWORD search =
        _wcsicmp(library.c_str(), L"wlanapi.dll") == 0 ? LOAD_LIBRARY_SEARCH_SYSTEM32 : 0;
    entries->library.Reset(LoadLibraryExW(library.c_str(), nullptr, search));
    if (!entries->library) {
        error = GetLastError();
        LogErrorFun(L"[WLAN] loading %ls failed, error %lu", library.c_str(),
                    static_cast<unsigned long>(error));
        return nullptr;
    }
    HMODULE module = entries->library.Get();
    const bool found =
        Resolve(module, "WlanOpenHandle", entries->openHandle, error) &&
        Resolve(module, "WlanCloseHandle", entries->closeHandle, error) &&
        Resolve(module, "WlanEnumInterfaces", entries->enumInterfaces, error) &&
        Resolve(module, "WlanScan", entries->scan, error) &&
        Resolve(module, "WlanGetNetworkBssList", entries->getNetworkBssList, error) &&
        Resolve(module, "WlanQueryInterface", entries->queryInterface, error) &&
        Resolve(module, "WlanConnect", entries->connect, error) &&
        Resolve(module, "WlanDisconnect", entries->disconnect, error) &&
        Resolve(module, "WlanRegisterNotification", entries->registerNotification, error) &&
        Resolve(module, "WlanFreeMemory", entries->freeMemory, error);
    return found ? entries : nullptr;
}

}  // namespace connectkit::win
