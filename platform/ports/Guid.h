#pragma once
// A GUID as Windows lays it out, for the ports that name interfaces by one.

#include <array>
#include <cstdint>
#include <tuple>

namespace connectkit::platform {

struct Guid {
    uint32_t data1 = 0;
    uint16_t data2 = 0;
    uint16_t data3 = 0;
    std::array<uint8_t, 8> data4{};

    friend bool operator==(const Guid& a, const Guid& b) {
        return std::tie(a.data1, a.data2, a.data3, a.data4) ==
               std::tie(b.data1, b.data2, b.data3, b.data4);
    }
    friend bool operator!=(const Guid& a, const Guid& b) { return !(a == b); }
};

}  // namespace connectkit::platform
