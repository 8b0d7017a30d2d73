#include "platform/Platform.h"
#include "platform/sim/DefaultBackend.h"

// libconnectkit.so's counterpart of DllMain: off Windows the shared library
// runs on the simulated PC unless its host installs another backend first.
__attribute__((constructor)) static void NameTheSimulatedPcAsDefault() {
    connectkit::platform::SetDefaultBackend(&connectkit::sim::MakeDefaultBackend);
}
