#pragma once
// The few facts we need from the firmware's SMBIOS table, as
// GetSystemFirmwareTable('RSMB') returns it. The table comes from firmware we
// do not control: every read is bounded by the bytes we were given.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace connectkit::win {

struct SmbiosFacts {
    std::string biosVersion;  // type 0, BIOS Version
    std::string productName;  // type 1, Product Name
    // Type 1 UUID when it is set (neither all zero nor all ones), in the
    // usual text form with the first three fields read little-endian.
    std::optional<std::string> uuid;
};

// `data` is the whole RawSMBIOSData block: its 8-byte header, then the table.
SmbiosFacts ParseSmbios(const uint8_t* data, size_t size);

}  // namespace connectkit::win
