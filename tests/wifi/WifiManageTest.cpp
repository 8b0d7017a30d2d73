// The Wi-Fi radio on the simulated PC: every EnableWifi result (the switch
// itself is the Bluetooth radio's too, whose table walks it through) and the
// observers of its changes. Each test runs in a process of its own.
#include <gtest/gtest.h>

#include <thread>

#include "connectkit/WifiManage.h"
#include "support/LogCapture.h"
#include "support/RadioWorld.h"

namespace connectkit::test {
namespace {

using ConnectKitWifi::WifiManage;
using platform::RadioKind;
using platform::RadioState;

sim::Scenario WifiWorld(std::optional<RadioState> state) {
    sim::Scenario world;
    world.bluetooth.wifi.present = state.has_value();
    if (state) {
        world.bluetooth.wifi.state = *state;
    }
    return world;
}

struct EnableCase {
    const char* name;
    std::optional<RadioState> state;  // none: no Wi-Fi radio
    int enable;
    ConnectKitWifi::EnableWifiResult expected;
    ConnectKitWifi::WifiState after;
};

class EnableWifiTest : public SimTest, public ::testing::WithParamInterface<EnableCase> {};

TEST_P(EnableWifiTest, AnswersAndLeavesTheRadio) {
    const auto& c = GetParam();
    pc().Apply(WifiWorld(c.state));
    auto& manage = *WifiManage::GetInstance();
    EXPECT_EQ(manage.EnableWifi(c.enable), c.expected);
    pc().clock().Sleep(5000);
    EXPECT_EQ(manage.GetWifiState(), c.after);
}

using namespace ConnectKitWifi;

INSTANTIATE_TEST_SUITE_P(
    Table, EnableWifiTest,
    ::testing::Values(
        EnableCase{"OnStaysOn", RadioState::On, 1, ENABLE_WIFI_ALREADY, WIFI_STATE_ON},
        EnableCase{"TwoAsksForOff", RadioState::On, 2, ENABLE_WIFI_REQUESTED, WIFI_STATE_OFF},
        EnableCase{"OffGoesOn", RadioState::Off, 1, ENABLE_WIFI_REQUESTED, WIFI_STATE_ON},
        EnableCase{"DisabledOn", RadioState::Disabled, 1, ENABLE_WIFI_DISABLED,
                   WIFI_STATE_DISABLED},
        EnableCase{"NoRadio", std::nullopt, 1, ENABLE_WIFI_FAILED, WIFI_STATE_UNKNOWN}),
    [](const auto& info) { return std::string(info.param.name); });

// Changes reach every registration on the platform's thread; a throwing
// observer is logged and the others still hear.
class WifiObserverTest : public SimTest {};

TEST_F(WifiObserverTest, PlatformChangesReachEveryRegistration) {
    pc().Apply(WifiWorld(RadioState::On));
    auto& manage = *WifiManage::GetInstance();
    RadioRecorder recorder;
    Thrower thrower;
    EXPECT_EQ(manage.RegistWifiStateChangeCallback(nullptr), 0);
    EXPECT_EQ(manage.UnRegistWifiStateChangeCallback(nullptr), 0);
    ASSERT_EQ(manage.RegistWifiStateChangeCallback(&recorder), 1);
    ASSERT_EQ(manage.RegistWifiStateChangeCallback(&thrower), 1);
    ASSERT_EQ(manage.RegistWifiStateChangeCallback(&recorder), 1);
    LogCapture log;
    pc().bluetooth().SwitchRadio(RadioKind::WiFi, RadioState::Off);
    pc().clock().Sleep(1000);
    auto calls = recorder.Calls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].state, RadioState::Off);
    EXPECT_NE(calls[0].thread, std::this_thread::get_id());
    EXPECT_TRUE(log.Contains(L"OnWifiStateChanged catch unknown exception"));

    EXPECT_EQ(manage.UnRegistWifiStateChangeCallback(&recorder), 1);
    pc().bluetooth().SwitchRadio(RadioKind::WiFi, RadioState::On);
    pc().clock().Sleep(1000);
    EXPECT_EQ(recorder.Calls().size(), 3u);
}

}  // namespace
}  // namespace connectkit::test
