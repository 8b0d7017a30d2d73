#include "platform/ports/WlanRecords.h"

#include <algorithm>
#include <cstring>

namespace connectkit::platform {
namespace {

constexpr size_t kModeOffset = 0;
constexpr size_t kProfileNameOffset = 4;
constexpr size_t kProfileNameChars = 256;
constexpr size_t kSsidOffset = kProfileNameOffset + kProfileNameChars * 2;  // 516
constexpr size_t kBssTypeOffset = kSsidOffset + 4 + 32;                     // 552
// WLAN_CONNECTION_NOTIFICATION_DATA
constexpr size_t kSecurityOffset = kBssTypeOffset + 4;  // 556
constexpr size_t kReasonOffset = kSecurityOffset + 4;   // 560
constexpr size_t kFlagsOffset = kReasonOffset + 4;      // 564
constexpr size_t kProfileXmlOffset = kFlagsOffset + 4;  // 568
// WLAN_MSM_NOTIFICATION_DATA
constexpr size_t kMsmPeerOffset = kBssTypeOffset + 4;          // 556
constexpr size_t kMsmSecurityOffset = kMsmPeerOffset + 6 + 2;  // 564, after padding
constexpr size_t kMsmFirstPeerOffset = kMsmSecurityOffset + 4;
constexpr size_t kMsmLastPeerOffset = kMsmFirstPeerOffset + 4;
constexpr size_t kMsmReasonOffset = kMsmLastPeerOffset + 4;

void Put32(std::vector<uint8_t>& bytes, size_t offset, uint32_t value) {
    for (size_t i = 0; i < 4; ++i) {
        bytes[offset + i] = static_cast<uint8_t>(value >> (8 * i));
    }
}

uint32_t Get32(const std::vector<uint8_t>& bytes, size_t offset) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) {
        value |= static_cast<uint32_t>(bytes[offset + i]) << (8 * i);
    }
    return value;
}

// UTF-16LE code units, without terminator, cut to `maxChars`.
void PutText(std::vector<uint8_t>& bytes, size_t offset, const std::wstring& text,
             size_t maxChars) {
    const size_t count = std::min(text.size(), maxChars);
    for (size_t i = 0; i < count; ++i) {
        const auto unit = static_cast<uint16_t>(text[i]);
        bytes[offset + 2 * i] = static_cast<uint8_t>(unit);
        bytes[offset + 2 * i + 1] = static_cast<uint8_t>(unit >> 8);
    }
}

std::wstring GetText(const std::vector<uint8_t>& bytes, size_t offset, size_t maxChars) {
    std::wstring text;
    for (size_t i = 0; i < maxChars && offset + 2 * i + 1 < bytes.size(); ++i) {
        const auto unit =
            static_cast<wchar_t>(bytes[offset + 2 * i] | (bytes[offset + 2 * i + 1] << 8));
        if (unit == 0) {
            break;
        }
        text.push_back(unit);
    }
    return text;
}

void PutCommon(std::vector<uint8_t>& bytes, WlanConnectionMode mode, const std::wstring& name,
               const Dot11Ssid& ssid, Dot11BssType bssType) {
    Put32(bytes, kModeOffset, static_cast<uint32_t>(mode));
    PutText(bytes, kProfileNameOffset, name, kProfileNameChars - 1);
    Put32(bytes, kSsidOffset, ssid.length);
    std::memcpy(&bytes[kSsidOffset + 4], ssid.bytes.data(), ssid.bytes.size());
    Put32(bytes, kBssTypeOffset, static_cast<uint32_t>(bssType));
}

}  // namespace

std::vector<uint8_t> EncodeConnectionNotification(const WlanConnectionNotificationData& data) {
    // The XML's terminator is part of the record, as wlanapi sends it.
    std::vector<uint8_t> bytes(kProfileXmlOffset + 2 * (data.profileXml.size() + 1), 0);
    PutCommon(bytes, data.mode, data.profileName, data.ssid, data.bssType);
    Put32(bytes, kSecurityOffset, data.securityEnabled ? 1 : 0);
    Put32(bytes, kReasonOffset, data.reasonCode);
    Put32(bytes, kFlagsOffset, data.flags);
    PutText(bytes, kProfileXmlOffset, data.profileXml, data.profileXml.size());
    return bytes;
}

std::vector<uint8_t> EncodeMsmNotification(const WlanMsmNotificationData& data) {
    std::vector<uint8_t> bytes(kMsmNotificationBytes, 0);
    PutCommon(bytes, data.mode, data.profileName, data.ssid, data.bssType);
    std::memcpy(&bytes[kMsmPeerOffset], data.peer.data(), data.peer.size());
    Put32(bytes, kMsmSecurityOffset, data.securityEnabled ? 1 : 0);
    Put32(bytes, kMsmFirstPeerOffset, data.firstPeer ? 1 : 0);
    Put32(bytes, kMsmLastPeerOffset, data.lastPeer ? 1 : 0);
    Put32(bytes, kMsmReasonOffset, data.reasonCode);
    return bytes;
}

bool DecodeConnectionNotification(const std::vector<uint8_t>& bytes,
                                  WlanConnectionNotificationData& data) {
    if (bytes.size() < kConnectionNotificationFixedBytes) {
        return false;
    }
    data.mode = static_cast<WlanConnectionMode>(Get32(bytes, kModeOffset));
    data.profileName = GetText(bytes, kProfileNameOffset, kProfileNameChars);
    data.ssid.length = Get32(bytes, kSsidOffset);
    std::memcpy(data.ssid.bytes.data(), &bytes[kSsidOffset + 4], data.ssid.bytes.size());
    data.bssType = static_cast<Dot11BssType>(Get32(bytes, kBssTypeOffset));
    data.securityEnabled = Get32(bytes, kSecurityOffset) != 0;
    data.reasonCode = Get32(bytes, kReasonOffset);
    data.flags = Get32(bytes, kFlagsOffset);
    data.profileXml = GetText(bytes, kProfileXmlOffset, (bytes.size() - kProfileXmlOffset) / 2);
    return true;
}

}  // namespace connectkit::platform
