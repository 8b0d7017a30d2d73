// The WLAN network service's own logic: the state table of its
// notifications, the observers, and the address side against the simulated
// PC's adapters and programs.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "connectkit/WifiNetworkService.h"
#include "connectkit/WifiRealMonitor.h"
#include "platform/ports/WlanRecords.h"
#include "platform/suite/DEString.h"
#include "support/LogCapture.h"
#include "support/SimWorld.h"

namespace WifiConnectManage {

// Reaches the service's private steps.
class WifiNetworkServiceInspector {
public:
    static void Notify(connectkit::platform::WlanNotification* notification) {
        WifiNetworkService::OnNotificationReceived(notification, nullptr);
    }
    static bool Verify(const std::string& current, std::string ip) {
        WifiNetworkService::GetInstance()->currentIp_ = current;
        return WifiNetworkService::GetInstance()->VerifyDynamicIP(ip);
    }
};

}  // namespace WifiConnectManage

namespace connectkit::test {
namespace {

using namespace WifiConnectManage;
using platform::NetworkAdapterInfo;

platform::WlanNotification Notification(uint32_t source, uint32_t code,
                                        const std::wstring& profile) {
    platform::WlanConnectionNotificationData data;
    data.profileName = profile;
    return {source, code, {}, platform::EncodeConnectionNotification(data)};
}

TEST(WifiStateTest, StateToStringKeepsItsTexts) {
    const wchar_t* expected[] = {L"unknow", L"WifiConnecting",   L"WifiConnected",
                                 L"unknow", L"WifiDisConnected", L"WifiConnectFailed"};
    for (int state = 0; state < 6; ++state) {
        EXPECT_EQ(WifiNetworkService::StateToString(static_cast<WifiConnectState>(state)),
                  expected[state]);
    }
}

// Observers as a host may register them: one that throws, then the
// recorder, twice. Every report must reach the recorder once.
class WifiServiceTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        ASSERT_TRUE(service()->RegistObserver(&thrower));
        ASSERT_TRUE(service()->RegistObserver(&recorder));
        ASSERT_TRUE(service()->RegistObserver(&recorder));
    }
    void TearDown() override {
        EXPECT_TRUE(service()->UnregistObserver(&thrower));
        service()->UnregistObserver(&recorder);
        SimTest::TearDown();
    }
    static WifiNetworkService* service() { return WifiNetworkService::GetInstance(); }
    struct : WifiNetworkService::IWifiNetworkServiceObserver {
        void OnWifiStateChanged(std::wstring, WifiConnectState) override {
            throw std::runtime_error("host bug");
        }
    } thrower;
    struct : WifiNetworkService::IWifiNetworkServiceObserver {
        void OnWifiStateChanged(std::wstring ssid, WifiConnectState state) override {
            seen.emplace_back(ssid, state);
        }
        std::vector<std::pair<std::wstring, WifiConnectState>> seen;
    } recorder;
};

// Each notification code to the state the service stores and reports; a
// connection complete without an interface to check counts as incomplete.
TEST_F(WifiServiceTest, NotificationsMoveTheStateAsTheTableSays) {
    struct Row {
        uint32_t source, code;
        int reported;  // -1: nothing
        WifiConnectState stored;
    };
    const Row rows[] = {
        {platform::kWlanSourceMsm, 0, 1, WifiConnecting},
        {platform::kWlanSourceAcm, platform::kAcmDisconnected, 4, WifiDisConnected},
        {platform::kWlanSourceMsm, 3, 1, WifiConnecting},
        {platform::kWlanSourceAcm, platform::kAcmConnectionAttemptFail, -1, WifiConnecting},
        {platform::kWlanSourceMsm, platform::kMsmConnected, -1, WifiConnecting},
        {platform::kWlanSourceAcm, platform::kAcmDisconnecting, 4, WifiDisConnected},
        {platform::kWlanSourceAcm, platform::kAcmConnectionComplete, 3, WifiConnectIncomplete},
        {platform::kWlanSourceAcm, 99, -1, WifiConnectIncomplete},
        {0x4, 1, -1, WifiConnectIncomplete},
    };
    LogCapture capture;
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.source) + "/" + std::to_string(row.code));
        recorder.seen.clear();
        auto notification = Notification(row.source, row.code, L"Phone-AP");
        WifiNetworkServiceInspector::Notify(&notification);
        if (row.reported < 0) {
            EXPECT_TRUE(recorder.seen.empty());
        } else {
            ASSERT_EQ(recorder.seen.size(), 1u);
            EXPECT_EQ(recorder.seen[0].first, L"Phone-AP");
            EXPECT_EQ(recorder.seen[0].second, row.reported);
        }
        EXPECT_EQ(service()->GetCurentWifiState(), row.stored);
    }
    EXPECT_EQ(capture.Count(L"observer threw: host bug"), 5u);
}

