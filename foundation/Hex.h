#pragma once
// Bytes as lower-case hex digit pairs and back: digests in the integrity
// report, payloads in the tool's output, byte fields in world files.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace connectkit {

inline std::string ToHex(const uint8_t* bytes, size_t size) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string hex;
    hex.reserve(size * 2);
    for (size_t i = 0; i < size; ++i) {
        hex.push_back(kDigits[bytes[i] >> 4]);
        hex.push_back(kDigits[bytes[i] & 0x0F]);
    }
    return hex;
}

inline std::string ToHex(const std::vector<uint8_t>& bytes) {
    return ToHex(bytes.data(), bytes.size());
}

// Appends the pairs of hex digits (either case) in `hex` to `bytes`; false
// for an odd count or a character that is no digit.
inline bool HexToBytes(std::string_view hex, std::vector<uint8_t>& bytes) {
    if (hex.size() % 2 != 0) {
        return false;
    }
    auto nibble = [](char c) -> int {
        if (c >= '0' && c <= '9') {
            return c - '0';
        }
        if (c >= 'a' && c <= 'f') {
            return c - 'a' + 10;
        }
        if (c >= 'A' && c <= 'F') {
            return c - 'A' + 10;
        }
        return -1;
    };
    for (size_t i = 0; i < hex.size(); i += 2) {
        const int high = nibble(hex[i]);
        const int low = nibble(hex[i + 1]);
        if (high < 0 || low < 0) {
            return false;
        }
        bytes.push_back(static_cast<uint8_t>(high * 16 + low));
    }
    return true;
}

}  // namespace connectkit
