// The advertiser's payload builder takes the host's bytes, and the vendor
// command's answer comes from the driver: any payload must build into the
// 31 bytes a legacy advertisement holds or be refused, and any answer must
// be read within its bytes.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "bluetooth/AdvPayload.h"
#include "bluetooth/VendorHciCommand.h"

using namespace connectkit::bluetooth;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    const uint8_t adType = input.ConsumeIntegral<uint8_t>();
    const uint16_t identifier = input.ConsumeIntegral<uint16_t>();
    const auto payload = input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, 64));
    AdvBuffer out{};
    // A built structure is whole: its length byte covers the rest.
    const auto whole = [&](size_t used) {
        if (used > kAdvDataMax ||
            (used != 0 && (used != payload.size() + 4 || out[0] != used - 1))) {
            __builtin_trap();
        }
    };
    whole(BuildAdStructure(adType, identifier, payload, out));
    whole(BuildByFirstByte(payload, out));
    const auto output = input.ConsumeRemainingBytes<uint8_t>();
    const auto answer = ReadVendorAnswer(output);
    if (answer.event.size() > output.size() || (answer.complete && !answer.fault.empty())) {
        __builtin_trap();
    }
    HexBytes(answer.event);
    return 0;
}
