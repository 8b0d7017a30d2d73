#include "connectkit/LegacyAP.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "channel/CommonAPI.h"
#include "platform/sim/wifidirect/SimWiFiDirect.h"
#include "support/HotspotWorld.h"
#include "support/LogCapture.h"

namespace connectkit::test {
namespace {

using ConnectKit::E_GO_PURPOSE_GENERAL;
using ConnectKit::E_GO_PURPOSE_SOFTAP;
using ConnectKit::LegacyAP;
using Outcome = sim::SimWiFiDirectConfig::Publisher::Outcome;

class LegacyAPTest : public HotspotTest {
protected:
    LegacyAP& ap() { return *LegacyAP::GetInstance(); }

    int StartAndMeasure(ConnectKit::EGoPurpose purpose, uint64_t& elapsedMs) {
        return Timed(elapsedMs, [&] { return ap().Start(purpose); });
    }
};

// One access point's life: advertised, stopped, paced, rebuilt, released.
TEST_F(LegacyAPTest, StartAdvertisesPacesRebuildsAndReleases) {
    ap().SetSSID(L"ab12");
    ap().SetPassphrase(L"pass1234");
    uint64_t elapsed = 0;
    ASSERT_EQ(StartAndMeasure(E_GO_PURPOSE_GENERAL, elapsed), 0);
    EXPECT_EQ(elapsed, World().publisher.startLatencyMs);
    EXPECT_TRUE(ap().IsLegacyAPReady());
    EXPECT_TRUE(ap().IsLegacyAPNeed());
    EXPECT_EQ(ap().GetLegacyAPStatus(), ConnectKit::LEGACY_AP_STARTED);
    auto history = pc().wifiDirect().History();
    EXPECT_EQ(history.lastSsid, L"DIRECT-ab12-veltra");
    EXPECT_EQ(history.lastPassphrase, L"pass1234");
    EXPECT_TRUE(history.lastAutonomousGroupOwner);
    EXPECT_TRUE(history.lastLegacyEnabled);

    // Stopping takes the publisher's stop latency; a second start within
    // 2000 ms of the first sleeps out the rest before starting again.
    LogCapture log;
    ap().Stop(true, false, false, 0, 5000, E_GO_PURPOSE_GENERAL);
    ASSERT_EQ(StartAndMeasure(E_GO_PURPOSE_GENERAL, elapsed), 0);
    uint64_t pacing = 2000 - World().publisher.stopLatencyMs;
    EXPECT_EQ(elapsed, pacing + World().publisher.startLatencyMs);
    EXPECT_TRUE(
        log.Contains(L"[LegacyAP]Start LegacyAP advertise need delay:" + std::to_wstring(pacing)));

    // Someone restarts the virtual adapter: the publisher aborts under us.
    ASSERT_TRUE(CommonAPI::RestartWiFiDirectVirtualAdapter(true));
    EXPECT_EQ(ap().Start(E_GO_PURPOSE_GENERAL), 0);
    EXPECT_TRUE(log.Contains(L"0.1 go already created but do not use it and stop it.."));
    EXPECT_EQ(pc().wifiDirect().History().starts, 3u);

    // Release closes the status semaphore for good.
    uint32_t stops = pc().wifiDirect().History().stops;
    ap().Release();
    EXPECT_FALSE(ap().IsLegacyAPReady());
    EXPECT_EQ(pc().wifiDirect().History().stops, stops + 1);
    Settle();
    EXPECT_EQ(ap().Start(E_GO_PURPOSE_GENERAL), -1);
}

// Without the runtime no publisher is made; an unanswered start gives up
// after 60 s, and so does one that started but whose notice is still on its
// way then: that publisher is running and must be stopped, leaving no access
// point, listener or subscription behind.
TEST_F(LegacyAPTest, AStartWithoutPublisherOrTimelyAnswerFailsAndLeavesNothing) {
    struct Case {
        std::function<void(sim::SimWiFiDirectConfig&)> change;
        uint64_t elapsed;
        const wchar_t* logged;
    };
    const Case cases[] = {
        {[](auto& world) { world.runtimeAvailable = false; }, 0,
         L"1.1 new WiFiDirectAdvertisementPublisher() failed"},
        {[](auto& world) { world.publisher.startOutcomes = {Outcome::Silent}; }, 60000,
         L"5.1 Starting soft AP failed"},
        // The stop waits for the publisher; the second failed start in a row
        // also disables and enables the virtual adapter.
        {[](auto& world) {
             world.publisher.startLatencyMs = 59000;
             world.publisher.startEventDelayMs = 2000;
         },
         60000 + World().publisher.stopLatencyMs + 2 * World().virtualAdapter.restartLatencyMs,
         L"5.1 Starting soft AP failed"},
    };
    for (const auto& c : cases) {
        auto world = World();
        c.change(world);
        Use(world);
        LogCapture log;
        uint64_t elapsed = 1;
        EXPECT_EQ(StartAndMeasure(E_GO_PURPOSE_GENERAL, elapsed), -1);
        EXPECT_EQ(elapsed, c.elapsed);
        EXPECT_TRUE(log.Contains(c.logged));
        pc().clock().Sleep(5000);
        Settle();
        EXPECT_FALSE(ap().IsLegacyAPReady());
        EXPECT_FALSE(ap().IsLegacyAPNeed());
        ExpectNothingLeft();
    }
}

// Every second failed start in a row restarts the virtual adapter. Credentials
// no access point can carry are the caller's mistake: refused before the
// platform is asked, at once (no pacing), and counted for nothing.
TEST_F(LegacyAPTest, EverySecondConsecutiveFailureRestartsTheVirtualAdapter) {
    auto world = World();
    world.publisher.startOutcomes = {Outcome::Aborted, Outcome::Aborted, Outcome::Aborted,
                                     Outcome::Started, Outcome::Aborted, Outcome::Aborted};
    Use(world);
    LogCapture log;
    // Refused after every start; counted, they would restart the adapter.
    const std::pair<std::wstring, std::wstring> refused[] = {
        {L"a-name-far-too-long-for-an-802.11-network", L"pass1234"},
        {L"ab", L"short"},
        {L"ab", L"p\u00e4ssword"},
        {L"ab", std::wstring(64, L'p')},
    };
    // Each start's result and the restarts so far: the count starts again
    // from zero after a restart, and after a success in between.
    const std::pair<int, size_t> starts[] = {{-1, 0}, {-1, 1}, {-1, 1}, {0, 1}, {-1, 1}, {-1, 2}};
    for (const auto& [result, restarts] : starts) {
        ap().SetSSID(L"ab");
        ap().SetPassphrase(L"pass1234");
        EXPECT_EQ(ap().Start(E_GO_PURPOSE_GENERAL), result);
        EXPECT_EQ(pc().wifiDirect().History().adapterRestarts, restarts);
        if (result == 0) {
            ap().Stop(true, false, false, 0, 5000, E_GO_PURPOSE_GENERAL);
        }
        for (const auto& [ssid, passphrase] : refused) {
            ap().SetSSID(ssid);
            ap().SetPassphrase(passphrase);
            uint64_t elapsed = 1;
            EXPECT_EQ(StartAndMeasure(E_GO_PURPOSE_GENERAL, elapsed), -1) << passphrase;
            EXPECT_EQ(elapsed, 0u) << passphrase;
        }
    }
    EXPECT_EQ(log.Count(L"SSID or pass phrase not acceptable"),
              std::size(refused) * std::size(starts));
    EXPECT_EQ(log.Count(L"5.5 StopPublisher() start"), 2u);
    EXPECT_EQ(pc().wifiDirect().History().starts, std::size(starts));
}

// Each purpose starts and stops from its own thread: the access point runs
// while either needs it and is gone once neither does.
TEST_F(LegacyAPTest, BothPurposesFromTwoThreadsShareOneAccessPoint) {
    auto drive = [this](ConnectKit::EGoPurpose purpose) {
        for (int round = 0; round < 5; ++round) {
            EXPECT_EQ(ap().Start(purpose), 0);
            pc().clock().Sleep(300 + 200 * purpose);
            EXPECT_TRUE(ap().IsLegacyAPReady());
            EXPECT_EQ(ap().Stop(true, false, false, 0, 5000, purpose), 0);
        }
    };
    auto general = pc().clock().StartThread([&drive] { drive(E_GO_PURPOSE_GENERAL); });
    auto softAP = pc().clock().StartThread([&drive] { drive(E_GO_PURPOSE_SOFTAP); });
    general->Join();
    softAP->Join();
    Settle();
    EXPECT_FALSE(ap().IsLegacyAPNeed());
    EXPECT_FALSE(ap().IsLegacyAPReady());
    ExpectNothingLeft();
}

TEST_F(LegacyAPTest, AStuckStopIsWaitedForAtMostFiveSeconds) {
    auto world = World();
    world.publisher.stopOutcome = sim::SimWiFiDirectConfig::Publisher::StopOutcome::Stuck;
    Use(world);
    ASSERT_EQ(ap().Start(E_GO_PURPOSE_GENERAL), 0);
    LogCapture log;
    uint64_t before = Now();
    EXPECT_EQ(ap().Stop(true, false, false, 0, 60000, E_GO_PURPOSE_GENERAL), 0);
    EXPECT_EQ(Now() - before, 5000u);
    EXPECT_TRUE(log.Contains(L"3.1 WaitForSingleObject timeout"));
    EXPECT_FALSE(ap().IsLegacyAPReady());
    EXPECT_EQ(pc().firewall().RemoveDhcpRulesCalls(), 1u);
}

// Misbehaves inside its notification: unregisters itself and a neighbour,
// or, without a neighbour, throws.
class Misbehaving final : public LegacyAP::ILegacyAPNotification {
public:
    LegacyAP::ILegacyAPNotification* neighbour = nullptr;
    std::atomic<int> calls{0};
    void OnLegacyAPAdvertiserStatusChanged(ConnectKit::LegacyAPAdvertisemenStatus) override {
        ++calls;
        if (!neighbour) {
            throw std::runtime_error("observer failed");
        }
        LegacyAP::GetInstance()->UnRegisterLegacyAPNotificationEventCallback(this);
        LegacyAP::GetInstance()->UnRegisterLegacyAPNotificationEventCallback(neighbour);
    }
};

// Both purposes share one access point: the second start returns at once,
// and it runs until neither needs it. Each observer hears each notice once
// (the first start's on a thread that is not the caller's), whatever the
// others do: throw, or unregister themselves and a neighbour, which must not
// be called after its removal.
TEST_F(LegacyAPTest, PurposesShareOneAccessPointAndObserversHearEachNoticeOnce) {
    Misbehaving thrower;
    Misbehaving remover;
    Recorder neighbour;
    Recorder recorder;
    remover.neighbour = &neighbour;
    LegacyAP::ILegacyAPNotification* observers[] = {&thrower, &remover, &neighbour, &recorder,
                                                    &recorder};
    for (auto* observer : observers) {
        EXPECT_EQ(ap().RegisterLegacyAPNotificationEventCallback(observer), 0);
    }
    ASSERT_EQ(ap().Start(E_GO_PURPOSE_GENERAL), 0);
    Settle();
    EXPECT_FALSE(recorder.SawThread(std::this_thread::get_id()));
    uint64_t elapsed = 1;
    ASSERT_EQ(StartAndMeasure(E_GO_PURPOSE_SOFTAP, elapsed), 0);
    EXPECT_EQ(elapsed, 0u);
    EXPECT_EQ(pc().wifiDirect().History().starts, 1u);
    // The other purpose still needs it: nothing stops, one "stopped" notice.
    EXPECT_EQ(ap().Stop(true, true, false, 0, 5000, E_GO_PURPOSE_GENERAL), 0);
    EXPECT_EQ(pc().wifiDirect().History().stops, 0u);
    EXPECT_TRUE(ap().IsLegacyAPReady());
    Settle();
    EXPECT_EQ(recorder.AdvertiserStatuses(),
              (std::vector<int>{ConnectKit::LEGACY_AP_STARTED, ConnectKit::LEGACY_AP_STARTED,
                                ConnectKit::LEGACY_AP_STOPPED}));
    EXPECT_EQ(thrower.calls, 3);
    EXPECT_EQ(remover.calls, 1);
    EXPECT_TRUE(neighbour.AdvertiserStatuses().empty());
    ap().UnRegisterLegacyAPNotificationEventCallback(&thrower);
    ap().UnRegisterLegacyAPNotificationEventCallback(&recorder);

    EXPECT_EQ(ap().Stop(true, false, false, 0, 5000, E_GO_PURPOSE_SOFTAP), 0);
    EXPECT_EQ(pc().wifiDirect().History().stops, 1u);
    EXPECT_FALSE(ap().IsLegacyAPReady());
    EXPECT_FALSE(ap().IsLegacyAPNeed());
}

// phone-b's disconnection is never signalled; phone-c's device cannot be
// made, which is logged and dropped.
TEST_F(LegacyAPTest, PhonesAreReportedAsTheyJoinAndLeave) {
    auto world = World();
    world.phones = {Phone(L"phone-a", "192.168.137.23", 1000, 4000, false),
                    Phone(L"phone-b", "192.168.137.24", 1500, 3000, true),
                    Phone(L"phone-c", "192.168.137.25", 2000, 0, false)};
    world.phones[2].fromIdFails = true;
    Use(world);
    Recorder recorder;
    ap().RegisterLegacyAPNotificationEventCallback(&recorder);
    LogCapture log;
    ASSERT_EQ(ap().Start(E_GO_PURPOSE_GENERAL), 0);
    pc().clock().Sleep(10000);
    Settle();
    EXPECT_EQ(recorder.Connections(),
              (std::vector<Recorder::Connection>{{1, L"phone-a", L"192.168.137.23"},
                                                 {1, L"phone-b", L"192.168.137.24"},
                                                 {0, L"phone-a", L""}}));
    EXPECT_TRUE(log.Contains(L"connect error"));
    ap().Stop(true, false, false, 0, 5000, E_GO_PURPOSE_GENERAL);
    ap().UnRegisterLegacyAPNotificationEventCallback(&recorder);
    Settle();
    ExpectNothingLeft();
}

}  // namespace
}  // namespace connectkit::test
