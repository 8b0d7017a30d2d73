// What the air hands the scanner is anyone's word: any number of sections
// of any type and length, manufacturer data of any company, any signal
// strength and type, named or not. The scanner must deliver only the suite's
// UUIDs with payloads taken from within the sections it was handed, read
// nothing outside them, and hand an unknown type on as it came.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "bench/HandedWatcher.h"
#include "connectkit/BleScanner.h"

namespace {

using connectkit::platform::BleAdvertisementReceived;

struct Checker final : ConnectKit::BleScanner::INotification {
    void OnRecved(uint64_t, uint64_t, const std::vector<uint8_t>& payload,
                  ConnectKit::BleAdvType type, uint16_t uuid) override {
        if ((uuid != 0xFE35 && uuid != 0xFDEE) || payload.size() > longest ||
            static_cast<int32_t>(type) != handedType) {
            __builtin_trap();
        }
    }
    void OnStopped() override {}
    size_t longest = 0;
    int32_t handedType = 0;
};

ConnectKit::BleScanner& Scanner(Checker& checker) {
    static ConnectKit::BleScanner* scanner = [&checker] {
        auto& pc = connectkit::bench::HandedPc();
        pc.handOut = true;
        auto* created = new ConnectKit::BleScanner;
        pc.handOut = false;
        created->RegisterRecvedCallback(&checker);
        created->Start();
        return created;
    }();
    return *scanner;
}

std::vector<uint8_t> Bytes(FuzzedDataProvider& input, size_t& longest) {
    auto bytes = input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, 40));
    longest = std::max(longest, bytes.size());
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Checker checker;
    Scanner(checker);
    FuzzedDataProvider input(data, size);
    BleAdvertisementReceived received;
    received.rawSignalStrengthInDBm = input.ConsumeIntegral<int16_t>();
    received.bluetoothAddress = input.ConsumeIntegral<uint64_t>();
    // The runtime's six types and whatever a later one, or a broken one, hands.
    checker.handedType = input.ConsumeIntegral<int32_t>();
    received.advertisementType =
        static_cast<connectkit::platform::BleAdvertisementType>(checker.handedType);
    received.timestamp = input.ConsumeIntegral<int64_t>();
    checker.longest = 0;
    for (size_t i = input.ConsumeIntegralInRange<size_t>(0, 4); i > 0; --i) {
        received.manufacturerData.push_back(
            {input.ConsumeIntegral<uint16_t>(), Bytes(input, checker.longest)});
    }
    for (size_t i = input.ConsumeIntegralInRange<size_t>(0, 8); i > 0; --i) {
        received.dataSections.push_back(
            {input.ConsumeIntegral<uint8_t>(), Bytes(input, checker.longest)});
    }
    connectkit::bench::HandedPc().watcher->Hand(received);
    return 0;
}
