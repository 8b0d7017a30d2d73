#pragma once
// The one door to the Wi-Fi card makers' driver software: which channels the
// card may use as a group owner, preferred channels, discovery and scan
// filters. The facade picks the Intel or Realtek implementation by the card's
// maker once per process; for other cards every operation fails with -1.

#include "connectkit/Export.h"
#include "connectkit/WifiDriverTypes.h"

namespace ConnectKit {

class IWifiInterface {
public:
    virtual int GetSupportedChannels(_GO_SUPPORTTED_CHANNELS* channels) = 0;
    virtual int SetPreferredChannelSettings(_INTEL_GO_PREFERRED_CHANNEL* channels) = 0;
    virtual int GetPreferredChannelSetting(_GO_OPERATION_CHANNEL_SETTING* setting) = 0;
    virtual int SetDiscoverFilter(_WIFI_DISCOVER_FILTER* filter) = 0;
    virtual int ResetPreferredChannelSettings() = 0;
    virtual int ResetDiscoverFilter() = 0;
    virtual int SetWifiLegacyGoScanFilter(_WIFI_LEGACY_GO_SCAN_FILTER* filter) = 0;
    virtual int ResetLegacyGoScanFilter() = 0;

protected:
    // Implementations are never deleted through this interface.
    ~IWifiInterface() = default;
};

class CONNECTKIT_API WifiAPI {
public:
    static WifiAPI* GetInstance();

    int GetSupportedChannels(_GO_SUPPORTTED_CHANNELS* channels);
    int GetPreferredChannelSetting(_GO_OPERATION_CHANNEL_SETTING* setting);
    int SetPreferredChannelSettings(_INTEL_GO_PREFERRED_CHANNEL* channels);
    int ResetPreferredChannelSettings();
    int SetDiscoverFilter(_WIFI_DISCOVER_FILTER* filter);
    int ResetDiscoverFilter();
    int SetWifiLegacyGoScanFilter(_WIFI_LEGACY_GO_SCAN_FILTER* filter);
    int ResetLegacyGoScanFilter();

    // Replaces the implementation without deleting the old one.
    void setWifiInterface(IWifiInterface* wifiInterface);

private:
    friend class WifiAPIInspector;
    WifiAPI();
    ~WifiAPI();
    WifiAPI(const WifiAPI&) = delete;
    WifiAPI& operator=(const WifiAPI&) = delete;

    IWifiInterface* mWifiInterface;
};

}  // namespace ConnectKit
