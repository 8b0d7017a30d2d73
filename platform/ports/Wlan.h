#pragma once
// Native Wi-Fi (wlanapi): the client handle, the Wi-Fi interfaces, scans and
// their BSS list, the interface's current connection, connecting and
// disconnecting, and the notifications of the auto-configuration module (ACM)
// and the media-specific module (MSM).
//
// The calls mirror wlanapi one to one and answer its Win32 codes, so the
// Windows backend is a thin layer and the simulated PC answers what Windows
// answers (ERROR_ACCESS_DENIED on the BSS list and the current connection
// when location consent is withheld, ERROR_NOT_FOUND for an unknown interface,
// ERROR_INVALID_HANDLE for a closed handle). What wlanapi allocates is copied
// into the value types below and freed by the backend before the call
// returns; nothing here needs WlanFreeMemory.
//
// Notifications: the callback runs on a platform thread, never the caller's,
// with a record that lives for the call. Its data is the notification's bytes
// exactly as the platform handed them over, whatever their size; read them
// with the decoders of WlanRecords.h, which stay inside them. Registering
// again replaces the callback; sources 0 stops the notifications, after which
// the callback is not called again once the call returns, except for a call
// already under way. CloseHandle waits for callbacks in flight: never call it
// from inside a callback or under the loader lock.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/ports/Guid.h"

namespace connectkit::platform {

// HANDLE from WlanOpenHandle; null is no handle.
using WlanHandle = void*;

inline constexpr uint32_t kWlanClientVersion = 2;

// WLAN_NOTIFICATION_SOURCE_*, a bit set.
inline constexpr uint32_t kWlanSourceNone = 0;
inline constexpr uint32_t kWlanSourceAcm = 0x08;
inline constexpr uint32_t kWlanSourceMsm = 0x10;
inline constexpr uint32_t kWlanSourceAll = 0xFFFF;

// wlan_notification_acm_* codes used here.
inline constexpr uint32_t kAcmScanComplete = 7;
inline constexpr uint32_t kAcmScanFail = 8;
inline constexpr uint32_t kAcmConnectionStart = 9;
inline constexpr uint32_t kAcmConnectionComplete = 10;
inline constexpr uint32_t kAcmConnectionAttemptFail = 11;
inline constexpr uint32_t kAcmDisconnecting = 20;
inline constexpr uint32_t kAcmDisconnected = 21;
// wlan_notification_msm_* codes used here.
inline constexpr uint32_t kMsmAssociating = 1;
inline constexpr uint32_t kMsmAssociated = 2;
inline constexpr uint32_t kMsmAuthenticating = 3;
inline constexpr uint32_t kMsmConnected = 4;
inline constexpr uint32_t kMsmRoamingStart = 5;
inline constexpr uint32_t kMsmRoamingEnd = 6;
inline constexpr uint32_t kMsmDisconnected = 10;
inline constexpr uint32_t kMsmSignalQualityChange = 8;

// WLAN_INTERFACE_STATE
enum class WlanInterfaceState : uint32_t {
    NotReady = 0,
    Connected = 1,
    AdHocNetworkFormed = 2,
    Disconnecting = 3,
    Disconnected = 4,
    Associating = 5,
    Discovering = 6,
    Authenticating = 7,
};

// WLAN_CONNECTION_MODE
enum class WlanConnectionMode : uint32_t {
    Profile = 0,
    TemporaryProfile = 1,
    DiscoverySecure = 2,
    DiscoveryUnsecure = 3,
    Auto = 4,
    Invalid = 5,
};

// DOT11_BSS_TYPE
enum class Dot11BssType : uint32_t { Infrastructure = 1, Independent = 2, Any = 3 };

// WLAN_INTF_OPCODE values the library queries.
enum class WlanIntfOpcode : uint32_t {
    CurrentConnection = 7,
    ChannelNumber = 8,
    Rssi = 0x10000102,
};

using MacAddress = std::array<uint8_t, 6>;

// DOT11_SSID as it lies in memory: the length is what the record claims and
// may exceed the 32 bytes that are really there.
struct Dot11Ssid {
    uint32_t length = 0;
    std::array<uint8_t, 32> bytes{};
};

// WLAN_INTERFACE_INFO
struct WlanInterfaceInfo {
    Guid guid;
    std::wstring description;
    WlanInterfaceState state = WlanInterfaceState::NotReady;
};

// WLAN_BSS_ENTRY, without its information elements.
struct WlanBssEntry {
    Dot11Ssid ssid;
    MacAddress bssid{};
    Dot11BssType bssType = Dot11BssType::Infrastructure;
    int32_t rssi = 0;          // dBm
    uint32_t linkQuality = 0;  // 0 to 100
    uint32_t centerFrequencyKhz = 0;
};

// WLAN_CONNECTION_ATTRIBUTES, its association and security parts flattened.
struct WlanConnectionAttributes {
    WlanInterfaceState state = WlanInterfaceState::NotReady;
    WlanConnectionMode mode = WlanConnectionMode::Invalid;
    std::wstring profileName;
    Dot11Ssid ssid;
    Dot11BssType bssType = Dot11BssType::Infrastructure;
    MacAddress bssid{};
    uint32_t signalQuality = 0;  // 0 to 100
    uint32_t rxRateKbps = 0;
    uint32_t txRateKbps = 0;
    bool securityEnabled = false;
};

// What WlanQueryInterface gives for each opcode; only the opcode's member is
// filled.
struct WlanInterfaceAnswer {
    WlanConnectionAttributes connection;  // CurrentConnection
    uint32_t channel = 0;                 // ChannelNumber
    int32_t rssi = 0;                     // Rssi, dBm
};

// DOT11_BSSID_LIST with its NDIS object header as the caller fills it:
// wlanapi reads `numberOfEntries` entries of `entries`, which holds the
// `totalNumberOfEntries` the caller allocated.
struct Dot11BssidList {
    uint8_t headerType = 0;
    uint8_t headerRevision = 0;
    uint16_t headerSize = 0;
    uint32_t numberOfEntries = 0;
    uint32_t totalNumberOfEntries = 0;
    std::vector<MacAddress> entries;
};

// WLAN_CONNECTION_PARAMETERS. `profile` is the profile's XML for a temporary
// profile, its name otherwise.
struct WlanConnectionParameters {
    WlanConnectionMode mode = WlanConnectionMode::Profile;
    std::wstring profile;
    std::optional<Dot11Ssid> ssid;
    std::optional<Dot11BssidList> desiredBssids;
    Dot11BssType bssType = Dot11BssType::Any;
    uint32_t flags = 0;
};

// L2_NOTIFICATION_DATA, its data copied.
struct WlanNotification {
    uint32_t source = kWlanSourceNone;
    uint32_t code = 0;
    Guid interfaceGuid;
    std::vector<uint8_t> data;
};

// WLAN_NOTIFICATION_CALLBACK
using WlanNotificationCallback = void (*)(WlanNotification* notification, void* context);

class Wlan {
public:
    virtual ~Wlan() = default;

