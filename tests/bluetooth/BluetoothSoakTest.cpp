// A million advertisement events through the scanner, and a hundred thousand
// radio state changes to observers, must leave the heap where it was and
// nothing pending behind.
#include <gtest/gtest.h>

#include <atomic>

#include "connectkit/BleScanner.h"
#include "connectkit/BluetoothManage.h"
#include "support/RadioWorld.h"
#include "support/Soak.h"

namespace connectkit::test {
namespace {

struct Counter : ConnectKit::BleScanner::INotification,
                 ConnectKitBluetooth::BluetoothManage::IBluetoothStateChangeNotification {
    void OnRecved(uint64_t, uint64_t, const std::vector<uint8_t>&, ConnectKit::BleAdvType,
                  uint16_t) override {
        ++heard;
    }
    void OnStopped() override {}
    void OnBluetoothStateChanged(platform::RadioState) override { ++heard; }
    std::atomic<uint64_t> heard{0};
};

using BluetoothSoakTest = SimTest;

TEST_F(BluetoothSoakTest, AMillionReportsLeaveNothingBehind) {
    constexpr uint64_t kReports = 1000000 / kSoakDivisor;
    constexpr uint32_t kRoundMs = 1000;
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
        world.ble.phones.push_back(BlePhone(0x5C0A1B2C3D00 + i, kinds[i % kinds.size()]));
        world.ble.phones.back().intervalMs = 1;
    }
    pc().Apply(world);
    Counter counter;
    ConnectKit::BleScanner scanner;
    scanner.RegisterRecvedCallback(&counter);
    scanner.Start();
    // Every round hears each phone a thousand times, half of them delivered.
    const uint64_t perRound = world.ble.phones.size() * kRoundMs;
    pc().clock().Sleep(kRoundMs);
    const auto before = pc().TakeCensus();
    const size_t heapAfterWarmUp = HeapInUse();
    for (uint64_t events = perRound; events < kReports; events += perRound) {
        pc().clock().Sleep(kRoundMs);
    }
    scanner.Stop();
    pc().clock().Sleep(100);
    scanner.UnRegisterRecvedCallback(&counter);
    ExpectNothingLeftBehind(before, heapAfterWarmUp);
    EXPECT_GE(counter.heard.load(), kReports / 2 - perRound);
}

TEST_F(BluetoothSoakTest, StateChangesLeaveNothingBehind) {
    constexpr int kChanges = 100000 / kSoakDivisor;
    pc().Apply(BluetoothWorld(Controller::Radio::On));
    auto& manage = *ConnectKitBluetooth::BluetoothManage::GetInstance();
    Counter counter;
    Thrower thrower;
    manage.RegistBluetoothStateChangeCallback(&counter);
    manage.RegistBluetoothStateChangeCallback(&thrower);
    const auto before = pc().TakeCensus();
    size_t heapAfterWarmUp = 0;
    for (int change = 1; change <= kChanges; ++change) {
        pc().bluetooth().SwitchRadio(
            platform::RadioKind::Bluetooth,
            change % 2 ? platform::RadioState::Off : platform::RadioState::On);
        if (change % 1000 == 0) {
            pc().clock().Sleep(100);
        }
        if (change == kChanges / 10) {
            heapAfterWarmUp = HeapInUse();
        }
    }
    pc().clock().Sleep(1000);
    manage.UnRegistBluetoothStateChangeCallback(&thrower);
    manage.UnRegistBluetoothStateChangeCallback(&counter);
    ExpectNothingLeftBehind(before, heapAfterWarmUp);
    EXPECT_GE(counter.heard.load(), static_cast<uint64_t>(kChanges));
}

}  // namespace
}  // namespace connectkit::test
