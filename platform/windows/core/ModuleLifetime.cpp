#include "platform/ModuleLifetime.h"

#include <windows.h>

#include "SDK/Util/LogTool/LogTool.h"

namespace connectkit::platform {
namespace {

// The module holding this function: connectkit.dll, or the program that
// links the library statically (where pinning changes nothing).
bool PinThisModule() {
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
            reinterpret_cast<LPCWSTR>(reinterpret_cast<uintptr_t>(&KeepModuleLoaded)), &module)) {
        LogErrorFun("%s GetModuleHandleExW failed, error %lu",
                    "connectkit::platform::KeepModuleLoaded", GetLastError());
        return false;
    }
    return true;
}

}  // namespace

void KeepModuleLoaded() {
    static const bool pinned = PinThisModule();
    static_cast<void>(pinned);
}

}  // namespace connectkit::platform
