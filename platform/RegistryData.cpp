#include "platform/ports/Registry.h"

namespace connectkit::platform {

RegistryData RegistryData::FromString(const std::wstring& text) {
    RegistryData data{RegistryType::String, {}};
    data.bytes.reserve((text.size() + 1) * 2);
    for (wchar_t c : text) {
        auto unit = static_cast<uint16_t>(c);
        data.bytes.push_back(static_cast<uint8_t>(unit & 0xFF));
        data.bytes.push_back(static_cast<uint8_t>(unit >> 8));
    }
    data.bytes.push_back(0);
    data.bytes.push_back(0);
    return data;
}

RegistryData RegistryData::FromDword(uint32_t value) {
    RegistryData data{RegistryType::Dword, std::vector<uint8_t>(4)};
    for (int i = 0; i < 4; ++i) {
        data.bytes[i] = static_cast<uint8_t>(value >> (8 * i));
    }
    return data;
}

RegistryData RegistryData::FromBinary(std::vector<uint8_t> bytes) {
    return RegistryData{RegistryType::Binary, std::move(bytes)};
}

bool RegistryData::ToString(std::wstring& text) const {
    if (type != RegistryType::String && type != RegistryType::ExpandString) {
        return false;
    }
    text.clear();
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        auto unit = static_cast<wchar_t>(bytes[i] | (bytes[i + 1] << 8));
        if (unit == 0) {
            break;
        }
        text.push_back(unit);
    }
    return true;
}

bool RegistryData::ToDword(uint32_t& value) const {
    if (type != RegistryType::Dword || bytes.size() < 4) {
        return false;
    }
    value = 0;
    for (int i = 0; i < 4; ++i) {
        value |= static_cast<uint32_t>(bytes[i]) << (8 * i);
    }
    return true;
}

}  // namespace connectkit::platform
