// The Wi-Fi client against the simulated PC's networks: Connect's scan wait
// and its outcomes, the states the notifications leave, the monitor's
// report records, and notifications racing the host's calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <ostream>
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
// The home network's access point in the same world: never the phone's.
const std::vector<char> kOtherBssid{'\xa4', '\x2b', '\xb0', '\x10', '\x20', '\x30'};

// The states reported for the phone's network; an attempt has settled once
// it is connected, incomplete or disconnected.
struct States final : WifiNetworkService::IWifiNetworkServiceObserver {
    void OnWifiStateChanged(std::wstring ssid, WifiConnectState state) override {
        std::lock_guard<std::mutex> lock(mutex);
        if (ssid == kPhone) {
            seen.push_back(state);
            if (state >= WifiConnectManage::WifiConnected) {
                settled->Set();
            }
        }
    }
    std::vector<int> Seen() {
        std::lock_guard<std::mutex> lock(mutex);
        return seen;
    }
    std::mutex mutex;
    std::vector<int> seen;
    std::unique_ptr<platform::Event> settled = Pc().clock().NewEvent(true, false);
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

// The phone's network joined with Connect's scan wait and its address asked
// for, world by world: the states reported, where the service settles, what
// GetDynamicIP answers after how long, and the renewals it starts.
struct JoinCase {
    const char* name;
    std::string world;  // one of examples/worlds, or a world as JSON
    const wchar_t* key;
    bool scanFilter;  // Connect names the phone's SSID with another BSSID
    uint64_t connectMs;
    uint32_t scans, connects;
    size_t scanPasses;  // each reports 1 while Connect waits for the network
    std::vector<int> then;
    int settled;
    int addressResult;
    const char* address;
    uint64_t addressMs;
    std::vector<std::wstring> renewals;
    const wchar_t* logged;
    size_t completions;  // reports of a completed connection
};

// A phone network whose DHCP server never answers, seen through an adapter
// of that friendly name; `more` adds sections to the world.
std::string SilentDhcpWorld(const std::string& friendlyName, const std::string& more = "") {
    return R"({"wifiCard": {"maker": "other",
      "description": "Broadcom 802.11ac Wireless PCIE Full Dongle Adapter"},
      "wlan": {"interface": {"friendlyName": ")" +
           friendlyName + R"("}, "networks": [{"ssid": "DIRECT-Xy-PHONE",
      "bssid": "02:1a:11:f0:00:01", "channel": 36, "security": "wpa2psk",
      "passphrase": "8aK3pQ2m", "dhcp": "never"}]})" +
           more + "}";
}

void PrintTo(const JoinCase& row, std::ostream* out) {
    *out << row.name;
}

class WifiWorldJoinTest : public WifiWorldTest, public ::testing::WithParamInterface<JoinCase> {};

TEST_P(WifiWorldJoinTest, SettlesAndGetsItsAddressAsTheWorldSays) {
    const JoinCase& row = GetParam();
    LogCapture capture;
    if (row.world.front() == '{') {
        ApplyJsonWorld(row.world);
    } else {
        ApplyExampleWorld(row.world);
    }
    ASSERT_TRUE(StartWifiRealMonitor());
    uint64_t start = Now();
    EXPECT_TRUE(row.scanFilter ? service()->Connect(kPhone, row.key, true, 36, kOtherBssid, true)
                               : ConnectPhone(row.key));
    EXPECT_EQ(Now() - start, row.connectMs);
    // As the tool does, the address is asked for once the attempt settles;
    // one that reports no state after Connect never does.
    EXPECT_EQ(states.settled->Wait(10000) == platform::WaitResult::Signaled, !row.then.empty());
    std::string ip;
    start = Now();
    EXPECT_EQ(service()->GetDynamicIP(ip), row.addressResult);
    EXPECT_EQ(ip, row.address);
    EXPECT_EQ(Now() - start, row.addressMs);
    pc().clock().Sleep(1000);
    EXPECT_EQ(pc().wlan().History().scans, row.scans);
    EXPECT_EQ(pc().wlan().History().connects, row.connects);
    std::vector<int> expected(row.scanPasses, 1);
    expected.insert(expected.end(), row.then.begin(), row.then.end());
    EXPECT_EQ(states.Seen(), expected);
    EXPECT_EQ(service()->GetCurentWifiState(), row.settled);
    std::vector<std::wstring> renewals;
    for (const auto& started : pc().processes().History()) {
        renewals.push_back(started.commandLine);
    }
    EXPECT_EQ(renewals, row.renewals);
    EXPECT_TRUE(row.logged == nullptr || capture.Contains(row.logged)) << row.logged;
    size_t completions = 0;
    for (const auto& report : Reports()) {
        completions += report[1] == "ConnectComplete" ? 1 : 0;
    }
    EXPECT_EQ(completions, row.completions);
    StopWifiRealMonitor();
}

