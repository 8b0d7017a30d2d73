// The WLAN network service's own logic: the state table of its
// notifications, the observers, and the smaller steps of the address side.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "connectkit/WifiNetworkService.h"
#include "connectkit/WifiRealMonitor.h"
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

using namespace WifiConnectManage;

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

// Nothing in the library calls this step; the suite may, through the export.
TEST_F(WifiServiceTest, VerifyDynamicIPWantsANewUsableAddress) {
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

TEST_F(WifiServiceTest, GetadapterWantsTheVirtualAdapterWithAnAddress) {
    EXPECT_EQ(service()->Getadapter(), 1);
    sim::Scenario scenario;
    scenario.wifiDirect.virtualAdapter.ipPresent = false;
    pc().Apply(scenario);
    EXPECT_EQ(service()->Getadapter(), 0);
    scenario.wifiDirect.virtualAdapter.present = false;
    pc().Apply(scenario);
    EXPECT_EQ(service()->Getadapter(), 0);
}

TEST_F(WifiServiceTest, ExecStartsWithoutWaitingAndRefusesNothingToRun) {
    pc().processes().Install(L"ipconfig", {0, 10000, nullptr});
    std::wstring command = L"ipconfig /all";
    const uint64_t start = Now();
    EXPECT_TRUE(service()->exec(command.data(), 0));
    EXPECT_EQ(Now(), start);
    EXPECT_FALSE(service()->exec(nullptr, 0));
}

}  // namespace
}  // namespace connectkit::test
