#include "connectkit/SoftAPManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "connectkit/ErrorStatus.h"
#include "support/ErrorRecorder.h"
#include "support/HotspotWorld.h"
#include "support/LogCapture.h"

namespace connectkit::test {
namespace {

bool InAlphabet(const std::string& text, size_t length) {
    return text.size() == length && std::all_of(text.begin(), text.end(), [](char c) {
               return std::isalnum(static_cast<unsigned char>(c)) != 0;
           });
}

// "DIRECT-" + two alphabet characters + "-veltra".
bool IsFullSsid(const std::string& ssid) {
    return ssid.size() == 16 && ssid.compare(0, 7, "DIRECT-") == 0 &&
           ssid.compare(9, 7, "-veltra") == 0 && InAlphabet(ssid.substr(7, 2), 2);
}

class SoftAPManagerTest : public HotspotTest {};

TEST_F(SoftAPManagerTest, CreateHandsThePhoneEverythingItNeeds) {
    SoftAPInfo info;
    uint64_t elapsed = 0;
    ASSERT_EQ(Timed(elapsed, [&] { return SystemCreateSoftAP(info); }), 0);
    EXPECT_TRUE(IsFullSsid(info.ssid)) << info.ssid;
    EXPECT_TRUE(InAlphabet(info.passphrase, 8)) << info.passphrase;
    EXPECT_NE(info.channel, 0);
    EXPECT_EQ(info.channel, GetSoftAPChannel());
    // Nothing but the publisher's own start latency.
    EXPECT_EQ(elapsed, World().publisher.startLatencyMs);
    EXPECT_EQ(GetSoftApError(), 0);
    EXPECT_EQ(pc().wifiDirect().History().lastSsid,
              std::wstring(info.ssid.begin(), info.ssid.end()));

    // A second create reuses the running access point; the credentials
    // outlive a destroy until a change is asked.
    const SoftAPInfo first = info;
    SoftAPInfo second;
    ASSERT_EQ(SystemCreateSoftAP(second), 0);
    EXPECT_EQ(pc().wifiDirect().History().starts, 1u);
    EXPECT_EQ(second.ssid, first.ssid);
    EXPECT_EQ(second.passphrase, first.passphrase);
    EXPECT_TRUE(std::equal(first.mac, first.mac + 6, second.mac));
    // Destroying stops the access point and resets the preferred channel.
    EXPECT_EQ(SystemDestroySoftAP(info), 0);
    EXPECT_FALSE(ConnectKit::LegacyAP::GetInstance()->IsLegacyAPReady());
    EXPECT_EQ(pc().wifiDirect().History().stops, 1u);
    EXPECT_GE(pc().firewall().RemoveDhcpRulesCalls(), 1u);
    EXPECT_EQ(sim::DriverLog().calls.back().entry, "WifiPanResetPreferredChannelSettings");
    // A destroy with nothing running still answers what Stop answers.
    EXPECT_EQ(SystemDestroySoftAP(info), 0);
    ASSERT_EQ(SystemCreateSoftAP(second), 0);
    EXPECT_EQ(second.ssid, first.ssid);
    EXPECT_EQ(SystemDestroySoftAP(second), 0);
    SoftAPManager::GetInstance()->ChangeSSIDAndPasswd();
    ASSERT_EQ(SystemCreateSoftAP(second), 0);
    EXPECT_NE(second.ssid + second.passphrase, first.ssid + first.passphrase);
    EXPECT_TRUE(InAlphabet(second.passphrase, 8)) << second.passphrase;
}

// Without a MAC the access point stops after three seconds of tries, unless
// repairing the IP interface brings the MAC back.
TEST_F(SoftAPManagerTest, AMissingMacStopsTheAccessPointUnlessARepairBringsItBack) {
    auto world = World();
    world.virtualAdapter.macDelayMs.reset();
    Use(world);
    LogCapture log;
    SoftAPInfo info;
    uint64_t elapsed = 0;
    EXPECT_EQ(Timed(elapsed, [&] { return SystemCreateSoftAP(info); }), SOFTAP_NO_MAC_IP_PRESENT);
    EXPECT_EQ(GetSoftApError(), SOFTAP_NO_MAC_IP_PRESENT);
    EXPECT_GE(elapsed, World().publisher.startLatencyMs + 3000);
    EXPECT_TRUE(log.Contains(L"5.1 NetshInterfaceIp"));
    EXPECT_TRUE(log.Contains(L"5.2.1 retry GetMacAddress failed"));
    EXPECT_EQ(pc().wifiDirect().History().stops, 1u);
    EXPECT_FALSE(ConnectKit::LegacyAP::GetInstance()->IsLegacyAPReady());

    world.virtualAdapter.macAfterRepair = true;
    Use(world);
    EXPECT_EQ(SystemCreateSoftAP(info), 0);
    EXPECT_TRUE(log.Contains(L"5.3 retry GetMacAddress success"));
    auto mac = World().virtualAdapter.mac;
    EXPECT_TRUE(std::equal(mac.begin(), mac.end(), info.mac));
}

TEST_F(SoftAPManagerTest, AForeignGroupOwnerIsRestartedAwayOrReported) {
    ErrorRecorder errors;
    ErrorStatus::GetInstance()->RegistListener(&errors);
    auto world = World();
    world.foreignGroupOwner.running = true;
    Use(world);
    SoftAPInfo info;
    EXPECT_EQ(SystemCreateSoftAP(info), 0);
    EXPECT_EQ(pc().wifiDirect().History().adapterRestarts, 1u);
    SystemDestroySoftAP(info);

    world.foreignGroupOwner.survivesRestart = true;
    Use(world);
    EXPECT_EQ(SystemCreateSoftAP(info), SOFTAP_FOREIGN_GROUP_OWNER);
    ASSERT_TRUE(errors.WaitForOne());
    EXPECT_EQ(errors.Codes(), std::vector<ConnectErrorCode>{CONNECT_ERROR_GO_ALREADY_EXIST});
    ErrorStatus::GetInstance()->UnregistListener(&errors);
}

// The driver cannot say which channel runs for the first two reads (each
// retried once): the last decision stands and the error stays.
TEST_F(SoftAPManagerTest, RefreshingTheChannelReadsTheCardOrKeepsTheDecision) {
    Use(World(), {{"WifiPanQueryPreferredChannelSetting", 4}});
    SoftAPInfo info;
    ASSERT_EQ(SystemCreateSoftAP(info), SOFTAP_READY);
    ASSERT_NE(info.channel, 0);
    EXPECT_EQ(GetSoftApError(), -74);
    EXPECT_EQ(SystemRefreshSoftAPChannel(), info.channel);
    EXPECT_EQ(GetSoftApError(), -74);
    EXPECT_EQ(SystemRefreshSoftAPChannel(), info.channel);
    EXPECT_EQ(GetSoftAPChannel(), info.channel);
    EXPECT_EQ(sim::DriverLog().calls.back().entry, "WifiPanQueryPreferredChannelSetting");
}

// What a suite observer may do when a phone joins: call back into the hotspot.
struct Reentry {
    const char* name;
    void (*call)();
};

void PrintTo(const Reentry& reentry, std::ostream* out) {
    *out << reentry.name;
}

class ReenteringObserver final : public ISoftApConnectStatus {
public:
    explicit ReenteringObserver(void (*call)()) : call_(call) {}
    std::atomic<int> returned{0};
    void OnSoftApConnectStatus(int) override {
        call_();
        ++returned;
    }

private:
    void (*call_)();
};

class SoftAPReentryTest : public SoftAPManagerTest,
                          public ::testing::WithParamInterface<Reentry> {};

// The phone joins while the creating thread still polls for a MAC that never
// shows, after which the creator stops the access point itself: both threads
// then need the legacy AP, one from inside its notification.
TEST_P(SoftAPReentryTest, AnObserverMayCallBackWhileACreationRuns) {
    auto world = World();
    world.virtualAdapter.macDelayMs.reset();
    world.phones = {Phone(L"phone-a", "192.168.137.23", 1000, 0, false)};
    Use(world);
    ReenteringObserver observer(GetParam().call);
    RegistSoftApConnectStatus(&observer);
    auto done = pc().clock().NewEvent(true, false);
    std::atomic<int> result{1};
    auto creator = pc().clock().StartThread([&result, &done] {
        SoftAPInfo info;
        result = SystemCreateSoftAP(info);
        done->Set();
    });
    // Deadlocked threads all block, so virtual time runs to this deadline at
    // once; the threads cannot be freed, so the process ends here.
    if (done->Wait(600000) != platform::WaitResult::Signaled) {
        ADD_FAILURE() << "the creating thread and the notification thread deadlocked";
        std::fflush(stdout);
        std::_Exit(1);
    }
    creator->Join();
    Settle();
    RegistSoftApConnectStatus(nullptr);
    // Joined, and left when the access point stopped: every call came back.
    EXPECT_GE(observer.returned, 1);
    EXPECT_TRUE(result == SOFTAP_NO_MAC_IP_ABSENT || result == SOFTAP_NO_MAC_IP_PRESENT) << result;
}

const Reentry kReentries[] = {
    {"RefreshChannel", [] { SystemRefreshSoftAPChannel(); }},
    {"Destroy",
     [] {
         SoftAPInfo info;
         SystemDestroySoftAP(info);
     }},
    {"ChangeCredentials", [] { SoftAPManager::GetInstance()->ChangeSSIDAndPasswd(); }},
};

INSTANTIATE_TEST_SUITE_P(Reentries, SoftAPReentryTest, ::testing::ValuesIn(kReentries),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(SoftAPManagerTest, KeptCredentialsStayWholeWhileAnotherThreadRenewsThem) {
    auto* manager = SoftAPManager::GetInstance();
    std::atomic<bool> stop{false};
    auto changer = pc().clock().StartThread([manager, &stop] {
        while (!stop) {
            manager->ChangeSSIDAndPasswd();
        }
    });
    for (int i = 0; i < 2000; ++i) {
        std::string ssidPart;
        std::string passphrase;
        manager->RefreshSSIDAndPasswd(ssidPart, passphrase);
        ASSERT_TRUE(InAlphabet(ssidPart, 2) && InAlphabet(passphrase, 8))
            << ssidPart << " " << passphrase;
    }
    stop = true;
    changer->Join();
}

TEST_F(SoftAPManagerTest, CreateAndDestroyFromTwoThreadsWhilePhonesComeAndGo) {
    auto world = World();
    for (int i = 0; i < 6; ++i) {
        world.phones.push_back(Phone(L"phone-" + std::to_wstring(i),
                                     "192.168.137." + std::to_string(30 + i),
                                     300 + 250 * static_cast<uint32_t>(i), 900, i % 2 == 0));
    }
    Use(world);
    Recorder observer(true);
    ConnectKit::LegacyAP::GetInstance()->RegisterLegacyAPNotificationEventCallback(&observer);
    std::atomic<int> created{0};
    auto worker = [&created] {
        for (int round = 0; round < 5; ++round) {
            SoftAPInfo info;
            int result = SystemCreateSoftAP(info);
            // The other thread's destroy can stop a start or take the MAC
            // away; every second failed start restarts (so disables for a
            // while) the virtual adapter.
            EXPECT_TRUE(result == SOFTAP_READY || result == SOFTAP_START_FAILED ||
                        result == SOFTAP_NO_MAC_IP_PRESENT ||
                        result == SOFTAP_START_FAILED_ADAPTER_DISABLED)
                << result;
            created += result == 0 ? 1 : 0;
            SystemDestroySoftAP(info);
        }
    };
    auto first = pc().clock().StartThread(worker);
    auto second = pc().clock().StartThread(worker);
    first->Join();
    second->Join();
    Settle();
    ConnectKit::LegacyAP::GetInstance()->UnRegisterLegacyAPNotificationEventCallback(&observer);
    EXPECT_GT(created, 0);
    EXPECT_FALSE(observer.AdvertiserStatuses().empty());
    ExpectNothingLeft();
}

// Every example world named after a hotspot outcome reaches that outcome.
struct Expectation {
    const char* world;
    SoftAPResult result;
};

void PrintTo(const Expectation& expectation, std::ostream* out) {
    *out << expectation.world << " -> " << SoftAPResultMeaning(expectation.result);
}

class HotspotScenarioTest : public SimTest, public ::testing::WithParamInterface<Expectation> {};

TEST_P(HotspotScenarioTest, CreateReachesTheResultTheWorldIsNamedFor) {
    ApplyExampleWorld(GetParam().world);
    SoftAPInfo info;
    int result = SystemCreateSoftAP(info);
    EXPECT_EQ(result, GetParam().result);
    // Only some outcomes stay for GetSoftApError.
    auto entry = std::find_if(std::begin(kSoftAPResults), std::end(kSoftAPResults),
                              [&](const auto& known) { return known.result == result; });
    ASSERT_NE(entry, std::end(kSoftAPResults)) << result;
    EXPECT_EQ(GetSoftApError(), entry->kept ? result : 0);
    SystemDestroySoftAP(info);
}

INSTANTIATE_TEST_SUITE_P(
    Worlds, HotspotScenarioTest,
    ::testing::Values(
        Expectation{"hotspot-ok", SOFTAP_READY},
        Expectation{"hotspot-start-fails", SOFTAP_START_FAILED},
        Expectation{"hotspot-start-fails-after-restart", SOFTAP_START_FAILED_AFTER_RESTART},
        Expectation{"hotspot-no-mac", SOFTAP_NO_MAC_IP_ABSENT},
        Expectation{"hotspot-no-mac-ip-present", SOFTAP_NO_MAC_IP_PRESENT},
        Expectation{"hotspot-foreign-go", SOFTAP_FOREIGN_GROUP_OWNER},
        Expectation{"hotspot-no-virtual-adapter", SOFTAP_START_FAILED_ADAPTER_MISSING},
        Expectation{"hotspot-virtual-adapter-disabled", SOFTAP_START_FAILED_ADAPTER_DISABLED},
        Expectation{"intel-de", SOFTAP_READY}, Expectation{"intel-cn", SOFTAP_READY},
        Expectation{"realtek-us", SOFTAP_READY},
        Expectation{"phones-join-and-leave", SOFTAP_READY}),
    [](const auto& info) {
        std::string name = info.param.world;
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    });

}  // namespace
}  // namespace connectkit::test
