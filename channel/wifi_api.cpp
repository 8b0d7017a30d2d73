// The Wi-Fi vendor facade: one implementation per card maker, made on first
// use. The vendor libraries those load (murocapi.dll, RealtekWiFi.dll) are
// never freed when our DLL unloads: the facade's destructor runs among our
// static destructors, under the loader lock, so it releases the
// implementation's memory without running the destructor that would free
// the library (and deinitialise the Realtek driver). Reload and a failed
// adapter look-up free a library only on a caller's thread, never at
// unload.
#include <set>

#include "SDK/Util/LogTool/LogTool.h"
#include "channel/wifi_intel.h"
#include "channel/wifi_realtek.h"
#include "connectkit/WifiAPI.h"
#include "foundation/DebugTrace.h"
#include "platform/suite/NetworkAdapter.h"

namespace ConnectKit {
namespace {

// Implementations a facade made; one set through setWifiInterface belongs
// to whoever set it and is never freed here.
std::set<IWifiInterface*>& Made() {
    static auto* made = new std::set<IWifiInterface*>();
    return *made;
}

}  // namespace

WifiAPI* WifiAPI::GetInstance() {
    static WifiAPI instance;
    return &instance;
}

WifiAPI::WifiAPI() : mWifiInterface(nullptr) {
    WifiCardManuType maker = NetworkAdapter::GetWifiManuType();
    DebugTrace("[WifiAPI] type = %d", maker);
    try {
        if (maker == WIFI_CARD_INTEL) {
            mWifiInterface = new WifiIntelAPI();
        } else if (maker == WIFI_CARD_REALTEK) {
            mWifiInterface = new WifiRealtekAPI();
        }
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", "ConnectKit::WifiAPI::WifiAPI");
    }
    if (!mWifiInterface) {
        LogErrorFun("[WifiAPI] WifiInterface allocation failed");
    }
    if (mWifiInterface) {
        Made().insert(mWifiInterface);
    }
}

// The implementation's memory is released without running its destructor:
// at process end the Realtek library is not deinitialised and the Intel
// library stays loaded, which is what the drivers expect of this process.
WifiAPI::~WifiAPI() {
    if (Made().erase(mWifiInterface) != 0) {
        ::operator delete(static_cast<void*>(mWifiInterface));
    }
    mWifiInterface = nullptr;
}

void WifiAPI::setWifiInterface(IWifiInterface* wifiInterface) {
    mWifiInterface = wifiInterface;
}

// Each operation forwards to the implementation, or fails with its own
// line when the card is neither Intel nor Realtek. What a driver or platform
// call throws stops here: it is logged and the operation fails with -1.
#define CONNECTKIT_FORWARD(Operation, Parameter, Argument)                                      \
    int WifiAPI::Operation(Parameter) {                                                         \
        if (!mWifiInterface) {                                                                  \
            LogErrorFun("[WifiAPI] " #Operation " mWifiInterface is null");                     \
            return -1;                                                                          \
        }                                                                                       \
        try {                                                                                   \
            return mWifiInterface->Operation(Argument);                                         \
        } catch (...) {                                                                         \
            LogErrorFun("%s catch unknown exception...\n", "ConnectKit::WifiAPI::" #Operation); \
            return -1;                                                                          \
        }                                                                                       \
    }

CONNECTKIT_FORWARD(GetSupportedChannels, _GO_SUPPORTTED_CHANNELS* channels, channels)
CONNECTKIT_FORWARD(GetPreferredChannelSetting, _GO_OPERATION_CHANNEL_SETTING* setting, setting)
CONNECTKIT_FORWARD(SetPreferredChannelSettings, _INTEL_GO_PREFERRED_CHANNEL* channels, channels)
CONNECTKIT_FORWARD(ResetPreferredChannelSettings, , )
CONNECTKIT_FORWARD(SetDiscoverFilter, _WIFI_DISCOVER_FILTER* filter, filter)
CONNECTKIT_FORWARD(ResetDiscoverFilter, , )
CONNECTKIT_FORWARD(SetWifiLegacyGoScanFilter, _WIFI_LEGACY_GO_SCAN_FILTER* filter, filter)
CONNECTKIT_FORWARD(ResetLegacyGoScanFilter, , )

#undef CONNECTKIT_FORWARD

}  // namespace ConnectKit
