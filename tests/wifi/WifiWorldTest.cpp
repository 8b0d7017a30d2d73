// The Wi-Fi client against the simulated PC's networks: Connect's scan wait
// and its outcomes, the states the notifications leave, the monitor's
// report records, and notifications racing the host's calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "connectkit/DataReport.h"
#include "connectkit/WifiNetworkService.h"
#include "connectkit/WifiRealMonitor.h"
#include "platform/ports/WlanRecords.h"
#include "platform/sim/wificard/SimWifiDriver.h"
#include "support/LogCapture.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

using WifiConnectManage::WifiConnectState;
using WifiConnectManage::WifiNetworkService;

const std::wstring kPhone = L"DIRECT-Xy-PHONE";
// The home network's access point in the same world: never the phone's.
const std::vector<char> kOtherBssid{'\xa4', '\x2b', '\xb0', '\x10', '\x20', '\x30'};

// The states reported for the phone's network.
struct States final : WifiNetworkService::IWifiNetworkServiceObserver {
    void OnWifiStateChanged(std::wstring ssid, WifiConnectState state) override {
        std::lock_guard<std::mutex> lock(mutex);
        if (ssid == kPhone) {
            seen.push_back(state);
        }
    }
    std::vector<int> Seen() {
        std::lock_guard<std::mutex> lock(mutex);
        return seen;
    }
    std::mutex mutex;
    std::vector<int> seen;
};

class WifiWorldTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        service()->RegistObserver(&states);
        SynergyDataReportClass::GetInstance()->ClearRecords();
    }
    void TearDown() override {
        service()->UnregistObserver(&states);
        SimTest::TearDown();
    }
    bool ConnectPhone(const std::wstring& key, bool waitForScan = true) {
        return service()->Connect(kPhone, key, waitForScan, 36,
                                  {'\x02', '\x1a', '\x11', '\xf0', '\x00', '\x01'}, false);
    }
    static WifiNetworkService* service() { return WifiNetworkService::GetInstance(); }
    static std::vector<std::vector<std::string>> Reports() {
        std::vector<std::vector<std::string>> reports;
        for (const auto& record : SynergyDataReportClass::GetInstance()->Records()) {
            EXPECT_EQ(record.type, 10300);
            reports.push_back(record.values);
        }
        return reports;
    }
    States states;
};

TEST_F(WifiWorldTest, JoiningThePhoneReportsFourAndGetsItsAddress) {
    ApplyExampleWorld("wifi-phone-ap");
    EXPECT_TRUE(ConnectPhone(L"8aK3pQ2m"));
    pc().clock().Sleep(2000);
    // The scan pass that finds it, then associating, associated, authenticating.
    EXPECT_EQ(states.Seen(), (std::vector<int>{1, 1, 1, 1, 4}));
    EXPECT_EQ(service()->GetCurentWifiState(), WifiConnectManage::WifiDisConnected);
    std::string ip;
    EXPECT_EQ(service()->GetDynamicIP(ip), 0);
    EXPECT_EQ(ip, "192.168.137.45");
    // Already connected with that profile: 2, and no second connection.
    const auto connects = pc().wlan().History().connects;
    EXPECT_TRUE(ConnectPhone(L"8aK3pQ2m", false));
    EXPECT_EQ(states.Seen().back(), 2);
    EXPECT_EQ(pc().wlan().History().connects, connects);
    EXPECT_TRUE(service()->DisConnnect());
    pc().clock().Sleep(500);
    EXPECT_EQ(states.Seen().back(), 4);
}

TEST_F(WifiWorldTest, AnAbsentNetworkGetsFiftyPassesThreeScansAndAnAttempt) {
    ApplyExampleWorld("wifi-network-absent");
    const uint64_t start = Now();
    EXPECT_TRUE(ConnectPhone(L"8aK3pQ2m"));
    EXPECT_EQ(Now() - start, 4900u);
    EXPECT_EQ(pc().wlan().History().scans, 3u);
    EXPECT_EQ(pc().wlan().History().connects, 1u);
    pc().clock().Sleep(2000);
    std::vector<int> expected(50, 1);
    expected.push_back(3);
    EXPECT_EQ(states.Seen(), expected);
}

