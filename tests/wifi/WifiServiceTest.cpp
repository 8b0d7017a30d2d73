// The WLAN network service's own logic: the state table of its
// notifications, the observers, and the address side against the simulated
// PC's adapters and programs.
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "connectkit/WifiNetworkService.h"
#include "platform/ports/WlanRecords.h"
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

using platform::NetworkAdapterInfo;
using WifiConnectManage::WifiConnectState;
using WifiConnectManage::WifiNetworkService;
using WifiConnectManage::WifiNetworkServiceInspector;

class Recorder : public WifiNetworkService::IWifiNetworkServiceObserver {
public:
    void OnWifiStateChanged(std::wstring ssid, WifiConnectState state) override {
        std::lock_guard<std::mutex> lock(mutex);
        seen.emplace_back(ssid, state);
    }
    std::mutex mutex;
    std::vector<std::pair<std::wstring, WifiConnectState>> seen;
};

class Thrower : public WifiNetworkService::IWifiNetworkServiceObserver {
public:
    void OnWifiStateChanged(std::wstring, WifiConnectState) override {
        throw std::runtime_error("host bug");
    }
};

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

class WifiServiceTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        service()->RegistObserver(&recorder);
    }
    void TearDown() override {
        service()->UnregistObserver(&recorder);
        SimTest::TearDown();
    }
    static WifiNetworkService* service() { return WifiNetworkService::GetInstance(); }
    Recorder recorder;
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
        {platform::kWlanSourceMsm, 0, 1, WifiConnectManage::WifiConnecting},
        {platform::kWlanSourceAcm, platform::kAcmDisconnected, 4,
         WifiConnectManage::WifiDisConnected},
        {platform::kWlanSourceMsm, 3, 1, WifiConnectManage::WifiConnecting},
        {platform::kWlanSourceAcm, platform::kAcmConnectionAttemptFail, -1,
         WifiConnectManage::WifiConnecting},
        {platform::kWlanSourceMsm, platform::kMsmConnected, -1, WifiConnectManage::WifiConnecting},
        {platform::kWlanSourceAcm, platform::kAcmDisconnecting, 4,
         WifiConnectManage::WifiDisConnected},
        {platform::kWlanSourceAcm, platform::kAcmConnectionComplete, 3,
         WifiConnectManage::WifiConnectIncomplete},
        {platform::kWlanSourceAcm, 99, -1, WifiConnectManage::WifiConnectIncomplete},
        {0x4, 1, -1, WifiConnectManage::WifiConnectIncomplete},
    };
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
}

TEST_F(WifiServiceTest, MalformedNotificationsAreLoggedAndChangeNothing) {
    LogCapture capture;
    auto before = service()->GetCurentWifiState();
    WifiNetworkServiceInspector::Notify(nullptr);
    platform::WlanNotification shortData{
        platform::kWlanSourceAcm, platform::kAcmDisconnected, {}, std::vector<uint8_t>(100, 0xFF)};
    WifiNetworkServiceInspector::Notify(&shortData);
    platform::WlanNotification noData{platform::kWlanSourceMsm, 1, {}, {}};
    WifiNetworkServiceInspector::Notify(&noData);
    // A profile name without its terminator stops at its field's end.
    auto unterminated =
        Notification(platform::kWlanSourceAcm, platform::kAcmDisconnected, std::wstring(300, L'n'));
    WifiNetworkServiceInspector::Notify(&unterminated);
    EXPECT_TRUE(capture.Contains(L"error:connectionNotifyData null & notifyData null"));
    EXPECT_EQ(capture.Count(L"error:connectionNotifyData null but NotificationSource="), 2u);
    ASSERT_EQ(recorder.seen.size(), 1u);
    EXPECT_EQ(recorder.seen[0].first, std::wstring(255, L'n'));
    EXPECT_NE(before, WifiConnectManage::WifiConnecting);
}

TEST_F(WifiServiceTest, ObserversAreKeptOnceAndOneThatThrowsDoesNotStopTheOthers) {
    LogCapture capture;
    Thrower thrower;
    EXPECT_FALSE(service()->RegistObserver(nullptr));
    EXPECT_TRUE(service()->RegistObserver(&thrower));
    EXPECT_TRUE(service()->RegistObserver(&recorder));  // already there
    auto notification = Notification(platform::kWlanSourceMsm, 1, L"x");
    WifiNetworkServiceInspector::Notify(&notification);
    EXPECT_EQ(recorder.seen.size(), 1u);
    EXPECT_TRUE(capture.Contains(L"observer threw: host bug"));
    EXPECT_TRUE(service()->UnregistObserver(&thrower));
    EXPECT_FALSE(service()->UnregistObserver(nullptr));
}

