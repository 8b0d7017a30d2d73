// Unregistering an observer while a delivery to it is under way on another
// thread, for each owner of an observer list: unregistration returns only
// once that delivery has ended (the host may then destroy the observer),
// gives up with a log line when the delivery outlasts its bound, and
// returns at once when the observer unregisters itself from inside.
// Each test runs in a process of its own, so each builds the radio objects
// in the world it applied first.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <tuple>

#include "bluetooth/RadioObservers.h"
#include "connectkit/BLEAdvertiser.h"
#include "support/LogCapture.h"
#include "support/RadioWorld.h"

namespace connectkit::test {
namespace {

using ConnectKitBluetooth::BluetoothManage;
using ConnectKitWifi::WifiManage;
using platform::RadioKind;
using platform::RadioState;

constexpr uint32_t kDeliveryMs = 1000;
constexpr uint32_t kOutlastingMs = bluetooth::kDeliveryWaitMs + 2000;

enum class Mode { FromOutside, FromInside, Outlasting };
const char* const kModeNames[] = {"FromOutside", "FromInside", "Outlasting"};

class SlowObserver;

struct Owner {
    const char* name;
    std::function<void(SlowObserver&)> add;
    std::function<void(SlowObserver&)> remove;
    // Causes one delivery on a thread other than the caller's; the radios
    // go off in round 0 and on again in round 1.
    std::function<void(sim::SimulatedPc&, int round)> deliver;
};

// Blocks inside each delivery for a while of virtual time; in FromInside
// mode it first unregisters itself and times that.
class SlowObserver final : public BluetoothManage::IBluetoothStateChangeNotification,
                           public WifiManage::IWifiStateChangeNotification,
                           public BLEAdvertiser::INotification {
public:
    SlowObserver(const Owner& owner, Mode mode, platform::Clock& clock)
        : entered(clock.NewEvent(true, false)), owner_(owner), mode_(mode), clock_(clock) {}

    void OnBluetoothStateChanged(RadioState) override { Heard(); }
    void OnWifiStateChanged(RadioState) override { Heard(); }
    void OnAdvertiseError(unsigned long) override { Heard(); }

    std::atomic<int> deliveries{0};
    std::atomic<bool> finished{false};
    std::atomic<uint64_t> selfRemovalMs{~0ull};
    std::unique_ptr<platform::Event> entered;

private:
    void Heard() {
        ++deliveries;
        entered->Set();
        if (mode_ == Mode::FromInside) {
            const uint64_t start = clock_.TickCount64();
            owner_.remove(*this);
            selfRemovalMs = clock_.TickCount64() - start;
        }
        clock_.Sleep(mode_ == Mode::Outlasting ? kOutlastingMs : kDeliveryMs);
        finished = true;
    }

    const Owner& owner_;
    const Mode mode_;
    platform::Clock& clock_;
};

void PrintTo(const Owner& owner, std::ostream* out) {
    *out << owner.name;
}
void PrintTo(Mode mode, std::ostream* out) {
    *out << kModeNames[static_cast<int>(mode)];
}

const Owner kOwners[] = {
    {"BluetoothManage",
     [](SlowObserver& o) {
         BluetoothManage::GetInstance()->RegistBluetoothStateChangeCallback(&o);
     },
     [](SlowObserver& o) {
         BluetoothManage::GetInstance()->UnRegistBluetoothStateChangeCallback(&o);
     },
     [](sim::SimulatedPc& pc, int round) {
         pc.bluetooth().SwitchRadio(RadioKind::Bluetooth, round ? RadioState::On : RadioState::Off);
     }},
    {"WifiManage",
     [](SlowObserver& o) { WifiManage::GetInstance()->RegistWifiStateChangeCallback(&o); },
     [](SlowObserver& o) { WifiManage::GetInstance()->UnRegistWifiStateChangeCallback(&o); },
     [](sim::SimulatedPc& pc, int round) {
         pc.bluetooth().SwitchRadio(RadioKind::WiFi, round ? RadioState::On : RadioState::Off);
     }},
    {"BLEAdvertiser",
     [](SlowObserver& o) { BLEAdvertiser::GetUniqueInstance()->RegisterEventCallback(&o); },
     [](SlowObserver& o) { BLEAdvertiser::GetUniqueInstance()->UnRegisterEventCallback(&o); },
     [](sim::SimulatedPc& pc, int) {
         pc.clock().StartDetachedThread(
             [] { BLEAdvertiser::GetUniqueInstance()->SetLastError(21); });
     }},
};

class RadioObserverUnregisterTest : public SimTest,
                                    public ::testing::WithParamInterface<std::tuple<Owner, Mode>> {
};

TEST_P(RadioObserverUnregisterTest, NoDeliveryOutlivesUnregistration) {
    const auto& [owner, mode] = GetParam();
    auto world = BluetoothWorld(Controller::Radio::On);
    world.bluetooth.wifi.present = true;
    pc().Apply(world);
    SlowObserver observer(owner, mode, pc().clock());
    owner.add(observer);
    LogCapture log;
    owner.deliver(pc(), 0);
    ASSERT_EQ(observer.entered->Wait(kDeliveryMs), platform::WaitResult::Signaled);

    if (mode != Mode::FromInside) {
        const uint64_t start = Now();
        owner.remove(observer);
        const uint64_t waited = Now() - start;
        if (mode == Mode::FromOutside) {
            EXPECT_TRUE(observer.finished);
        } else {
            EXPECT_FALSE(observer.finished);
            EXPECT_GE(waited, bluetooth::kDeliveryWaitMs);
            EXPECT_LT(waited, kOutlastingMs);
        }
    }
    pc().clock().Sleep(kOutlastingMs);
    ASSERT_TRUE(observer.finished);
    EXPECT_EQ(log.Contains(L"a delivery to an observer was still under way"),
              mode == Mode::Outlasting);
    if (mode == Mode::FromInside) {
        EXPECT_EQ(observer.selfRemovalMs.load(), 0u);
    }

    // Nothing reaches the observer once it has left.
    const int heard = observer.deliveries;
    owner.deliver(pc(), 1);
    pc().clock().Sleep(kOutlastingMs);
    EXPECT_EQ(observer.deliveries.load(), heard);
}

INSTANTIATE_TEST_SUITE_P(Table, RadioObserverUnregisterTest,
                         ::testing::Combine(::testing::ValuesIn(kOwners),
                                            ::testing::Values(Mode::FromOutside, Mode::FromInside,
                                                              Mode::Outlasting)),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) +
                                    kModeNames[static_cast<int>(std::get<1>(info.param))];
                         });

}  // namespace
}  // namespace connectkit::test
