#pragma once
// The records that Native Wi-Fi notifications carry, as bytes laid out the
// way wlanapi lays them out on 64-bit Windows. The Windows backend hands the
// bytes over as they came; the simulated PC and the tests build them here.
// Decoding never reads past the bytes there are: a record too short for its
// fixed part is refused, and the texts stop at their field's end when no
// terminator comes first.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/ports/Wlan.h"

namespace connectkit::platform {

// WLAN_CONNECTION_NOTIFICATION_DATA (ACM connection notifications).
struct WlanConnectionNotificationData {
    WlanConnectionMode mode = WlanConnectionMode::TemporaryProfile;
    std::wstring profileName;  // at most 255 characters are kept
    Dot11Ssid ssid;
    Dot11BssType bssType = Dot11BssType::Infrastructure;
    bool securityEnabled = false;
    uint32_t reasonCode = 0;
    uint32_t flags = 0;
    std::wstring profileXml;
};

// WLAN_MSM_NOTIFICATION_DATA (MSM notifications). Its first fields lie where
// the connection record has them (mode, profile name, SSID, BSS type).
struct WlanMsmNotificationData {
    WlanConnectionMode mode = WlanConnectionMode::TemporaryProfile;
    std::wstring profileName;
    Dot11Ssid ssid;
    Dot11BssType bssType = Dot11BssType::Infrastructure;
    MacAddress peer{};
    bool securityEnabled = false;
    bool firstPeer = false;
    bool lastPeer = false;
    uint32_t reasonCode = 0;
};

// Bytes of the fixed part, up to and including the flags.
inline constexpr size_t kConnectionNotificationFixedBytes = 568;
inline constexpr size_t kMsmNotificationBytes = 580;

std::vector<uint8_t> EncodeConnectionNotification(const WlanConnectionNotificationData& data);
std::vector<uint8_t> EncodeMsmNotification(const WlanMsmNotificationData& data);
// False when the bytes are fewer than the fixed part.
bool DecodeConnectionNotification(const std::vector<uint8_t>& bytes,
                                  WlanConnectionNotificationData& data);

}  // namespace connectkit::platform