// A desired-BSSID list that counts no entry never narrows the join: the
// phone is joined whatever BSSID the caller gives, of whatever length, and a
// refused WlanConnect is still answered with true.
TEST_F(WifiWorldTest, AnyBssidJoinsThePhoneAndARefusedConnectStillAnswersTrue) {
    ApplyExampleWorld("wifi-phone-ap");
    for (size_t length : {0, 5, 6, 7}) {
        SCOPED_TRACE(length);
        std::vector<char> bssid(kOtherBssid.begin(),
                                kOtherBssid.begin() + std::min<size_t>(length, 6));
        bssid.resize(length, '\x77');
        EXPECT_TRUE(service()->Connect(kPhone, L"8aK3pQ2m", false, 36, bssid, true));
        pc().clock().Sleep(2000);
        const auto desired = pc().wlan().History().desiredBssids;
        ASSERT_TRUE(desired.has_value());
        EXPECT_EQ(desired->numberOfEntries, 0u);
        platform::MacAddress padded{};
        std::copy_n(bssid.begin(), std::min<size_t>(length, 6), padded.begin());
        EXPECT_EQ(desired->entries, std::vector<platform::MacAddress>{padded});
        EXPECT_EQ(states.Seen().back(), 4);
        EXPECT_TRUE(service()->DisConnnect());
        pc().clock().Sleep(500);
    }
    LogCapture capture;
    ASSERT_TRUE(pc().faults().Add({"wlan.connect", sim::FaultAction::Fail, 0, 1, 0, 0}));
    const auto connects = pc().wlan().History().connects;
    const size_t reports = states.Seen().size();
    EXPECT_TRUE(ConnectPhone(L"8aK3pQ2m", false));
    pc().clock().Sleep(2000);
    EXPECT_TRUE(capture.Contains(L"WlanConnect result=87 ERROR_SUCCESS=0"));
    EXPECT_EQ(pc().wlan().History().connects, connects);
    EXPECT_EQ(states.Seen().size(), reports);
}

// The card's scan filter names the phone's SSID with another BSSID, hiding
// the phone until the wait resets the filter in its ninth pass.
TEST_F(WifiWorldTest, TheScanFilterIsResetInTheNinthPass) {
    ApplyExampleWorld("wifi-phone-ap");
    const uint64_t start = Now();
    EXPECT_TRUE(service()->Connect(kPhone, L"8aK3pQ2m", true, 36, kOtherBssid, true));
    EXPECT_EQ(Now() - start, 800u);
    EXPECT_FALSE(sim::LegacyGoScanFilter().has_value());
    const auto seen = states.Seen();
    ASSERT_GE(seen.size(), 9u);
    EXPECT_EQ(std::vector<int>(seen.begin(), seen.begin() + 9), std::vector<int>(9, 1));
}

// The monitor's clean-up calls WSACleanup even when it never started
// Winsock; Winsock refuses it and its count stays at zero.
TEST_F(WifiWorldTest, StoppingAMonitorThatNeverStartedCleansUpWinsockAnyway) {
    auto& sockets = pc().sockets();
    while (sockets.Startups() > 0) {
        sockets.Cleanup();
    }
    const int refused = sockets.RefusedCleanups();
    StopWifiRealMonitor();
    EXPECT_EQ(sockets.RefusedCleanups(), refused + 1);
    EXPECT_EQ(sockets.Startups(), 0);
}

