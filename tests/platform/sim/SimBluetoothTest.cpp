// What the radio library cannot make happen itself: the controller coming
// back from its class installer in the state the registry holds.
#include <gtest/gtest.h>

#include <algorithm>

#include "platform/sim/SimulatedPc.h"
#include "support/RadioWorld.h"

namespace connectkit::test {
namespace {

using platform::AsyncStatus;
using platform::RadioList;
using SimBluetoothTest = SimTest;

// A restart into RadioState dword 2 brings the radio back: the library's
// radio search rows. Any other value, or the right number as text, does not.
TEST_F(SimBluetoothTest, TheControllerRestartsInTheStateTheRegistryHolds) {
    for (const auto& radioState :
         {platform::RegistryData::FromDword(4), platform::RegistryData::FromString(L"2")}) {
        auto world = BluetoothWorld(Controller::Radio::HardOff);
        const auto& controller = world.bluetooth.controllers[0];
        SetControllerValue(world, L"RadioState", radioState);
        pc().Apply(world);
        platform::InstallerCall failed{};
        for (uint32_t change : {platform::kDicsDisable, platform::kDicsEnable}) {
            ASSERT_EQ(pc().devices().ChangeProperty(controller.instanceId, {change, 1, 0}, failed),
                      0u);
        }
        pc().clock().Sleep(controller.restartLatencyMs + 1);
        // The listing, waited for on the clock.
        auto done = pc().clock().NewEvent(true, false);
        RadioList listed;
        pc().radios().GetRadiosAsync([&](AsyncStatus status, RadioList radios) {
            EXPECT_EQ(status, AsyncStatus::Completed);
            listed = std::move(radios);
            done->Set();
        });
        ASSERT_EQ(done->Wait(60000), platform::WaitResult::Signaled);
        EXPECT_TRUE(std::none_of(listed.begin(), listed.end(), [](const auto& radio) {
            return radio && radio->Kind() == platform::RadioKind::Bluetooth;
        }));
    }
}

}  // namespace
}  // namespace connectkit::test