const std::wstring kRenew = L"ipconfig /renew Wi-Fi";
// No address: a renewal at once and at passes 16, 32 and 48.
const std::vector<std::wstring> kRenewals(4, kRenew);
constexpr wchar_t kKey[] = L"8aK3pQ2m";
constexpr char kRefused[] = R"(, "faults": [{"call": "wlan.connect", "action": "fail"}])";

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    Worlds, WifiWorldJoinTest,
    ::testing::Values(
        // name, world, key, scan filter; Connect's ms, scans, connects; the
        // reports of 1 while it scans, then the others; the state settled in;
        // GetDynamicIP's result, address, ms and renewals; a line logged;
        // completed-join reports.
        JoinCase{"PhoneAp", "wifi-phone-ap", kKey, false, 0, 1, 1,
                 1, {1, 1, 1, 4}, 4, 0, "192.168.137.45", 500, {kRenew}, nullptr, 1},
        JoinCase{"NetworkAbsent", "wifi-network-absent", kKey, false, 4900, 3, 1,
                 50, {3}, 3, -1, "0.0.0.0", 5000, kRenewals, nullptr, 0},
        JoinCase{"WrongKey", "wifi-wrong-key", L"wrongkey1", false, 0, 1, 1,
                 1, {1, 1, 1, 3}, 3, -1, "0.0.0.0", 5000, kRenewals,
                 L"WlanSourceACMCallBack Connect Not Really Complete", 0},
        JoinCase{"LocationDenied", "wifi-location-denied", kKey, false, 4900, 3, 1,
                 50, {1, 1, 1, 3}, 3, 0, "192.168.137.45", 500, {kRenew}, nullptr, 1},
        JoinCase{"OtherChip", "wifi-other-chip", kKey, false, 0, 1, 1,
                 1, {1, 1, 1, 4}, 4, -1, "0.0.0.0", 5000, {L"ipconfig /renew "}, nullptr, 1},
        JoinCase{"ApipaThenLease", "wifi-dhcp-apipa-then-ok", kKey, false, 0, 1, 1,
                 1, {1, 1, 1, 4}, 4, 0, "192.168.137.52", 1000, {kRenew, kRenew},
                 L"WifiNetworkService::IPhandle GetIndex 12.", 1},
        JoinCase{"DhcpNeverNameQuoted", SilentDhcpWorld("Wi-Fi 2"), kKey, false, 0, 1, 1,
                 1, {1, 1, 1, 4}, 4, -1, "0.0.0.0", 5000,
                 std::vector<std::wstring>(4, L"ipconfig /renew \"Wi-Fi 2\""), nullptr, 1},
        // A refused WlanConnect is still answered with true.
        JoinCase{"RefusedConnect", SilentDhcpWorld("Wi-Fi", kRefused), kKey, false, 0, 1, 0,
                 1, {}, 0, -1, "0.0.0.0", 5000, kRenewals,
                 L"WlanConnect result=87 ERROR_SUCCESS=0", 0},
        // The filter hides the phone until the wait resets it in its ninth pass.
        JoinCase{"ScanFilterReset", "wifi-phone-ap", kKey, true, 800, 1, 1,
                 9, {1, 1, 1, 4}, 4, 0, "192.168.137.45", 500, {kRenew}, nullptr, 1},
        JoinCase{"RenewCommandTooLong", SilentDhcpWorld(std::string(600, 'n')), kKey, false,
                 0, 1, 1,
                 1, {1, 1, 1, 4}, 4, -1, "0.0.0.0", 0, {}, L"swprintf_s error, return now", 1}),
    [](const auto& info) { return std::string(info.param.name); });
// clang-format on

// Once joined: the address is there, the same profile again gives 2 and no
// second connection, and disconnecting reports 4.
TEST_F(WifiWorldTest, AJoinedPhoneIsNotJoinedTwiceAndLeavesOnDisconnect) {
    ApplyExampleWorld("wifi-phone-ap");
    EXPECT_TRUE(ConnectPhone(L"8aK3pQ2m"));
    pc().clock().Sleep(2000);
    // An address in hand is taken at once, without a renewal.
    std::string ip;
    const uint64_t start = Now();
    EXPECT_EQ(service()->GetDynamicIP(ip), 0);
    EXPECT_EQ(ip, "192.168.137.45");
    EXPECT_EQ(Now(), start);
    EXPECT_TRUE(pc().processes().History().empty());
    const auto connects = pc().wlan().History().connects;
    EXPECT_TRUE(ConnectPhone(L"8aK3pQ2m", false));
    EXPECT_EQ(states.Seen().back(), 2);
    EXPECT_EQ(pc().wlan().History().connects, connects);
    EXPECT_TRUE(service()->DisConnnect());
    pc().clock().Sleep(500);
    EXPECT_EQ(states.Seen().back(), 4);
}

// A desired-BSSID list that counts no entry never narrows the join: the
// phone is joined whatever BSSID the caller gives, of whatever length.
TEST_F(WifiWorldTest, AnyBssidJoinsThePhone) {
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
