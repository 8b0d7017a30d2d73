#include "commands/Ble.h"

#include <cctype>
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

std::string HexText(const std::vector<uint8_t>& bytes) {
    static const char kDigits[] = "0123456789abcdef";
    std::string text;
    for (uint8_t byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

bool ParseHex(const std::string& text, std::vector<uint8_t>& bytes) {
    if (text.size() % 2 != 0) {
        return false;
    }
    bytes.clear();
    for (size_t i = 0; i < text.size(); i += 2) {
        if (!std::isxdigit(static_cast<unsigned char>(text[i])) ||
            !std::isxdigit(static_cast<unsigned char>(text[i + 1]))) {
            return false;
        }
        bytes.push_back(static_cast<uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
    }
    return true;
}

}  // namespace connectkit::tool
