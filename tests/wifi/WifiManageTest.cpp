// The Wi-Fi radio on the simulated PC: every EnableWifi result (the switch
// itself is the Bluetooth radio's too, whose table walks it through), and the
// observers of both radios' changes. Each test runs in a process of its own.
#include <gtest/gtest.h>

#include <thread>

#include "connectkit/BluetoothManage.h"
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

// Changes of either radio reach every registration on the platform's
// thread; a throwing observer is logged and the others still hear; an
// unregistration removes one entry and answers 1 even when none is left.
class RadioObserverTest : public SimTest {};

TEST_F(RadioObserverTest, PlatformChangesReachEveryRegistration) {
    auto world = BluetoothWorld(Controller::Radio::On);
    world.bluetooth.wifi.present = true;
    pc().Apply(world);
    auto& wifi = *WifiManage::GetInstance();
    auto& bluetooth = *ConnectKitBluetooth::BluetoothManage::GetInstance();
    RadioRecorder recorder;
    Thrower thrower;
    EXPECT_EQ(wifi.RegistWifiStateChangeCallback(nullptr), 0);
    EXPECT_EQ(wifi.UnRegistWifiStateChangeCallback(nullptr), 0);
    EXPECT_EQ(bluetooth.UnRegistBluetoothStateChangeCallback(nullptr), 0);
    ASSERT_EQ(wifi.RegistWifiStateChangeCallback(&recorder), 1);
    ASSERT_EQ(wifi.RegistWifiStateChangeCallback(&thrower), 1);
    ASSERT_EQ(wifi.RegistWifiStateChangeCallback(&recorder), 1);
    ASSERT_EQ(bluetooth.RegistBluetoothStateChangeCallback(&thrower), 1);
    ASSERT_EQ(bluetooth.RegistBluetoothStateChangeCallback(&recorder), 1);
    LogCapture log;
    pc().bluetooth().SwitchRadio(RadioKind::WiFi, RadioState::Off);
    pc().bluetooth().SwitchRadio(RadioKind::Bluetooth, RadioState::Off);
    pc().clock().Sleep(1000);
    auto calls = recorder.Calls();
    ASSERT_EQ(calls.size(), 3u);
    for (const auto& heard : calls) {
        EXPECT_EQ(heard.state, RadioState::Off);
        EXPECT_NE(heard.thread, std::this_thread::get_id());
    }
    EXPECT_TRUE(log.Contains(L"OnWifiStateChanged catch unknown exception"));
    EXPECT_TRUE(log.Contains(L"OnBluetoothStateChanged catch unknown exception"));

    EXPECT_EQ(wifi.UnRegistWifiStateChangeCallback(&recorder), 1);
    EXPECT_EQ(bluetooth.UnRegistBluetoothStateChangeCallback(&recorder), 1);
    EXPECT_EQ(bluetooth.UnRegistBluetoothStateChangeCallback(&recorder), 1);
    pc().bluetooth().SwitchRadio(RadioKind::WiFi, RadioState::On);
    pc().bluetooth().SwitchRadio(RadioKind::Bluetooth, RadioState::On);
    pc().clock().Sleep(1000);
    EXPECT_EQ(recorder.Calls().size(), 4u);
}

}  // namespace
}  // namespace connectkit::test
