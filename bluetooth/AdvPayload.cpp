#include "bluetooth/AdvPayload.h"

#include <algorithm>

namespace connectkit::bluetooth {

namespace {
constexpr size_t kHeaderBytes = 4;
}

size_t BuildAdStructure(uint8_t adType, uint16_t identifier, const std::vector<uint8_t>& data,
                        AdvBuffer& out) {
    out.fill(0);
    out[1] = adType;
    out[2] = static_cast<uint8_t>(identifier & 0xFF);
    out[3] = static_cast<uint8_t>(identifier >> 8);
    if (data.size() > out.size() - kHeaderBytes) {
        return 0;
    }
    std::copy(data.begin(), data.end(), out.begin() + kHeaderBytes);
    out[0] = static_cast<uint8_t>(data.size() + kHeaderBytes - 1);
    return data.size() + kHeaderBytes;
}

size_t BuildByFirstByte(const std::vector<uint8_t>& data, AdvBuffer& out) {
    out.fill(0);
    if (data.empty()) {
        return 0;
    }
    if (data[0] == kFirstByteManufacturer) {
        return BuildAdStructure(kAdTypeManufacturer, kCompanyId, data, out);
    }
    if (data[0] == kFirstByteServiceData) {
        return BuildAdStructure(kAdTypeServiceData16, kServiceUuid, data, out);
    }
    return 0;
}

}  // namespace connectkit::bluetooth
