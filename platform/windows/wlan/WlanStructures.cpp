#include "platform/windows/wlan/WlanStructures.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "platform/windows/core/FieldText.h"

namespace connectkit::win {
namespace {

platform::Dot11Ssid FromWin(const DOT11_SSID& ssid) {
    platform::Dot11Ssid out;
    // The claimed length is kept: the library decides what a length over
    // the field means and reads no further than the field.
    out.length = ssid.uSSIDLength;
    std::memcpy(out.bytes.data(), ssid.ucSSID, out.bytes.size());
    return out;
}

platform::MacAddress FromWin(const DOT11_MAC_ADDRESS& address) {
    platform::MacAddress out{};
    std::memcpy(out.data(), address, out.size());
    return out;
}

template <typename T>
size_t Units(size_t bytes) {
    return (bytes + sizeof(T) - 1) / sizeof(T);
}

}  // namespace

GUID ToWin(const platform::Guid& guid) {
    GUID out{};
    out.Data1 = guid.data1;
    out.Data2 = guid.data2;
    out.Data3 = guid.data3;
    std::copy(guid.data4.begin(), guid.data4.end(), out.Data4);
    return out;
}

platform::Guid FromWin(const GUID& guid) {
    platform::Guid out;
    out.data1 = guid.Data1;
    out.data2 = guid.Data2;
    out.data3 = guid.Data3;
    std::copy(guid.Data4, guid.Data4 + 8, out.data4.begin());
    return out;
}

bool ToWin(const platform::Dot11Ssid& ssid, DOT11_SSID& out) {
    if (ssid.length > sizeof(out.ucSSID)) {
        return false;
    }
    out.uSSIDLength = ssid.length;
    std::memcpy(out.ucSSID, ssid.bytes.data(), sizeof(out.ucSSID));
    return true;
}

std::vector<platform::WlanInterfaceInfo> ReadInterfaces(const WLAN_INTERFACE_INFO_LIST& list) {
    // wlanapi reports no size for this list, only its count.
    std::vector<platform::WlanInterfaceInfo> interfaces;
    for (DWORD i = 0; i < list.dwNumberOfItems; ++i) {
        const WLAN_INTERFACE_INFO& entry = list.InterfaceInfo[i];
        interfaces.push_back({FromWin(entry.InterfaceGuid),
                              FieldText(entry.strInterfaceDescription),
                              static_cast<platform::WlanInterfaceState>(entry.isState)});
    }
    return interfaces;
}

std::vector<platform::WlanBssEntry> ReadBssList(const WLAN_BSS_LIST& list) {
    constexpr size_t kHeader = offsetof(WLAN_BSS_LIST, wlanBssEntries);
    const size_t room =
        list.dwTotalSize > kHeader ? (list.dwTotalSize - kHeader) / sizeof(WLAN_BSS_ENTRY) : 0;
    const size_t count = std::min<size_t>(list.dwNumberOfItems, room);
    // The structure declares one entry; the others follow it.
    const WLAN_BSS_ENTRY* first = list.wlanBssEntries;
    std::vector<platform::WlanBssEntry> entries;
    for (size_t i = 0; i < count; ++i) {
        const WLAN_BSS_ENTRY& entry = first[i];
        platform::WlanBssEntry out;
        out.ssid = FromWin(entry.dot11Ssid);
        out.bssid = FromWin(entry.dot11Bssid);
        out.bssType = static_cast<platform::Dot11BssType>(entry.dot11BssType);
        out.rssi = entry.lRssi;
        out.linkQuality = entry.uLinkQuality;
        out.centerFrequencyKhz = entry.ulChCenterFrequency;
        entries.push_back(out);
    }
    return entries;
}

bool ReadInterfaceAnswer(platform::WlanIntfOpcode opcode, const void* data, DWORD size,
                         platform::WlanInterfaceAnswer& answer) {
    switch (opcode) {
        case platform::WlanIntfOpcode::CurrentConnection: {
            if (size < sizeof(WLAN_CONNECTION_ATTRIBUTES)) {
                return false;
            }
            const auto& attributes = *static_cast<const WLAN_CONNECTION_ATTRIBUTES*>(data);
            const auto& association = attributes.wlanAssociationAttributes;
            auto& out = answer.connection;
            out.state = static_cast<platform::WlanInterfaceState>(attributes.isState);
            out.mode = static_cast<platform::WlanConnectionMode>(attributes.wlanConnectionMode);
            out.profileName = FieldText(attributes.strProfileName);
            out.ssid = FromWin(association.dot11Ssid);
            out.bssType = static_cast<platform::Dot11BssType>(association.dot11BssType);
            out.bssid = FromWin(association.dot11Bssid);
            out.signalQuality = association.wlanSignalQuality;
            out.rxRateKbps = association.ulRxRate;
            out.txRateKbps = association.ulTxRate;
            out.securityEnabled = attributes.wlanSecurityAttributes.bSecurityEnabled != FALSE;
            return true;
        }
        case platform::WlanIntfOpcode::ChannelNumber:
            if (size < sizeof(ULONG)) {
                return false;
            }
            answer.channel = *static_cast<const ULONG*>(data);
            return true;
        case platform::WlanIntfOpcode::Rssi:
            if (size < sizeof(LONG)) {
                return false;
            }
            answer.rssi = *static_cast<const LONG*>(data);
            return true;
    }
    return false;
}

std::optional<BssidListBuffer> BssidListBuffer::From(const platform::Dot11BssidList& list) {
    const size_t held = list.entries.size();
    if (list.numberOfEntries > held || list.totalNumberOfEntries > std::max<size_t>(held, 1)) {
        return std::nullopt;
    }
    constexpr size_t kHeader = offsetof(DOT11_BSSID_LIST, BSSIDs);
    const size_t bytes = kHeader + std::max<size_t>(held, 1) * sizeof(DOT11_MAC_ADDRESS);
    BssidListBuffer buffer;
    buffer.bytes_.assign(Units<uint64_t>(bytes), 0);
    DOT11_BSSID_LIST* out = buffer.Get();
    out->Header.Type = list.headerType;
    out->Header.Revision = list.headerRevision;
    out->Header.Size = list.headerSize;
    out->uNumOfEntries = list.numberOfEntries;
    out->uTotalNumOfEntries = list.totalNumberOfEntries;
    auto* addresses = reinterpret_cast<uint8_t*>(out->BSSIDs);
    for (size_t i = 0; i < held; ++i) {
        std::memcpy(addresses + i * sizeof(DOT11_MAC_ADDRESS), list.entries[i].data(),
                    sizeof(DOT11_MAC_ADDRESS));
    }
    return buffer;
}

std::vector<uint64_t> RawData(const std::vector<uint8_t>& data) {
    constexpr size_t kHeader = offsetof(WLAN_RAW_DATA, DataBlob);
    std::vector<uint64_t> buffer(Units<uint64_t>(kHeader + std::max<size_t>(data.size(), 1)), 0);
    auto* raw = reinterpret_cast<WLAN_RAW_DATA*>(buffer.data());
    raw->dwDataSize = static_cast<DWORD>(data.size());
    std::copy(data.begin(), data.end(), raw->DataBlob);
    return buffer;
}

}  // namespace connectkit::win
