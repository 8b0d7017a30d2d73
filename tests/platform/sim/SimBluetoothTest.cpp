// What the radio library cannot make happen itself: the timing of the
// platform's answer to a switch, and the controller coming back from its
// class installer in the state the registry holds.
#include <gtest/gtest.h>

#include <atomic>

#include "platform/sim/SimulatedPc.h"
#include "support/RadioWorld.h"

namespace connectkit::test {
namespace {

using platform::AsyncStatus;
using platform::RadioList;
using platform::RadioState;

class SimBluetoothTest : public SimTest {
protected:
    // The listing's Bluetooth radio, waited for on the clock.
    std::shared_ptr<platform::Radio> BluetoothRadio() {
        auto done = pc().clock().NewEvent(true, false);
        RadioList listed;
        pc().radios().GetRadiosAsync([&](AsyncStatus status, RadioList radios) {
            EXPECT_EQ(status, AsyncStatus::Completed);
            listed = std::move(radios);
            done->Set();
        });
        EXPECT_EQ(done->Wait(60000), platform::WaitResult::Signaled);
        for (auto& radio : listed) {
            if (radio && radio->Kind() == platform::RadioKind::Bluetooth) {
                return radio;
            }
        }
        return nullptr;
    }
    uint32_t Toggle(const Controller& controller, uint32_t stateChange) {
        platform::InstallerCall failed{};
        return pc().devices().ChangeProperty(controller.instanceId, {stateChange, 1, 0}, failed);
    }
};

// A restart into RadioState dword 2 brings the radio back: the library's
// radio search rows. Any other value, or the right number as text, does not.
TEST_F(SimBluetoothTest, TheControllerRestartsInTheStateTheRegistryHolds) {
    for (const auto& radioState :
         {platform::RegistryData::FromDword(4), platform::RegistryData::FromString(L"2")}) {
        auto world = BluetoothWorld(Controller::Radio::HardOff);
        auto& controller = world.bluetooth.controllers[0];
        controller.restartLatencyMs = 700;
        SetControllerValue(world, L"RadioState", radioState);
        pc().Apply(world);

        ASSERT_EQ(Toggle(controller, platform::kDicsDisable), 0u);
        ASSERT_EQ(Toggle(controller, platform::kDicsEnable), 0u);
        pc().clock().Sleep(701);
        EXPECT_EQ(BluetoothRadio(), nullptr);
    }
}

// Refusals, a busy radio and a failing State are the library's tests' rows.
TEST_F(SimBluetoothTest, ASwitchLandsAfterItsLatencyWithItsEvents) {
    for (bool twice : {false, true}) {
        auto world = BluetoothWorld(Controller::Radio::Off);
        world.bluetooth.controllers[0].behaviour.latencyMs = 300;
        world.bluetooth.controllers[0].behaviour.stateChangedTwice = twice;
        pc().Apply(world);
        auto radio = BluetoothRadio();
        ASSERT_NE(radio, nullptr);
        std::atomic<int> changes{0};
        radio->AddStateChanged([&](platform::Radio&) { ++changes; });
        radio->SetStateAsync(RadioState::On);
        pc().clock().Sleep(299);
        EXPECT_EQ(radio->State(), RadioState::Off);
        pc().clock().Sleep(100);
        EXPECT_EQ(radio->State(), RadioState::On);
        EXPECT_EQ(changes, twice ? 2 : 1);
    }
}

}  // namespace
}  // namespace connectkit::test
