// A hundred thousand radio state changes delivered to observers must leave
// the heap where it was and nothing pending behind.
#include <gtest/gtest.h>

#include <atomic>

#include "connectkit/BluetoothManage.h"
#include "support/RadioWorld.h"
#include "support/Soak.h"

namespace connectkit::test {
namespace {

constexpr int kChanges = 100000 / kSoakDivisor;
constexpr int kBatch = 1000;
constexpr int kWarmUpChanges = kChanges / 10;

class Counter : public ConnectKitBluetooth::BluetoothManage::IBluetoothStateChangeNotification {
public:
    void OnBluetoothStateChanged(platform::RadioState) override { ++heard; }
    std::atomic<uint64_t> heard{0};
};

class RadioSoakTest : public SimTest {};

TEST_F(RadioSoakTest, StateChangesLeaveNothingBehind) {
    pc().Apply(BluetoothWorld(Controller::Radio::On));
    auto& manage = *ConnectKitBluetooth::BluetoothManage::GetInstance();
    Counter counter;
    Thrower thrower;
    manage.RegistBluetoothStateChangeCallback(&counter);
    manage.RegistBluetoothStateChangeCallback(&thrower);
    size_t heapAfterWarmUp = 0;
    for (int change = 1; change <= kChanges; ++change) {
        pc().bluetooth().SwitchRadio(
            platform::RadioKind::Bluetooth,
            change % 2 ? platform::RadioState::Off : platform::RadioState::On);
        if (change % kBatch == 0) {
            pc().clock().Sleep(100);
        }
        if (change == kWarmUpChanges) {
            heapAfterWarmUp = HeapInUse();
        }
    }
    pc().clock().Sleep(1000);
    ExpectHeapSettled(heapAfterWarmUp);
    EXPECT_GE(counter.heard.load(), static_cast<uint64_t>(kChanges));
    EXPECT_EQ(pc().TakeCensus().pendingEvents, 0u);
    manage.UnRegistBluetoothStateChangeCallback(&thrower);
    manage.UnRegistBluetoothStateChangeCallback(&counter);
}

}  // namespace
}  // namespace connectkit::test