TEST_F(WifiServiceTest, MalformedNotificationsAreLoggedAndChangeNothing) {
    LogCapture capture;
    // A profile name without its terminator stops at its field's end.
    auto unterminated =
        Notification(platform::kWlanSourceAcm, platform::kAcmDisconnected, std::wstring(300, L'n'));
    WifiNetworkServiceInspector::Notify(&unterminated);
    WifiNetworkServiceInspector::Notify(nullptr);
    platform::WlanNotification shortData{
        platform::kWlanSourceAcm, platform::kAcmDisconnected, {}, std::vector<uint8_t>(100, 0xFF)};
    WifiNetworkServiceInspector::Notify(&shortData);
    platform::WlanNotification noData{platform::kWlanSourceMsm, 1, {}, {}};
    WifiNetworkServiceInspector::Notify(&noData);
    EXPECT_TRUE(capture.Contains(L"error:connectionNotifyData null & notifyData null"));
    EXPECT_EQ(capture.Count(L"error:connectionNotifyData null but NotificationSource="), 2u);
    ASSERT_EQ(recorder.seen.size(), 1u);
    EXPECT_EQ(recorder.seen[0].first, std::wstring(255, L'n'));
    EXPECT_EQ(service()->GetCurentWifiState(), WifiDisConnected);
}

// No observer, or what a port throws, gives the exported members' failure
// values.
TEST_F(WifiServiceTest, NullObserversAndThrowingPortsGiveTheFailureValues) {
    EXPECT_FALSE(service()->RegistObserver(nullptr));
    EXPECT_FALSE(service()->UnregistObserver(nullptr));
    for (const char* point : {"wlan.open", "wlan.enum", "adapters.list"}) {
        ASSERT_TRUE(pc().faults().Add({point, sim::FaultAction::Throw, 0, std::nullopt}));
    }
    EXPECT_FALSE(WifiRealMonitor::GetInstance()->WifiRealMonitorRegist());
    EXPECT_FALSE(service()->DisConnnect());
    EXPECT_FALSE(service()->Scan());
    EXPECT_TRUE(service()->getScanResults().empty());
    EXPECT_EQ(service()->Getadapter(), 0);
}

// The address side, against adapters the test owns and an ipconfig whose
// renewals it scripts.
class WifiAddressTest : public SimTest {
protected:
    static constexpr uint32_t kWifiIndex = 22;

    void TearDown() override {
        share_.reset();
        SimTest::TearDown();
    }

    // A fresh PC whose adapters the test owns: an Ethernet one and a Wi-Fi one.
    void Adapters(const std::wstring& wifiDescription, const std::string& address,
                  const std::wstring& friendlyName) {
        share_.reset();
        pc().Reset();
        share_.reset(new sim::SimNetworkAdapters::Share(pc().adapters().Own()));
        NetworkAdapterInfo ethernet;
        ethernet.index = 3;
        ethernet.description = L"Realtek PCIe GbE Family Controller";
        ethernet.name = "{E}";
        ethernet.ipv4 = {"10.1.1.5"};
        NetworkAdapterInfo wifi = ethernet;
        wifi.kind = NetworkAdapterInfo::Kind::Wifi;
        wifi.index = kWifiIndex;
        wifi.description = wifiDescription;
        wifi.name = "{W}";
        wifi.friendlyName = friendlyName;
        wifi.ipv4.assign(address.empty() ? 0 : 1, address);
        share_->Set({ethernet, wifi});
    }

    // Each renewal hands out the next address of `leases` (the last one
    // stays), 50 ms of virtual time later: within one pass.
    void Ipconfig(std::vector<std::string> leases) {
        auto next = std::make_shared<size_t>(0);
        pc().processes().Install(
            L"ipconfig",
            {0, 50, [this, leases, next](const std::wstring&) {
                 const std::string lease = leases[std::min((*next)++, leases.size() - 1)];
                 pc().adapters().Update(
                     kWifiIndex, [&](NetworkAdapterInfo& adapter) { adapter.ipv4 = {lease}; });
                 return 0u;
             }});
    }

    std::vector<std::wstring> Commands() {
        std::vector<std::wstring> lines;
        for (const auto& started : pc().processes().History()) {
            lines.push_back(started.commandLine);
        }
        return lines;
    }

    WifiNetworkService* service() { return WifiNetworkService::GetInstance(); }
    std::unique_ptr<sim::SimNetworkAdapters::Share> share_;
};

