#include <windows.h>

// Nothing starts when the library is loaded: singletons are created on first
// use, so loading connectkit.dll on a PC without Wi-Fi Direct or vendor
// drivers always succeeds.
BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}
