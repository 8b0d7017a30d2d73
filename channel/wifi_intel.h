#pragma once
// The Intel driver library (murocapi.dll) behind the Wi-Fi driver facade.
//
// Where the library lies is found once per process: first through the
// platform-integration device ("SWC\VID_8086&PID_PIE&SID_0001", whose
// "PiePathHint" value is the library's full path), otherwise through the
// PROSet registry value, which must end in a backslash.

#include <memory>

#include "connectkit/WifiAPI.h"
#include "platform/ports/Loader.h"

namespace ConnectKit {

class WifiIntelAPI final : public IWifiInterface {
public:
    // Status codes.
    static constexpr int kUsable = 0;
    static constexpr int kNoDirectory = -71;
    static constexpr int kLoadFailed = -72;
    static constexpr int kNoPreferredQuery = -73;
    static constexpr int kPreferredQueryFailed = -74;
    static constexpr int kDirectoryMissingButLibraryPresent = -75;
    static constexpr int kNoAdapter = -76;

    // How the library was found, for the whole process.
    enum DiscoveryMode { kNotYet = 0, kProSet = 1, kPlatformIntegration = 2 };
    static DiscoveryMode Discovery();

    WifiIntelAPI();
    ~WifiIntelAPI();

    int GetSupportedChannels(_GO_SUPPORTTED_CHANNELS* channels) override;
    int SetPreferredChannelSettings(_INTEL_GO_PREFERRED_CHANNEL* channels) override;
    int GetPreferredChannelSetting(_GO_OPERATION_CHANNEL_SETTING* setting) override;
    int SetDiscoverFilter(_WIFI_DISCOVER_FILTER* filter) override;
    int ResetPreferredChannelSettings() override;
    int ResetDiscoverFilter() override;
    int SetWifiLegacyGoScanFilter(_WIFI_LEGACY_GO_SCAN_FILTER* filter) override;
    int ResetLegacyGoScanFilter() override;

    int Status() const { return mStatus; }
    int AdapterHandle() const { return mAdapter; }

private:
    int LoadDriver();
    void Reload();
    bool FindDriverDirectory(std::wstring& directory);
    bool FindPlatformIntegrationPath(std::wstring& directory);
    int TakeAdapterHandle();
    void ResolveEntryPoints();
    int Simple(IntelReset entry, uint32_t size, const char* failure, const char* success);

    IntelQuery mQuerySupportedChannels = nullptr;
    IntelSetPreferred mSetPreferredChannelSettings = nullptr;
    IntelQuery mQueryPreferredChannelSetting = nullptr;
    IntelSetWithFlag mSetDiscoveryFilter = nullptr;
    IntelReset mResetPreferredChannelSettings = nullptr;
    IntelReset mResetDiscoveryFilter = nullptr;
    IntelSetWithFlag mSetLegacyGoScanFilter = nullptr;
    IntelReset mResetLegacyGoScanFilter = nullptr;
    int mAdapter = -1;
    std::unique_ptr<connectkit::platform::LoadedLibrary> mModule;
    int mStatus = kUsable;
};

}  // namespace ConnectKit
