#include "commands/Ble.h"

#include <cstdio>

namespace connectkit::tool {

std::string AddressText(uint64_t address) {
    char text[18];
    std::snprintf(
        text, sizeof(text), "%02X:%02X:%02X:%02X:%02X:%02X",
        static_cast<unsigned>(address >> 40 & 0xFF), static_cast<unsigned>(address >> 32 & 0xFF),
        static_cast<unsigned>(address >> 24 & 0xFF), static_cast<unsigned>(address >> 16 & 0xFF),
        static_cast<unsigned>(address >> 8 & 0xFF), static_cast<unsigned>(address & 0xFF));
    return text;
}

}  // namespace connectkit::tool
