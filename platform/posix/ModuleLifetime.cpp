#include "platform/ModuleLifetime.h"

#include <dlfcn.h>

#include <cstdint>

namespace connectkit::platform {
namespace {

// RTLD_NODELETE on the shared object holding this function keeps it mapped
// after the host's last dlclose. A program that links the library statically
// is found by no RTLD_NOLOAD lookup; it is never unloaded, so there is
// nothing to pin.
bool PinThisModule() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(&KeepModuleLoaded)), &info) ==
            0 ||
        !info.dli_fname) {
        return false;
    }
    return dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE) != nullptr;
}

}  // namespace

void KeepModuleLoaded() {
    static const bool pinned = PinThisModule();
    static_cast<void>(pinned);
}

}  // namespace connectkit::platform
