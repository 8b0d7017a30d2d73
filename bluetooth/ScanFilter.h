#pragma once
// Which received advertisements the scanner hands on, and what of them.
// An advertisement counts when it carries exactly one section of the suite's
// own kinds: manufacturer data under kCompanyId, or service data (AD type
// 0x16) of any UUID. Anything else, both kinds together included, is
// dropped without a word: the air is full of other devices.

#include <cstdint>
#include <vector>

#include "platform/ports/BluetoothLE.h"

namespace connectkit::bluetooth {

enum class ScanVerdict {
    Deliver,
    // Not exactly one section of the suite's kinds.
    NotOurs,
    // Service data whose UUID is neither of the suite's two.
    OtherUuid,
    // Service data shorter than its own 2-byte UUID.
    ShortSection,
};

struct ScanDelivery {
    std::vector<uint8_t> payload;
    uint16_t uuid = 0;
};

// Manufacturer data is delivered under kServiceUuid (the company identifier
// is not part of its bytes); service data under its own UUID, 0xFE35 or
// 0xFDEE, without the UUID's two bytes.
ScanVerdict ClassifyAdvertisement(const platform::BleAdvertisementReceived& received,
                                  ScanDelivery& delivery);

}  // namespace connectkit::bluetooth
