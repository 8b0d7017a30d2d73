// The Wi-Fi client against the simulated PC's networks: Connect's scan wait
// and its outcomes, the states the notifications leave, the monitor's
// report records, and notifications racing the host's calls.
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "connectkit/DataReport.h"
#include "connectkit/WifiNetworkService.h"
#include "connectkit/WifiRealMonitor.h"
#include "platform/ports/WlanRecords.h"
#include "support/LogCapture.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

using WifiConnectManage::WifiConnectState;
using WifiConnectManage::WifiNetworkService;

const std::wstring kPhone = L"DIRECT-Xy-PHONE";

class States final : public WifiNetworkService::IWifiNetworkServiceObserver {
public:
    void OnWifiStateChanged(std::wstring ssid, WifiConnectState state) override {
        std::lock_guard<std::mutex> lock(mutex_);
        if (ssid == kPhone) {
            seen_.push_back(state);
        }
    }
    std::vector<int> Seen() {
        std::lock_guard<std::mutex> lock(mutex_);
        return {seen_.begin(), seen_.end()};
    }

private:
    std::mutex mutex_;
    std::vector<WifiConnectState> seen_;
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
    void World(const std::string& name) {
        sim::Scenario scenario;
        sim::ScenarioError error;
        ASSERT_TRUE(sim::LoadScenarioFile(std::string(CONNECTKIT_WORLDS_DIR) + "/" + name + ".json",
                                          scenario, error))
            << error.ToString();
        pc().Apply(scenario);
    }
    bool ConnectPhone(const std::wstring& key, bool waitForScan = true) {
        return service()->Connect(kPhone, key, waitForScan, 36,
                                  {'\x02', '\x1a', '\x11', '\xf0', '\x00', '\x01'}, false);
    }
    uint64_t Now() { return pc().clock().TickCount64(); }
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
    World("wifi-phone-ap");
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
    World("wifi-network-absent");
    const uint64_t start = Now();
    EXPECT_TRUE(ConnectPhone(L"8aK3pQ2m"));
    EXPECT_EQ(Now() - start, 4900u);
    EXPECT_EQ(pc().wlan().History().scans, 3u);
    EXPECT_EQ(pc().wlan().History().connects, 1u);
    pc().clock().Sleep(2000);
    auto seen = states.Seen();
    ASSERT_EQ(seen.size(), 51u);
    EXPECT_EQ(std::vector<int>(seen.begin(), seen.begin() + 50), std::vector<int>(50, 1));
    EXPECT_EQ(seen.back(), 3);
}

TEST_F(WifiWorldTest, AWrongKeyLeavesTheServiceIncompleteAndTheMonitorSilent) {
    LogCapture capture;
    World("wifi-wrong-key");
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
    World("wifi-roaming");
    ASSERT_TRUE(StartWifiRealMonitor());
    pc().clock().Sleep(12000);
    StopWifiRealMonitor();
    const std::vector<std::vector<std::string>> expected{
        {"Intel", "ConnectComplete", "Office-5G", "-55", "1", ""},
        {"Intel", "RoamingStart", "", "0", "0", "0"},
        {"Intel", "RoamingEnd", "Office-5G", "-48", "44", ""},
        {"Intel", "Disconnected", "", "0", "0", "0"},
    };
    const auto reports = Reports();
    ASSERT_EQ(reports.size(), expected.size());
    for (size_t i = 0; i < reports.size(); ++i) {
        ASSERT_EQ(reports[i].size(), 6u);
        for (size_t field = 0; field < 5; ++field) {
            EXPECT_EQ(reports[i][field], expected[i][field]) << i << "/" << field;
        }
    }
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
    World("wifi-phone-ap");
    std::thread connector([&] {
        for (int i = 0; i < 5; ++i) {
            ConnectPhone(L"8aK3pQ2m", false);
            pc().clock().Sleep(300);
        }
    });
    std::thread disconnector([&] {
        for (int i = 0; i < 5; ++i) {
            service()->DisConnnect();
            pc().clock().Sleep(200);
        }
    });
    connector.join();
    disconnector.join();
    pc().clock().Sleep(2000);
    const int last = service()->GetCurentWifiState();
    EXPECT_TRUE(last == 4 || last == 1 || last == 3) << last;
}

}  // namespace
}  // namespace connectkit::test
