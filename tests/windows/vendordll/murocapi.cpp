// Test double of the Intel driver library: the simulated driver behind the
// library's real export names.

#include "platform/sim/wificard/SimWifiDriver.h"
#include "vendordll/Guarded.h"

using connectkit::vendordll::Guarded;
namespace driver = connectkit::sim::driver;

extern "C" {

int WifiGetAdapterList(_INTEL_REQUEST_HEADER* header, void** list) {
    return Guarded(driver::IntelGetAdapterList, header, list);
}

int WifiPanQuerySupportedChannels(int adapter, _INTEL_REQUEST_HEADER* header, void* structure) {
    return Guarded(driver::IntelQuerySupportedChannels, adapter, header, structure);
}

int WifiPanSetPreferredChannelSettings(int adapter, _INTEL_REQUEST_HEADER* header,
                                       _INTEL_GO_PREFERRED_CHANNEL* channels,
                                       uint32_t* driverResult) {
    return Guarded(driver::IntelSetPreferredChannelSettings, adapter, header, channels,
                   driverResult);
}

int WifiPanQueryPreferredChannelSetting(int adapter, _INTEL_REQUEST_HEADER* header,
                                        void* structure) {
    return Guarded(driver::IntelQueryPreferredChannelSetting, adapter, header, structure);
}

int WifiPanSetDiscoveryFilter(int adapter, _INTEL_REQUEST_HEADER* header, void* structure,
                              uint32_t zero) {
    return Guarded(driver::IntelSetDiscoveryFilter, adapter, header, structure, zero);
}

int WifiPanResetPreferredChannelSettings(int adapter, _INTEL_REQUEST_HEADER* header) {
    return Guarded(driver::IntelResetPreferredChannelSettings, adapter, header);
}

int WifiPanReSetDiscoveryFilter(int adapter, _INTEL_REQUEST_HEADER* header) {
    return Guarded(driver::IntelResetDiscoveryFilter, adapter, header);
}

int WifiLegacyGoSetScanFilter(int adapter, _INTEL_REQUEST_HEADER* header, void* structure,
                              uint32_t zero) {
    return Guarded(driver::IntelSetLegacyGoScanFilter, adapter, header, structure, zero);
}

int WifiPanReSetLegacyGoScanFilter(int adapter, _INTEL_REQUEST_HEADER* header) {
    return Guarded(driver::IntelResetLegacyGoScanFilter, adapter, header);
}

}  // extern "C"
