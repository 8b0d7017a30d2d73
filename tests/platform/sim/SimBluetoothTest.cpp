// What the radio library cannot make happen itself: the timing of the
// platform's answer to a switch, and the controller coming back from its
// class installer in the state the registry holds.
#include <gtest/gtest.h>

#include <atomic>

#include "platform/sim/SimulatedPc.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

using platform::AsyncStatus;
using platform::RadioList;
using platform::RadioState;
using Controller = sim::SimBluetoothConfig::Controller;

class SimBluetoothTest : public SimTest {
protected:
    void ApplyController(const Controller& controller) {
        sim::Scenario scenario;
        scenario.bluetooth.controllers = {controller};
        pc().Apply(scenario);
    }
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

TEST_F(SimBluetoothTest, TheControllerRestartsInTheStateTheRegistryHolds) {
    struct Case {
        platform::RegistryData radioState;
        bool listed;
    };
    const Case cases[] = {
        {platform::RegistryData::FromDword(2), true},
        {platform::RegistryData::FromDword(4), false},
        {platform::RegistryData::FromString(L"2"), false},
    };
    for (const auto& [radioState, listed] : cases) {
        Controller controller;
        controller.radio = Controller::Radio::HardOff;
        controller.restartLatencyMs = 700;
        ApplyController(controller);
        pc().registry().Write(
            platform::RegistryHive::LocalMachine,
            L"SYSTEM\\CurrentControlSet\\Enum\\" + controller.instanceId + L"\\Device Parameters",
            L"RadioState", radioState);

        ASSERT_EQ(Toggle(controller, platform::kDicsDisable), 0u);
        ASSERT_EQ(Toggle(controller, platform::kDicsEnable), 0u);
        pc().clock().Sleep(701);
        EXPECT_EQ(BluetoothRadio() != nullptr, listed);
    }
}

// Refusals, a busy radio and a failing State are the library's tests' rows.
TEST_F(SimBluetoothTest, ASwitchLandsAfterItsLatencyWithItsEvents) {
    for (bool twice : {false, true}) {
        Controller controller;
        controller.radio = Controller::Radio::Off;
        controller.behaviour.latencyMs = 300;
        controller.behaviour.stateChangedTwice = twice;
        ApplyController(controller);
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
