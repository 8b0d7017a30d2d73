#pragma once
// The PC's network adapters, as IP Helper lists them, and their DHCP leases.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace connectkit::platform {

inline constexpr uint32_t kErrorInsufficientBuffer = 122;
inline constexpr uint32_t kErrorNoData = 232;

struct NetworkAdapterInfo {
    enum class Kind { Other, Wifi, WiFiDirectVirtual };
    Kind kind = Kind::Other;
    uint32_t index = 0;
    std::wstring description;
    std::array<uint8_t, 6> mac{};
    std::vector<std::string> ipv4;  // dotted
    // IfOperStatusUp: a Wi-Fi Direct virtual adapter is up while a group
    // owner runs on it.
    bool up = false;
    // AdapterName: the adapter's GUID text, "{...}".
    std::string name;
    // FriendlyName: what the user sees ("Wi-Fi"), and what ipconfig takes.
    std::wstring friendlyName;
};

// One entry of the interface table (IP_ADAPTER_INDEX_MAP), which is what
// IpReleaseAddress and IpRenewAddress take.
struct InterfaceIndexEntry {
    uint32_t index = 0;
    std::wstring name;  // "\DEVICE\TCPIP_{...}"
};

class NetworkAdapters {
public:
    virtual ~NetworkAdapters() = default;
    // GetAdaptersAddresses for IPv4, friendly names included. Win32 error
    // code; the list is empty on failure.
    virtual uint32_t List(std::vector<NetworkAdapterInfo>& adapters) = 0;
    // GetAdaptersInfo: the adapters with IPv4 enabled. Each lists at least one
    // address, "0.0.0.0" when it has none; `up` and `friendlyName` stay unset.
    // Win32 error code (ERROR_NO_DATA when there is no adapter); the list is
    // empty on failure.
    virtual uint32_t ListInfo(std::vector<NetworkAdapterInfo>& adapters) = 0;
    // GetInterfaceInfo. ERROR_NO_DATA when no adapter has IPv4 enabled.
    virtual uint32_t InterfaceTable(std::vector<InterfaceIndexEntry>& interfaces) = 0;
    // IpReleaseAddress and IpRenewAddress: the DHCP lease of one interface.
    // Renewing returns once the lease is renewed or the attempt failed.
    virtual uint32_t ReleaseAddress(const InterfaceIndexEntry& entry) = 0;
    virtual uint32_t RenewAddress(const InterfaceIndexEntry& entry) = 0;
};

}  // namespace connectkit::platform
