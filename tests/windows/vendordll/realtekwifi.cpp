// Test double of the Realtek driver library: the simulated driver behind the
// library's ordinals (the .def file numbers them; no names are exported).

#include "platform/sim/wificard/SimWifiDriver.h"
#include "vendordll/Guarded.h"

using connectkit::vendordll::Guarded;
namespace driver = connectkit::sim::driver;

extern "C" {

int RealtekWiFiGetSupportedChannels(void* structure) {
    return Guarded([&] { return driver::Realtek68GetSupportedChannels(structure); });
}

int RealtekWiFiSetPreferredChannelSettings(void* structure) {
    return Guarded([&] { return driver::Realtek69SetPreferredChannelSettings(structure); });
}

int RealtekWiFiResetPreferredChannelSettings() {
    return Guarded([] { return driver::Realtek70ResetPreferredChannelSettings(); });
}

int RealtekWiFiGetPreferredChannelSetting(void* structure) {
    return Guarded([&] { return driver::Realtek71GetPreferredChannelSetting(structure); });
}

int RealtekWiFiSetLegacyGoScanFilter(void* structure) {
    return Guarded([&] { return driver::Realtek72SetLegacyGoScanFilter(structure); });
}

int RealtekWiFiResetLegacyGoScanFilter() {
    return Guarded([] { return driver::Realtek73ResetLegacyGoScanFilter(); });
}

int RealtekWiFiEnableSoftAPShow() {
    return Guarded([] { return driver::Realtek74EnableSoftApShow(); });
}

int RealtekWiFiDisableSoftAPShow() {
    return Guarded([] { return driver::Realtek75DisableSoftApShow(); });
}

int RealtekWiFiInitialize() {
    return Guarded([] { return driver::Realtek76Initialize(); });
}

int RealtekWiFiDeinitialize() {
    return Guarded([] { return driver::Realtek77Deinitialize(); });
}

}  // extern "C"
