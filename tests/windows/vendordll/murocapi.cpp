// Test double of the Intel driver library: the simulated driver behind the
// real export names of the entries the tests reach (the adapter list, the
// two queries a usable driver needs).

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

int WifiPanQueryPreferredChannelSetting(int adapter, _INTEL_REQUEST_HEADER* header,
                                        void* structure) {
    return Guarded(driver::IntelQueryPreferredChannelSetting, adapter, header, structure);
}

}  // extern "C"
