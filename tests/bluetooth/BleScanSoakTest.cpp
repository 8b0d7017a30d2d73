// A million advertisement events through the scanner, the suite's kinds and
// others, must leave the heap where it was and nothing pending behind.
#include <gtest/gtest.h>

#include <atomic>

#include "connectkit/BleScanner.h"
#include "support/RadioWorld.h"
#include "support/Soak.h"

namespace connectkit::test {
namespace {

constexpr uint64_t kReports = 1000000 / kSoakDivisor;
constexpr uint32_t kRoundMs = 1000;

struct Counter : ConnectKit::BleScanner::INotification {
    void OnRecved(uint64_t, uint64_t, const std::vector<uint8_t>&, ConnectKit::BleAdvType,
                  uint16_t) override {
        ++heard;
    }
    void OnStopped() override {}
    std::atomic<uint64_t> heard{0};
};

class BleScanSoakTest : public SimTest {};

TEST_F(BleScanSoakTest, AMillionReportsLeaveNothingBehind) {
    const std::vector<std::vector<platform::BleDataSection>> kinds = {
        {{0xFF, {0x7D, 0x02, 0x0E, 1, 2, 3}}},
        {{0x16, {0x35, 0xFE, 0x0F, 1}}},
        {{0x16, {0xEE, 0xFD, 0x0F, 2}}},
        {{0x16, {0x9F, 0xFE, 1}}},
        {{0x16, {0x35}}},
        {{0xFF, {0x7D, 0x02, 1}}, {0x16, {0x35, 0xFE, 1}}},
    };
    auto world = BluetoothWorld(Controller::Radio::On);
    for (size_t i = 0; i < 2 * kinds.size(); ++i) {
        sim::SimBlePhone phone;
        phone.name = "phone" + std::to_string(i);
        phone.address = 0x5C0A1B2C3D00 + i;
        phone.intervalMs = 1;
        phone.advertisement = kinds[i % kinds.size()];
        world.ble.phones.push_back(phone);
    }
    pc().Apply(world);
    Counter counter;
    ConnectKit::BleScanner scanner;
    scanner.RegisterRecvedCallback(&counter);
    scanner.Start();
    // Every round hears each phone a thousand times, half of them delivered.
    const uint64_t perRound = world.ble.phones.size() * kRoundMs;
    pc().clock().Sleep(kRoundMs);
    const size_t heapAfterWarmUp = HeapInUse();
    for (uint64_t events = perRound; events < kReports; events += perRound) {
        pc().clock().Sleep(kRoundMs);
    }
    scanner.Stop();
    pc().clock().Sleep(100);
    scanner.UnRegisterRecvedCallback(&counter);
    ExpectHeapSettled(heapAfterWarmUp);
    EXPECT_GE(counter.heard.load(), kReports / 2 - perRound);
    EXPECT_EQ(pc().TakeCensus().pendingEvents, 0u);
}

}  // namespace
}  // namespace connectkit::test