    virtual uint32_t OpenHandle(uint32_t clientVersion, uint32_t& negotiatedVersion,
                                WlanHandle& handle) = 0;
    virtual uint32_t CloseHandle(WlanHandle handle) = 0;
    virtual uint32_t EnumInterfaces(WlanHandle handle,
                                    std::vector<WlanInterfaceInfo>& interfaces) = 0;
    // Starts a scan and returns at once; its end comes as an ACM notification.
    virtual uint32_t Scan(WlanHandle handle, const Guid& interfaceGuid,
                          const std::optional<Dot11Ssid>& ssid,
                          const std::vector<uint8_t>& ieData) = 0;
    virtual uint32_t GetNetworkBssList(WlanHandle handle, const Guid& interfaceGuid,
                                       const std::optional<Dot11Ssid>& ssid, Dot11BssType bssType,
                                       bool securityEnabled,
                                       std::vector<WlanBssEntry>& entries) = 0;
    virtual uint32_t QueryInterface(WlanHandle handle, const Guid& interfaceGuid,
                                    WlanIntfOpcode opcode, WlanInterfaceAnswer& answer) = 0;
    // Returns once the attempt started; its outcome comes as notifications.
    virtual uint32_t Connect(WlanHandle handle, const Guid& interfaceGuid,
                             const WlanConnectionParameters& parameters) = 0;
    virtual uint32_t Disconnect(WlanHandle handle, const Guid& interfaceGuid) = 0;
    // `previousSources`, when not null, receives the sources registered before.
    virtual uint32_t RegisterNotification(WlanHandle handle, uint32_t sources, bool ignoreDuplicate,
                                          WlanNotificationCallback callback, void* context,
                                          uint32_t* previousSources) = 0;
};

}  // namespace connectkit::platform