TEST_F(WifiServiceTest, VerifyDynamicIPWantsANewUsableAddress) {
    struct Row {
        const char* current;
        const char* ip;
        bool usable;
    };
    const Row rows[] = {
        {"0.0.0.0", "", false},         {"0.0.0.0", "0", false},
        {"0.0.0.0", "0.0.0.0", false},  {"0.0.0.0", "169.254.3.4", false},
        {"0.0.0.0", "10.0.0.2", true},  {"", "10.0.0.2", true},
        {"0", "10.0.0.2", true},        {"10.0.0.2", "10.0.0.2", false},
        {"10.0.0.2", "10.0.0.3", true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(WifiNetworkServiceInspector::Verify(row.current, row.ip), row.usable)
            << row.current << " -> " << row.ip;
    }
}

// The address side, against adapters the test owns and an ipconfig whose
// renewals it scripts.
class WifiAddressTest : public SimTest {
protected:
    static constexpr uint32_t kWifiIndex = 22;

    void SetUp() override {
        SimTest::SetUp();
        share_.reset(new sim::SimNetworkAdapters::Share(pc().adapters().Own()));
    }
    void TearDown() override {
        share_.reset();
        SimTest::TearDown();
    }

    void Adapters(const std::wstring& wifiDescription, const std::string& address,
                  const std::wstring& friendlyName = L"Wi-Fi") {
        NetworkAdapterInfo ethernet;
        ethernet.index = 3;
        ethernet.description = L"Realtek PCIe GbE Family Controller";
        ethernet.name = "{E}";
        ethernet.ipv4 = {"10.1.1.5"};
        NetworkAdapterInfo wifi;
        wifi.kind = NetworkAdapterInfo::Kind::Wifi;
        wifi.index = kWifiIndex;
        wifi.description = wifiDescription;
        wifi.name = "{W}";
        wifi.friendlyName = friendlyName;
        if (!address.empty()) {
            wifi.ipv4 = {address};
        }
        share_->Set({ethernet, wifi});
    }

    // Each renewal hands out the next address of `leases` (the last one
    // stays), after `delayMs` of virtual time: by default within one pass.
    void Ipconfig(std::vector<std::string> leases, uint32_t delayMs = 50) {
        auto next = std::make_shared<size_t>(0);
        pc().processes().Install(
            L"ipconfig",
            {0, delayMs, [this, leases, next](const std::wstring&) {
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

    uint64_t Now() { return pc().clock().TickCount64(); }
    WifiNetworkService* service() { return WifiNetworkService::GetInstance(); }
    std::unique_ptr<sim::SimNetworkAdapters::Share> share_;
};

TEST_F(WifiAddressTest, PhoneHotspotAddressIsTakenAtOnce) {
    Adapters(L"Intel(R) Wi-Fi 6 AX201 Intel(R) Wireless-AC 9560", "192.168.137.44");
    std::string ip;
    EXPECT_EQ(service()->GetDynamicIP(ip), 0);
    EXPECT_EQ(ip, "192.168.137.44");
    EXPECT_TRUE(Commands().empty());
}

TEST_F(WifiAddressTest, AnotherChipIsNeverFoundAndTheWaitEndsAfterFiftyPasses) {
    Adapters(L"Qualcomm Atheros QCA9377 Wireless Network Adapter", "192.168.137.44");
    Ipconfig({"192.168.137.44"});
    std::string ip;
    const uint64_t start = Now();
    EXPECT_EQ(service()->GetDynamicIP(ip), -1);
    EXPECT_EQ(Now() - start, 5000u);
    EXPECT_EQ(ip, "0.0.0.0");
    EXPECT_EQ(Commands(), std::vector<std::wstring>{L"ipconfig /renew "});
}

TEST_F(WifiAddressTest, AutomaticPrivateAddressIsReleasedAndRenewedAgain) {
    LogCapture capture;
    Adapters(L"Intel(R) Dual Band Wireless-AC 8265", "");
    Ipconfig({"169.254.7.7", "192.168.137.9"});
    std::string ip;
    EXPECT_EQ(service()->GetDynamicIP(ip), 0);
    EXPECT_EQ(ip, "192.168.137.9");
    EXPECT_EQ(Commands(),
              (std::vector<std::wstring>{L"ipconfig /renew Wi-Fi", L"ipconfig /renew Wi-Fi"}));
    EXPECT_TRUE(capture.Contains(L"ipconfig /renew2"));
    // IP Helper's release through the interface table reached the adapter.
    EXPECT_TRUE(capture.Contains(L"WifiNetworkService::IPhandle GetIndex 22."));
}

TEST_F(WifiAddressTest, AnAdapterWithoutAddressGetsARenewEverySixteenPasses) {
    LogCapture capture;
    Adapters(L"Broadcom 802.11ac Wireless PCIE Full Dongle Adapter", "", L"Wi-Fi 2");
    Ipconfig({"0.0.0.0"});
    std::string ip;
    EXPECT_EQ(service()->GetDynamicIP(ip), -1);
    // The first renew, then passes 16, 32 and 48; the name is quoted.
    EXPECT_EQ(Commands(), std::vector<std::wstring>(4, L"ipconfig /renew \"Wi-Fi 2\""));
    EXPECT_EQ(capture.Count(L"ipconfig /renew3"), 3u);
}

TEST_F(WifiAddressTest, RenewCommandsThatCannotBeFormattedEndTheWait) {
    LogCapture capture;
    Adapters(L"Intel(R) Wireless-AC 9462", "", std::wstring(600, L'n'));
    std::string ip;
    EXPECT_EQ(service()->GetDynamicIP(ip), -1);
    EXPECT_TRUE(capture.Contains(L"swprintf_s error, return now"));
    EXPECT_TRUE(Commands().empty());
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