TEST_F(WifiWorldTest, AWrongKeyLeavesTheServiceIncompleteAndTheMonitorSilent) {
    LogCapture capture;
    ApplyExampleWorld("wifi-wrong-key");
    ASSERT_TRUE(StartWifiRealMonitor());
    EXPECT_TRUE(ConnectPhone(L"wrongkey1", false));
    pc().clock().Sleep(3000);
    EXPECT_EQ(states.Seen(), (std::vector<int>{1, 1, 1, 3}));
    EXPECT_EQ(service()->GetCurentWifiState(), WifiConnectManage::WifiConnectIncomplete);
    EXPECT_TRUE(capture.Contains(L"WlanSourceACMCallBack Connect Not Really Complete"));
    // Only the disconnection that follows the failed authentication.
    for (const auto& report : Reports()) {
        EXPECT_NE(report[1], "ConnectComplete");
    }
    StopWifiRealMonitor();
}

TEST_F(WifiWorldTest, TheMonitorReportsConnectRoamAndDisconnect) {
    ApplyExampleWorld("wifi-roaming");
    ASSERT_TRUE(StartWifiRealMonitor());
    pc().clock().Sleep(12000);
    StopWifiRealMonitor();
    // The link quality follows the simulated signal and is left out.
    const std::vector<std::vector<std::string>> expected{
        {"Intel", "ConnectComplete", "Office-5G", "-55", "1"},
        {"Intel", "RoamingStart", "", "0", "0"},
        {"Intel", "RoamingEnd", "Office-5G", "-48", "44"},
        {"Intel", "Disconnected", "", "0", "0"},
    };
    auto reports = Reports();
    for (auto& report : reports) {
        ASSERT_EQ(report.size(), 6u);
        report.pop_back();
    }
    EXPECT_EQ(reports, expected);
    // A second start after unInit only says it is running.
    LogCapture capture;
    EXPECT_TRUE(StartWifiRealMonitor());
    EXPECT_TRUE(capture.Contains(L" is already running"));
}

TEST_F(WifiWorldTest, AShorterSsidLeavesTheTailOfALongerOne) {
    auto* monitor = WifiRealMonitor::GetInstance();
    auto notification = [](const std::string& ssid, uint32_t length) {
        platform::WlanConnectionNotificationData data;
        data.ssid.length = length;
        std::copy(ssid.begin(), ssid.end(), data.ssid.bytes.begin());
        return platform::WlanNotification{
            platform::kWlanSourceAcm, 10, {}, platform::EncodeConnectionNotification(data)};
    };
    auto longer = notification(std::string(32, 'L'), 32);
    auto shorter = notification("Abc", 3);
    auto beyond = notification("Xyz", 40);
    monitor->ClearParas();
    monitor->UpdateWifiSsid(&longer);
    monitor->UpdateWifiSsid(&shorter);
    monitor->UploadData("tail");
    monitor->UpdateWifiSsid(&beyond);
    monitor->UploadData("beyond");
    monitor->HandlerDisconnect();
    const auto reports = Reports();
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(reports[0][2], "Abc" + std::string(29, 'L'));
    EXPECT_EQ(reports[1][2], "Xyz");  // cut to the field, zeros included
    EXPECT_EQ(reports[2][2], "");
}

// Notifications arrive on the model's threads while the host connects and
// disconnects on two of its own; run under TSan this must stay quiet.
TEST_F(WifiWorldTest, NotificationsRaceConnectAndDisconnect) {
    ApplyExampleWorld("wifi-phone-ap");
    auto fiveTimes = [this](uint32_t pauseMs, auto call) {
        return std::thread([this, pauseMs, call] {
            for (int i = 0; i < 5; ++i) {
                call();
                pc().clock().Sleep(pauseMs);
            }
        });
    };
    std::thread connector = fiveTimes(300, [this] { ConnectPhone(L"8aK3pQ2m", false); });
    std::thread disconnector = fiveTimes(200, [] { service()->DisConnnect(); });
    connector.join();
    disconnector.join();
    pc().clock().Sleep(2000);
    const int last = service()->GetCurentWifiState();
    EXPECT_TRUE(last == 4 || last == 1 || last == 3) << last;
}

}  // namespace
}  // namespace connectkit::test
