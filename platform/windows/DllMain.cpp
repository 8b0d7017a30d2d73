#include <windows.h>

#include "platform/Platform.h"
#include "platform/windows/DefaultBackend.h"

// Nothing starts when the library is loaded: singletons are created on first
// use, and naming the default backend only stores its factory, so loading
// connectkit.dll on a PC without Wi-Fi Direct or vendor drivers always
// succeeds.
BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(instance);
        connectkit::platform::SetDefaultBackend(&connectkit::win::MakeDefaultBackend);
    }
    return TRUE;
}
