// Test double of the Intel driver library: the simulated driver behind the
// real export names of the entries the tests reach (the adapter list, the
// two queries a usable driver needs).

#include "platform/sim/wificard/SimWifiDriver.h"
#include "vendordll/Guarded.h"

using namespace connectkit::sim::driver;

extern "C" {

CK_GUARDED_EXPORT(WifiGetAdapterList, (_INTEL_REQUEST_HEADER * header, void** list),
                  IntelGetAdapterList(header, list))
CK_GUARDED_EXPORT(WifiPanQuerySupportedChannels,
                  (int adapter, _INTEL_REQUEST_HEADER* header, void* structure),
                  IntelQuerySupportedChannels(adapter, header, structure))
CK_GUARDED_EXPORT(WifiPanQueryPreferredChannelSetting,
                  (int adapter, _INTEL_REQUEST_HEADER* header, void* structure),
                  IntelQueryPreferredChannelSetting(adapter, header, structure))

}  // extern "C"