// The Wi-Fi chips the service knows, with the address they have and the
// leases that ipconfig hands out, to what GetDynamicIP answers and starts.
TEST_F(WifiAddressTest, TheWaitForAnAddressEndsAsItShould) {
    struct Row {
        const wchar_t* description;
        const char* address;
        std::wstring friendlyName;
        std::vector<std::string> leases;  // empty: no ipconfig installed
        int result;
        const char* ip;
        uint64_t elapsedMs;
        size_t renews;
        const wchar_t* command;
        const wchar_t* logged;
    };
    // clang-format off
    const Row rows[] = {
        // The phone's hotspot address is taken at once, without a renew.
        {L"Intel(R) Wi-Fi 6 AX201 Intel(R) Wireless-AC 9560", "192.168.137.44", L"Wi-Fi", {},
         0, "192.168.137.44", 0, 0, L"", nullptr},
        // Another chip is never found: fifty passes, one renew of no name.
        {L"Qualcomm Atheros QCA9377 Wireless Network Adapter", "192.168.137.44", L"Wi-Fi",
         {"192.168.137.44"}, -1, "0.0.0.0", 5000, 1, L"ipconfig /renew ", nullptr},
        // An automatic private address is released and renewed again at once.
        {L"Intel(R) Dual Band Wireless-AC 8265", "", L"Wi-Fi", {"169.254.7.7", "192.168.137.9"},
         0, "192.168.137.9", 200, 2, L"ipconfig /renew Wi-Fi",
         L"WifiNetworkService::IPhandle GetIndex 22."},
        // No address: a renew at passes 16, 32 and 48; the name is quoted.
        {L"Broadcom 802.11ac Wireless PCIE Full Dongle Adapter", "", L"Wi-Fi 2", {"0.0.0.0"},
         -1, "0.0.0.0", 5000, 4, L"ipconfig /renew \"Wi-Fi 2\"", nullptr},
        // A renew command that cannot be formatted ends the wait.
        {L"Intel(R) Wireless-AC 9462", "", std::wstring(600, L'n'), {},
         -1, "0.0.0.0", 0, 0, L"", L"swprintf_s error, return now"},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(DE::UnicodeToUTF8(row.description));
        Adapters(row.description, row.address, row.friendlyName);
        LogCapture capture;
        if (!row.leases.empty()) {
            Ipconfig(row.leases);
        }
        std::string ip;
        const uint64_t start = Now();
        EXPECT_EQ(service()->GetDynamicIP(ip), row.result);
        EXPECT_EQ(Now() - start, row.elapsedMs);
        EXPECT_EQ(ip, row.ip);
        EXPECT_EQ(Commands(), std::vector<std::wstring>(row.renews, row.command));
        if (row.logged != nullptr) {
            EXPECT_TRUE(capture.Contains(row.logged));
        }
    }
}

// Nothing in the library calls this step; the suite may, through the export.
TEST_F(WifiAddressTest, VerifyDynamicIPWantsANewUsableAddress) {
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"0.0.0.0", "", false},         {"0.0.0.0", "0", false},
        {"0.0.0.0", "0.0.0.0", false},  {"0.0.0.0", "169.254.3.4", false},
        {"0.0.0.0", "10.0.0.2", true},  {"", "10.0.0.2", true},
        {"0", "10.0.0.2", true},        {"10.0.0.2", "10.0.0.2", false},
        {"10.0.0.2", "10.0.0.3", true},
    };
    for (const auto& [current, ip, usable] : rows) {
        EXPECT_EQ(WifiNetworkServiceInspector::Verify(current, ip), usable)
            << current << " -> " << ip;
    }
}

TEST_F(WifiAddressTest, GetadapterWantsTheVirtualAdapterWithAnAddress) {
    EXPECT_EQ(service()->Getadapter(), 1);
    sim::Scenario scenario;
    scenario.wifiDirect.virtualAdapter.ipPresent = false;
    pc().Apply(scenario);
    EXPECT_EQ(service()->Getadapter(), 0);
    scenario.wifiDirect.virtualAdapter.present = false;
    pc().Apply(scenario);
    EXPECT_EQ(service()->Getadapter(), 0);
}

TEST_F(WifiAddressTest, ExecStartsWithoutWaitingAndRefusesNothingToRun) {
    pc().processes().Install(L"ipconfig", {0, 10000, nullptr});
    std::wstring command = L"ipconfig /all";
    const uint64_t start = Now();
    EXPECT_TRUE(service()->exec(command.data(), 0));
    EXPECT_EQ(Now(), start);
    EXPECT_FALSE(service()->exec(nullptr, 0));
}

}  // namespace
}  // namespace connectkit::test
