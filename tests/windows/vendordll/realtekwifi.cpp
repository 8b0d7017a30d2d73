// Test double of the Realtek driver library: the simulated driver behind the
// library's ordinals (the .def file numbers them; no names are exported).

#include "platform/sim/wificard/SimWifiDriver.h"
#include "vendordll/Guarded.h"

using namespace connectkit::sim::driver;

extern "C" {

CK_GUARDED_EXPORT(RealtekWiFiGetSupportedChannels, (void* s), Realtek68GetSupportedChannels(s))
CK_GUARDED_EXPORT(RealtekWiFiSetPreferredChannelSettings, (void* s),
                  Realtek69SetPreferredChannelSettings(s))
CK_GUARDED_EXPORT(RealtekWiFiResetPreferredChannelSettings, (),
                  Realtek70ResetPreferredChannelSettings())
CK_GUARDED_EXPORT(RealtekWiFiGetPreferredChannelSetting, (void* s),
                  Realtek71GetPreferredChannelSetting(s))
CK_GUARDED_EXPORT(RealtekWiFiSetLegacyGoScanFilter, (void* s), Realtek72SetLegacyGoScanFilter(s))
CK_GUARDED_EXPORT(RealtekWiFiResetLegacyGoScanFilter, (), Realtek73ResetLegacyGoScanFilter())
CK_GUARDED_EXPORT(RealtekWiFiEnableSoftAPShow, (), Realtek74EnableSoftApShow())
CK_GUARDED_EXPORT(RealtekWiFiDisableSoftAPShow, (), Realtek75DisableSoftApShow())
CK_GUARDED_EXPORT(RealtekWiFiInitialize, (), Realtek76Initialize())
CK_GUARDED_EXPORT(RealtekWiFiDeinitialize, (), Realtek77Deinitialize())

}  // extern "C"
