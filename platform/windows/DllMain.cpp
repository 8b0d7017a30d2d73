#include <windows.h>

#include "platform/Platform.h"
#include "platform/windows/DefaultBackend.h"

// Nothing starts when the library is loaded: singletons are created on first
// use, and naming the default backend only stores its factory, so loading
// connectkit.dll on a PC without Wi-Fi Direct or vendor drivers always
// succeeds. Nothing waits when it is unloaded either: once a thread or
// platform handler of ours exists the module keeps itself loaded
// (platform/ModuleLifetime.h), and the singletons that own threads are never
// destroyed, so no destructor under the loader lock joins a thread.
BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(instance);
        connectkit::platform::SetDefaultBackend(&connectkit::win::MakeDefaultBackend);
    }
    return TRUE;
}
