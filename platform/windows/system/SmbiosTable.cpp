#include "platform/windows/system/SmbiosTable.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace connectkit::win {
namespace {

constexpr size_t kRawHeader = 8;
constexpr uint8_t kBiosInformation = 0;
constexpr uint8_t kSystemInformation = 1;
constexpr uint8_t kEndOfTable = 127;

// The structure's strings follow its formatted part; `index` counts from 1.
std::string StringAt(const uint8_t* strings, const uint8_t* end, uint8_t index) {
    if (index == 0) {
        return "";
    }
    const uint8_t* at = strings;
    for (uint8_t i = 1; at < end && *at != 0; ++i) {
        const uint8_t* stop = static_cast<const uint8_t*>(std::memchr(at, 0, end - at));
        if (!stop) {
            return "";
        }
        if (i == index) {
            return std::string(reinterpret_cast<const char*>(at), stop - at);
        }
        at = stop + 1;
    }
    return "";
}

std::optional<std::string> Uuid(const uint8_t* u) {
    bool zero = true;
    bool ones = true;
    for (int i = 0; i < 16; ++i) {
        zero = zero && u[i] == 0x00;
        ones = ones && u[i] == 0xFF;
    }
    if (zero || ones) {
        return std::nullopt;
    }
    char text[37];
    std::snprintf(text, sizeof text,
                  "%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X", u[3],
                  u[2], u[1], u[0], u[5], u[4], u[7], u[6], u[8], u[9], u[10], u[11], u[12], u[13],
                  u[14], u[15]);
    return std::string(text);
}

}  // namespace

SmbiosFacts ParseSmbios(const uint8_t* data, size_t size) {
    SmbiosFacts facts;
    if (!data || size < kRawHeader) {
        return facts;
    }
    uint32_t length = 0;
    std::memcpy(&length, data + 4, sizeof length);
    const uint8_t* at = data + kRawHeader;
    const uint8_t* end = at + std::min<size_t>(length, size - kRawHeader);
    while (end - at >= 4) {
        uint8_t type = at[0];
        uint8_t formatted = at[1];
        if (formatted < 4 || formatted > end - at) {
            break;
        }
        const uint8_t* strings = at + formatted;
        // The string set ends with two zero bytes.
        const uint8_t* next = strings;
        while (next + 1 < end && !(next[0] == 0 && next[1] == 0)) {
            ++next;
        }
        if (next + 1 >= end) {
            break;
        }
        if (type == kBiosInformation && formatted > 0x05) {
            facts.biosVersion = StringAt(strings, next + 1, at[0x05]);
        } else if (type == kSystemInformation && formatted > 0x05) {
            facts.productName = StringAt(strings, next + 1, at[0x05]);
            if (formatted >= 0x08 + 16) {
                facts.uuid = Uuid(at + 0x08);
            }
        } else if (type == kEndOfTable) {
            break;
        }
        at = next + 2;
    }
    return facts;
}

}  // namespace connectkit::win
