#pragma once
// wlanapi's structures to and from the port's values. What wlanapi hands
// over is read within the sizes it reports: a BSS list within its total
// size whatever its count claims, texts within their fields, query answers
// only when they are as large as their structure.

// clang-format off
#include <windows.h>
#include <wlanapi.h>
// clang-format on

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/ports/Wlan.h"

namespace connectkit::win {

GUID ToWin(const platform::Guid& guid);
platform::Guid FromWin(const GUID& guid);

// False for an SSID longer than the 32 bytes DOT11_SSID holds.
bool ToWin(const platform::Dot11Ssid& ssid, DOT11_SSID& out);

std::vector<platform::WlanInterfaceInfo> ReadInterfaces(const WLAN_INTERFACE_INFO_LIST& list);
std::vector<platform::WlanBssEntry> ReadBssList(const WLAN_BSS_LIST& list);
// The answer of WlanQueryInterface, `size` bytes at `data`; false when they
// are fewer than the opcode's structure.
bool ReadInterfaceAnswer(platform::WlanIntfOpcode opcode, const void* data, DWORD size,
                         platform::WlanInterfaceAnswer& answer);

// DOT11_BSSID_LIST with room for every entry the port's list holds (and
// for the one the structure declares when it holds none). Null when its
// counts claim more entries than it holds.
class BssidListBuffer {
public:
    static std::optional<BssidListBuffer> From(const platform::Dot11BssidList& list);
    DOT11_BSSID_LIST* Get() { return reinterpret_cast<DOT11_BSSID_LIST*>(bytes_.data()); }

private:
    // uint64_t elements keep the structure aligned.
    std::vector<uint64_t> bytes_;
};

// WLAN_RAW_DATA around the information elements a scan adds to its probes.
std::vector<uint64_t> RawData(const std::vector<uint8_t>& data);

}  // namespace connectkit::win
