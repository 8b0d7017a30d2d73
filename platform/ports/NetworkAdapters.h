#pragma once
// The PC's network adapters, as IP Helper lists them.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace connectkit::platform {

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
};

class NetworkAdapters {
public:
    virtual ~NetworkAdapters() = default;
    // Win32 error code; the list is empty on failure.
    virtual uint32_t List(std::vector<NetworkAdapterInfo>& adapters) = 0;
};

}  // namespace connectkit::platform
