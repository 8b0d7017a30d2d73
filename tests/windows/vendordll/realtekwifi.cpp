// Test double of the Realtek driver library: the simulated driver behind the
// library's ordinals (the .def file numbers them; no names are exported).

#include "platform/sim/wificard/SimWifiDriver.h"
#include "vendordll/Guarded.h"

using connectkit::vendordll::Guarded;
namespace driver = connectkit::sim::driver;

extern "C" {

int RealtekWiFiGetSupportedChannels(void* structure) {
    return Guarded(driver::Realtek68GetSupportedChannels, structure);
}

int RealtekWiFiSetPreferredChannelSettings(void* structure) {
    return Guarded(driver::Realtek69SetPreferredChannelSettings, structure);
}

int RealtekWiFiResetPreferredChannelSettings() {
    return Guarded(driver::Realtek70ResetPreferredChannelSettings);
}

int RealtekWiFiGetPreferredChannelSetting(void* structure) {
    return Guarded(driver::Realtek71GetPreferredChannelSetting, structure);
}

int RealtekWiFiSetLegacyGoScanFilter(void* structure) {
    return Guarded(driver::Realtek72SetLegacyGoScanFilter, structure);
}

int RealtekWiFiResetLegacyGoScanFilter() {
    return Guarded(driver::Realtek73ResetLegacyGoScanFilter);
}

int RealtekWiFiEnableSoftAPShow() {
    return Guarded(driver::Realtek74EnableSoftApShow);
}

int RealtekWiFiDisableSoftAPShow() {
    return Guarded(driver::Realtek75DisableSoftApShow);
}

int RealtekWiFiInitialize() {
    return Guarded(driver::Realtek76Initialize);
}

int RealtekWiFiDeinitialize() {
    return Guarded(driver::Realtek77Deinitialize);
}

}  // extern "C"
