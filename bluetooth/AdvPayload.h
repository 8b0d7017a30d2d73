#pragma once
// The one AD structure this PC advertises per payload, in the 31 bytes a
// legacy advertisement (or scan response) holds:
//   length (n + 3), AD type, identifier low, identifier high, n bytes.
// The identifier is the company (manufacturer form, AD type 0xFF) or the
// 16-bit service UUID (service-data form, AD type 0x16). The length byte is
// written last, after the copy succeeded, so a payload that does not fit
// leaves it 0 and the builder answers 0.

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace connectkit::bluetooth {

inline constexpr size_t kAdvDataMax = 31;
inline constexpr uint16_t kCompanyId = 0x027D;
inline constexpr uint16_t kServiceUuid = 0xFE35;
inline constexpr uint16_t kBeamletUuid = 0xFDEE;
inline constexpr uint8_t kAdTypeManufacturer = 0xFF;
inline constexpr uint8_t kAdTypeServiceData16 = 0x16;
// First bytes of the suite's payloads that pick the form.
inline constexpr uint8_t kFirstByteManufacturer = 14;
inline constexpr uint8_t kFirstByteServiceData = 15;

using AdvBuffer = std::array<uint8_t, kAdvDataMax>;

// Zeroes `out` and builds the structure; the bytes used (n + 4), or 0 when
// n + 4 exceeds the buffer.
size_t BuildAdStructure(uint8_t adType, uint16_t identifier, const std::vector<uint8_t>& data,
                        AdvBuffer& out);

// The form chosen by the payload's first byte (which stays part of the
// data): 14 manufacturer data under kCompanyId, 15 service data under
// kServiceUuid. 0 for an empty payload or any other first byte.
size_t BuildByFirstByte(const std::vector<uint8_t>& data, AdvBuffer& out);

}  // namespace connectkit::bluetooth
