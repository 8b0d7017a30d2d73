#pragma once
// The Realtek driver library (RealtekWiFi.dll, exports by ordinal only)
// behind the Wi-Fi driver facade. The library answers an empty channel list
// until it is ready; each such answer costs one deinitialise/initialise cycle.

#include <memory>

#include "connectkit/WifiAPI.h"
#include "platform/ports/Loader.h"

namespace ConnectKit {

class WifiRealtekAPI final : public IWifiInterface {
public:
    WifiRealtekAPI();
    ~WifiRealtekAPI();

    int GetSupportedChannels(_GO_SUPPORTTED_CHANNELS* channels) override;
    int SetPreferredChannelSettings(_INTEL_GO_PREFERRED_CHANNEL* channels) override;
    int GetPreferredChannelSetting(_GO_OPERATION_CHANNEL_SETTING* setting) override;
    int SetDiscoverFilter(_WIFI_DISCOVER_FILTER* filter) override;
    int ResetPreferredChannelSettings() override;
    int ResetDiscoverFilter() override;
    int SetWifiLegacyGoScanFilter(_WIFI_LEGACY_GO_SCAN_FILTER* filter) override;
    int ResetLegacyGoScanFilter() override;

    uint32_t ReinitialisationCount() const { return mReinitialisations; }

private:
    // -1, with a log line, when the library or the ordinal is not there.
    int CallWith(uint16_t ordinal, void* structure);
    int Call(uint16_t ordinal);
    int Logged(uint16_t ordinal, void* structure, const char* start, const char* end);

    uint32_t mReinitialisations = 0;
    std::unique_ptr<connectkit::platform::LoadedLibrary> mModule;
};

}  // namespace ConnectKit
