#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/ports/Errors.h"
#include "platform/sim/SimulatedPc.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

using platform::AsyncStatus;
using platform::PublisherStatus;
using platform::WaitResult;
using platform::WiFiDirectConnectionStatus;
using platform::WiFiDirectError;
using Outcome = sim::SimWiFiDirectConfig::Publisher::Outcome;

// What a handler saw, and when (virtual tick) and where (thread) it ran.
template <class Item>
class Seen {
public:
    explicit Seen(platform::Clock& clock) : clock_(clock), signal_(clock.NewSemaphore(0, 1000)) {}

    void Add(Item item) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            items_.push_back(std::move(item));
            ticks_.push_back(clock_.TickCount64());
            threads_.push_back(std::this_thread::get_id());
        }
        signal_->Release();
    }
    bool Wait(uint32_t timeoutMs = 60000) {
        return signal_->Wait(timeoutMs) == WaitResult::Signaled;
    }
    std::vector<Item> Items() {
        std::lock_guard<std::mutex> lock(mutex_);
        return items_;
    }
    uint64_t Tick(size_t i) {
        std::lock_guard<std::mutex> lock(mutex_);
        return ticks_.at(i);
    }
    std::thread::id Thread(size_t i) {
        std::lock_guard<std::mutex> lock(mutex_);
        return threads_.at(i);
    }

private:
    platform::Clock& clock_;
    std::unique_ptr<platform::Semaphore> signal_;
    std::mutex mutex_;
    std::vector<Item> items_;
    std::vector<uint64_t> ticks_;
    std::vector<std::thread::id> threads_;
};

struct FromId {
    AsyncStatus status = AsyncStatus::Started;
    std::shared_ptr<platform::WiFiDirectDevice> device;
};

class SimWiFiDirectTest : public SimTest {
protected:
    sim::SimWiFiDirect& model() { return pc().WiFiDirect(); }
    platform::WiFiDirect& port() { return pc().wifiDirect(); }
    uint64_t Now() { return pc().Clock().TickCount64(); }

    void ApplyWorld(const sim::SimWiFiDirectConfig& config) {
        sim::Scenario scenario;
        scenario.wifiDirect = config;
        pc().Apply(scenario);
    }

    std::optional<platform::NetworkAdapterInfo> VirtualAdapter() {
        std::vector<platform::NetworkAdapterInfo> adapters;
        EXPECT_EQ(pc().adapters().List(adapters), 0u);
        for (const auto& adapter : adapters) {
            if (adapter.kind == platform::NetworkAdapterInfo::Kind::WiFiDirectVirtual) {
                return adapter;
            }
        }
        return std::nullopt;
    }
    bool MacShown() {
        auto adapter = VirtualAdapter();
        return adapter && adapter->mac != std::array<uint8_t, 6>{};
    }

    // A publisher whose status changes land in `seen`.
    std::shared_ptr<platform::WiFiDirectPublisher> Publisher(
        Seen<platform::PublisherStatusChange>& seen) {
        auto publisher = port().NewPublisher();
        EXPECT_TRUE(publisher);
        publisher->AddStatusChanged(
            [&seen](platform::WiFiDirectPublisher&, const platform::PublisherStatusChange& change) {
                seen.Add(change);
            });
        return publisher;
    }

    FromId DeviceFromId(const std::wstring& id, uint32_t timeoutMs = 60000) {
        Seen<FromId> done(pc().clock());
        port().DeviceFromIdAsync(id, [&done](AsyncStatus status, auto device) {
            done.Add(FromId{status, std::move(device)});
        });
        EXPECT_TRUE(done.Wait(timeoutMs));
        return done.Items().at(0);
    }

    void StartAndWait(platform::WiFiDirectPublisher& publisher,
                      Seen<platform::PublisherStatusChange>& seen) {
        publisher.Start();
        ASSERT_TRUE(seen.Wait());
        ASSERT_EQ(seen.Items().back().status, PublisherStatus::Started);
    }

    sim::SimWiFiDirectConfig::Phone Phone(const wchar_t* id, uint32_t joinAfterMs) {
        sim::SimWiFiDirectConfig::Phone phone;
        phone.id = id;
        phone.joinAfterMs = joinAfterMs;
        return phone;
    }
};

TEST_F(SimWiFiDirectTest, AStartTakesItsLatencyAndReportsOnAnotherThread) {
    sim::SimWiFiDirectConfig config;
    config.publisher.startLatencyMs = 800;
    config.virtualAdapter.macDelayMs = 300;
    ApplyWorld(config);
    Seen<platform::PublisherStatusChange> seen(pc().clock());
    auto publisher = Publisher(seen);
    auto credential = port().NewPasswordCredential();
    credential->SetPassword(L"k3yk3yk3");
    publisher->SetAutonomousGroupOwnerEnabled(true);
    publisher->SetLegacyEnabled(true);
    publisher->SetLegacySsid(L"DIRECT-ab-veltra");
    publisher->SetLegacyPassphrase(credential);
    ASSERT_TRUE(VirtualAdapter());
    EXPECT_FALSE(VirtualAdapter()->up);

    uint64_t start = Now();
    publisher->Start();
    EXPECT_EQ(publisher->Status(), PublisherStatus::Created);
    ASSERT_TRUE(seen.Wait());
    EXPECT_EQ(seen.Tick(0) - start, 800u);
    EXPECT_NE(seen.Thread(0), std::this_thread::get_id());
    EXPECT_EQ(seen.Items()[0].status, PublisherStatus::Started);
    EXPECT_EQ(seen.Items()[0].error, WiFiDirectError::Success);
    EXPECT_EQ(publisher->Status(), PublisherStatus::Started);

    auto history = model().History();
    EXPECT_EQ(history.starts, 1u);
    EXPECT_EQ(history.lastSsid, L"DIRECT-ab-veltra");
    EXPECT_EQ(history.lastPassphrase, L"k3yk3yk3");
    EXPECT_TRUE(history.lastAutonomousGroupOwner);
    EXPECT_TRUE(history.lastLegacyEnabled);

    // Up at once, its MAC only after the delay.
    auto adapter = VirtualAdapter();
    EXPECT_TRUE(adapter->up);
    EXPECT_EQ(adapter->index, 21u);
    EXPECT_EQ(adapter->ipv4, std::vector<std::string>{"192.168.137.1"});
    EXPECT_FALSE(MacShown());
    pc().Clock().Sleep(299);
    EXPECT_FALSE(MacShown());
    pc().Clock().Sleep(1);
    EXPECT_EQ(VirtualAdapter()->mac, config.virtualAdapter.mac);
}

TEST_F(SimWiFiDirectTest, StartOutcomesAreUsedUpInOrderThenStartsSucceed) {
    sim::SimWiFiDirectConfig config;
    config.publisher.startOutcomes = {Outcome::Aborted, Outcome::Silent};
    config.publisher.abortError = WiFiDirectError::ResourceInUse;
    ApplyWorld(config);

    Seen<platform::PublisherStatusChange> first(pc().clock());
    auto aborted = Publisher(first);
    aborted->Start();
    ASSERT_TRUE(first.Wait());
    EXPECT_EQ(first.Items()[0].status, PublisherStatus::Aborted);
    EXPECT_EQ(first.Items()[0].error, WiFiDirectError::ResourceInUse);
    EXPECT_FALSE(VirtualAdapter()->up);

    Seen<platform::PublisherStatusChange> second(pc().clock());
    auto silent = Publisher(second);
    silent->Start();
    EXPECT_FALSE(second.Wait(60000));
    EXPECT_EQ(silent->Status(), PublisherStatus::Created);

    Seen<platform::PublisherStatusChange> third(pc().clock());
    auto started = Publisher(third);
    StartAndWait(*started, third);
    EXPECT_EQ(model().History().starts, 3u);
}

TEST_F(SimWiFiDirectTest, StopEndsTheGroupOwnerUnlessItIsStuck) {
    sim::SimWiFiDirectConfig config;
    config.publisher.stopLatencyMs = 200;
    ApplyWorld(config);
    Seen<platform::PublisherStatusChange> seen(pc().clock());
    auto publisher = Publisher(seen);
    StartAndWait(*publisher, seen);
    uint64_t stop = Now();
    publisher->Stop();
    ASSERT_TRUE(seen.Wait());
    EXPECT_EQ(seen.Tick(1) - stop, 200u);
    EXPECT_EQ(seen.Items()[1].status, PublisherStatus::Stopped);
    EXPECT_FALSE(VirtualAdapter()->up);

    config.publisher.stopOutcome = sim::SimWiFiDirectConfig::Publisher::StopOutcome::Stuck;
    ApplyWorld(config);
    Seen<platform::PublisherStatusChange> stuckSeen(pc().clock());
    auto stuck = Publisher(stuckSeen);
    StartAndWait(*stuck, stuckSeen);
    stuck->Stop();
    EXPECT_FALSE(stuckSeen.Wait(10000));
    EXPECT_EQ(stuck->Status(), PublisherStatus::Started);
    EXPECT_TRUE(VirtualAdapter()->up);
    EXPECT_EQ(model().History().stops, 1u);
}

TEST_F(SimWiFiDirectTest, ADisabledOrMissingAdapterAbortsEveryStart) {
    for (bool present : {true, false}) {
        sim::SimWiFiDirectConfig config;
        config.virtualAdapter.present = present;
        config.virtualAdapter.enabled = false;
        ApplyWorld(config);
        Seen<platform::PublisherStatusChange> seen(pc().clock());
        auto publisher = Publisher(seen);
        publisher->Start();
        ASSERT_TRUE(seen.Wait());
        EXPECT_EQ(seen.Items()[0].status, PublisherStatus::Aborted);
        EXPECT_EQ(seen.Items()[0].error, WiFiDirectError::RadioNotAvailable);
        EXPECT_FALSE(VirtualAdapter());
        platform::DeviceState state;
        EXPECT_EQ(pc().devices().State(sim::kWiFiDirectVirtualAdapterInstanceId, state),
                  present ? platform::kCrSuccess : platform::kCrNoSuchDevnode);
        EXPECT_EQ(state.problem, present ? platform::kProblemDisabled : 0u);
    }
}

TEST_F(SimWiFiDirectTest, ARemovedHandlerIsNotCalledAgainEvenWhenRemovedByAnother) {
    ApplyWorld({});
    auto publisher = port().NewPublisher();
    std::atomic<int> firstCalls{0};
    std::atomic<int> secondCalls{0};
    platform::EventToken second = 0;
    platform::EventToken first = 0;
    first = publisher->AddStatusChanged([&](platform::WiFiDirectPublisher& sender, const auto&) {
        ++firstCalls;
        sender.RemoveStatusChanged(second);
        sender.RemoveStatusChanged(first);
    });
    second = publisher->AddStatusChanged([&](auto&, const auto&) { ++secondCalls; });
    EXPECT_NE(first, 0);
    EXPECT_NE(second, 0);
    EXPECT_NE(first, second);
    EXPECT_EQ(model().TakeCensus().registrations, 2u);
    publisher->Start();
    pc().Clock().Sleep(5000);
    publisher->Stop();
    pc().Clock().Sleep(5000);
    EXPECT_EQ(publisher->Status(), PublisherStatus::Stopped);
    EXPECT_EQ(firstCalls, 1);
    EXPECT_EQ(secondCalls, 0);
    EXPECT_EQ(model().TakeCensus().registrations, 0u);
}

TEST_F(SimWiFiDirectTest, APhoneJoinsConnectsAndLeaves) {
    sim::SimWiFiDirectConfig config;
    auto phone = Phone(L"WiFiDirect#p1", 1000);
    phone.leaveAfterMs = 5000;
    phone.fromIdLatencyMs = 250;
    config.phones = {phone};
    ApplyWorld(config);
    Seen<platform::PublisherStatusChange> seen(pc().clock());
    auto publisher = Publisher(seen);
    auto listener = port().NewConnectionListener();
    Seen<std::wstring> requests(pc().clock());
    listener->AddConnectionRequested([&](auto request) { requests.Add(request->DeviceId()); });
    StartAndWait(*publisher, seen);
    uint64_t started = seen.Tick(0);
    ASSERT_TRUE(requests.Wait());
    EXPECT_EQ(requests.Tick(0) - started, 1000u);
    EXPECT_NE(requests.Thread(0), std::this_thread::get_id());
    EXPECT_EQ(requests.Items()[0], L"WiFiDirect#p1");

    // A listener that comes later hears nothing of the phone that is there.
    auto late = port().NewConnectionListener();
    Seen<std::wstring> lateRequests(pc().clock());
    late->AddConnectionRequested([&](auto request) { lateRequests.Add(request->DeviceId()); });

    uint64_t asked = Now();
    FromId result = DeviceFromId(L"WiFiDirect#p1");
    EXPECT_EQ(Now() - asked, 250u);
    ASSERT_EQ(result.status, AsyncStatus::Completed);
    auto device = result.device;
    EXPECT_EQ(device->ConnectionStatus(), WiFiDirectConnectionStatus::Connected);
    EXPECT_EQ(device->DeviceId(), L"WiFiDirect#p1");
    auto pairs = device->ConnectionEndpointPairs();
    ASSERT_EQ(pairs.size(), 1u);
    EXPECT_EQ(pairs[0].remoteHostName, L"192.168.137.23");
    EXPECT_EQ(pairs[0].localHostName, L"192.168.137.1");

    Seen<WiFiDirectConnectionStatus> status(pc().clock());
    device->AddConnectionStatusChanged(
        [&](platform::WiFiDirectDevice& sender) { status.Add(sender.ConnectionStatus()); });
    ASSERT_TRUE(status.Wait());
    EXPECT_EQ(status.Tick(0) - requests.Tick(0), 5000u);
    EXPECT_EQ(status.Items()[0], WiFiDirectConnectionStatus::Disconnected);
    EXPECT_TRUE(device->ConnectionEndpointPairs().empty());
    EXPECT_FALSE(lateRequests.Wait(0));

    // It left for good.
    EXPECT_EQ(DeviceFromId(L"WiFiDirect#p1").status, AsyncStatus::Error);
    device->Close();
    EXPECT_THROW(device->ConnectionStatus(), platform::PlatformError);
}

TEST_F(SimWiFiDirectTest, PhonesThatFailOrMissTheirDisconnectEvent) {
    sim::SimWiFiDirectConfig config;
    auto failing = Phone(L"WiFiDirect#fails", 100);
    failing.fromIdFails = true;
    auto quiet = Phone(L"WiFiDirect#quiet", 100);
    quiet.missDisconnectEvent = true;
    quiet.leaveAfterMs = 1000;
    config.phones = {failing, quiet};
    ApplyWorld(config);
    Seen<platform::PublisherStatusChange> seen(pc().clock());
    auto publisher = Publisher(seen);
    StartAndWait(*publisher, seen);
    pc().Clock().Sleep(100);

    EXPECT_EQ(DeviceFromId(L"WiFiDirect#fails").status, AsyncStatus::Error);
    EXPECT_EQ(DeviceFromId(L"WiFiDirect#nobody").status, AsyncStatus::Error);
    FromId result = DeviceFromId(L"WiFiDirect#quiet");
    ASSERT_EQ(result.status, AsyncStatus::Completed);
    Seen<int> events(pc().clock());
    result.device->AddConnectionStatusChanged([&](auto&) { events.Add(1); });
    EXPECT_FALSE(events.Wait(5000));
    EXPECT_EQ(result.device->ConnectionStatus(), WiFiDirectConnectionStatus::Disconnected);
}

TEST_F(SimWiFiDirectTest, StoppingThePublisherDisconnectsItsPhones) {
    sim::SimWiFiDirectConfig config;
    config.phones = {Phone(L"WiFiDirect#a", 100), Phone(L"WiFiDirect#b", 100)};
    ApplyWorld(config);
    Seen<platform::PublisherStatusChange> seen(pc().clock());
    auto publisher = Publisher(seen);
    StartAndWait(*publisher, seen);
    pc().Clock().Sleep(100);
    auto a = DeviceFromId(L"WiFiDirect#a").device;
    auto b = DeviceFromId(L"WiFiDirect#b").device;
    ASSERT_TRUE(a && b);
    Seen<std::wstring> dropped(pc().clock());
    for (const auto& device : {a, b}) {
        device->AddConnectionStatusChanged([&](auto& sender) { dropped.Add(sender.DeviceId()); });
    }
    publisher->Stop();
    ASSERT_TRUE(dropped.Wait());
    ASSERT_TRUE(dropped.Wait());
    EXPECT_EQ(a->ConnectionStatus(), WiFiDirectConnectionStatus::Disconnected);
    EXPECT_EQ(b->ConnectionStatus(), WiFiDirectConnectionStatus::Disconnected);
}

TEST_F(SimWiFiDirectTest, ARestartStopsEveryGroupOwnerOnTheAdapter) {
    sim::SimWiFiDirectConfig config;
    config.foreignGroupOwner.running = true;
    config.virtualAdapter.restartLatencyMs = 1500;
    ApplyWorld(config);
    auto& devices = pc().devices();
    const std::wstring node = sim::kWiFiDirectVirtualAdapterInstanceId;
    std::vector<std::wstring> hardwareIds;
    ASSERT_EQ(devices.HardwareIds(node, hardwareIds), platform::kCrSuccess);
    EXPECT_EQ(hardwareIds, std::vector<std::wstring>{sim::kWiFiDirectVirtualAdapterHardwareId});
    EXPECT_TRUE(VirtualAdapter()->up);

    uint64_t before = Now();
    ASSERT_EQ(devices.SetEnabled(node, false), platform::kCrSuccess);
    EXPECT_EQ(Now() - before, 1500u);
    platform::DeviceState state;
    ASSERT_EQ(devices.State(node, state), platform::kCrSuccess);
    EXPECT_FALSE(state.started);
    EXPECT_EQ(state.problem, platform::kProblemDisabled);
    EXPECT_FALSE(VirtualAdapter());
    ASSERT_EQ(devices.SetEnabled(node, true), platform::kCrSuccess);
    ASSERT_EQ(devices.State(node, state), platform::kCrSuccess);
    EXPECT_TRUE(state.started);
    EXPECT_EQ(state.problem, 0u);
    ASSERT_TRUE(VirtualAdapter());
    EXPECT_FALSE(VirtualAdapter()->up);

    // Our own group owner is aborted by a restart and its phone drops.
    config.phones = {Phone(L"WiFiDirect#p", 100)};
    config.foreignGroupOwner.running = false;
    ApplyWorld(config);
    Seen<platform::PublisherStatusChange> seen(pc().clock());
    auto publisher = Publisher(seen);
    StartAndWait(*publisher, seen);
    pc().Clock().Sleep(100);
    auto device = DeviceFromId(L"WiFiDirect#p").device;
    ASSERT_TRUE(device);
    ASSERT_EQ(devices.SetEnabled(node, false), platform::kCrSuccess);
    ASSERT_TRUE(seen.Wait());
    EXPECT_EQ(seen.Items()[1].status, PublisherStatus::Aborted);
    EXPECT_EQ(seen.Items()[1].error, WiFiDirectError::RadioNotAvailable);
    EXPECT_EQ(device->ConnectionStatus(), WiFiDirectConnectionStatus::Disconnected);
    EXPECT_EQ(model().History().adapterRestarts, 1u);
}

TEST_F(SimWiFiDirectTest, AForeignGroupOwnerThatSurvivesComesBackAfterEnable) {
    sim::SimWiFiDirectConfig config;
    config.foreignGroupOwner = {true, true};
    config.virtualAdapter.macDelayMs = 300;
    ApplyWorld(config);
    const std::wstring node = sim::kWiFiDirectVirtualAdapterInstanceId;
    pc().Clock().Sleep(300);
    EXPECT_TRUE(MacShown());
    ASSERT_EQ(pc().devices().SetEnabled(node, false), platform::kCrSuccess);
    ASSERT_EQ(pc().devices().SetEnabled(node, true), platform::kCrSuccess);
    EXPECT_TRUE(VirtualAdapter()->up);
    // It came up again: the MAC takes its delay once more.
    EXPECT_FALSE(MacShown());
    pc().Clock().Sleep(300);
    EXPECT_TRUE(MacShown());
}

TEST_F(SimWiFiDirectTest, AMacThatNeverShowsAppearsAfterTheAddressRepair) {
    sim::SimWiFiDirectConfig config;
    config.virtualAdapter.macDelayMs.reset();
    config.virtualAdapter.macAfterRepair = true;
    config.virtualAdapter.ipPresent = false;
    ApplyWorld(config);
    Seen<platform::PublisherStatusChange> seen(pc().clock());
    auto publisher = Publisher(seen);
    StartAndWait(*publisher, seen);
    pc().Clock().Sleep(60000);
    EXPECT_FALSE(MacShown());
    EXPECT_TRUE(VirtualAdapter()->ipv4.empty());

    auto& processes = pc().processes();
    const wchar_t* otherAdapter =
        L"netsh interface ipv4 set address name=12 source=static address=192.168.137.1 "
        L"mask=255.255.255.0";
    EXPECT_EQ(processes.Run(otherAdapter, 5000).exitCode, 0u);
    EXPECT_FALSE(MacShown());
    uint64_t before = Now();
    auto outcome = processes.Run(
        L"netsh interface ipv4 set address name=21 source=static address=192.168.137.1 "
        L"mask=255.255.255.0",
        5000);
    EXPECT_TRUE(outcome.finished);
    EXPECT_EQ(outcome.exitCode, 0u);
    EXPECT_EQ(Now() - before, 300u);
    EXPECT_TRUE(MacShown());
    EXPECT_EQ(VirtualAdapter()->ipv4, std::vector<std::string>{"192.168.137.1"});
}

TEST_F(SimWiFiDirectTest, TheRepairDoesNothingWithoutMacAfterRepairOrWhenAScenarioOverridesNetsh) {
    sim::Scenario scenario;
    scenario.wifiDirect.virtualAdapter.macDelayMs.reset();
    scenario.wifiDirect.virtualAdapter.macAfterRepair = true;
    scenario.programs.push_back({L"netsh", 1, 50});
    pc().Apply(scenario);
    Seen<platform::PublisherStatusChange> seen(pc().clock());
    auto publisher = Publisher(seen);
    StartAndWait(*publisher, seen);
    const wchar_t* repair = L"netsh interface ipv4 set address name=21 source=static";
    EXPECT_EQ(pc().processes().Run(repair, 5000).exitCode, 1u);
    EXPECT_FALSE(MacShown());

    scenario.programs.clear();
    scenario.wifiDirect.virtualAdapter.macAfterRepair = false;
    pc().Apply(scenario);
    EXPECT_EQ(pc().processes().Run(repair, 5000).exitCode, 0u);
    EXPECT_FALSE(MacShown());
}

TEST_F(SimWiFiDirectTest, ReleasingEverythingBringsTheCensusBackToZero) {
    sim::SimWiFiDirectConfig config;
    config.phones = {Phone(L"WiFiDirect#p", 100)};
    ApplyWorld(config);
    {
        Seen<platform::PublisherStatusChange> seen(pc().clock());
        auto publisher = Publisher(seen);
        auto listener = port().NewConnectionListener();
        // A handler may hold another of the model's objects: letting go of
        // the holder still frees both.
        listener->AddConnectionRequested([publisher](auto) {});
        StartAndWait(*publisher, seen);
        pc().Clock().Sleep(100);
        auto device = DeviceFromId(L"WiFiDirect#p").device;
        ASSERT_TRUE(device);
        device->AddConnectionStatusChanged([](auto&) {});
        auto census = pc().TakeCensus();
        EXPECT_EQ(census.wifiDirectObjects, 3u);
        EXPECT_EQ(census.wifiDirectRegistrations, 3u);
        EXPECT_TRUE(VirtualAdapter()->up);
    }
    pc().Clock().Sleep(1);
    auto census = pc().TakeCensus();
    EXPECT_EQ(census.wifiDirectObjects, 0u);
    EXPECT_EQ(census.wifiDirectRegistrations, 0u);
    // The last reference gone, its group owner is gone too.
    EXPECT_FALSE(VirtualAdapter()->up);
}

TEST_F(SimWiFiDirectTest, FaultsAndAMissingRuntime) {
    ApplyWorld({});
    pc().Faults().Add({"wifidirect.activate", sim::FaultAction::Throw, 0, 1, 0, 0});
    pc().Faults().Add({"wifidirect.start", sim::FaultAction::Throw, 0, 1, 0, 0});
    pc().Faults().Add({"wifidirect.fromId", sim::FaultAction::Fail, 0, 1, 0, 0});
    pc().Faults().Add({"wifidirect.fromId", sim::FaultAction::Throw, 1, 1, 0, 0});
    EXPECT_EQ(port().NewPublisher(), nullptr);
    auto publisher = port().NewPublisher();
    ASSERT_TRUE(publisher);
    EXPECT_THROW(publisher->Start(), platform::PlatformError);
    EXPECT_EQ(model().History().starts, 0u);
    EXPECT_EQ(DeviceFromId(L"WiFiDirect#phone").status, AsyncStatus::Error);
    EXPECT_THROW(port().DeviceFromIdAsync(L"x", [](auto, auto) {}), platform::PlatformError);

    sim::SimWiFiDirectConfig config;
    config.runtimeAvailable = false;
    ApplyWorld(config);
    EXPECT_EQ(port().NewPublisher(), nullptr);
    EXPECT_EQ(port().NewConnectionListener(), nullptr);
    EXPECT_EQ(port().NewPasswordCredential(), nullptr);
    try {
        port().DeviceFromIdAsync(L"x", [](auto, auto) {});
        ADD_FAILURE() << "FromIdAsync started without the runtime";
    } catch (const platform::PlatformError& e) {
        EXPECT_EQ(static_cast<uint32_t>(e.hresult()), 0x80040154u);
    }
}

TEST_F(SimWiFiDirectTest, TheFirewallCountsRuleRemovals) {
    pc().Faults().Add({"firewall.removeDhcpRules", sim::FaultAction::Fail, 1, 1, 0, 0});
    EXPECT_EQ(pc().firewall().RemoveDhcpRules(), platform::kErrorSuccess);
    EXPECT_EQ(pc().firewall().RemoveDhcpRules(), platform::kErrorAccessDenied);
    EXPECT_EQ(pc().Firewall().RemoveDhcpRulesCalls(), 2u);
    pc().Reset();
    EXPECT_EQ(pc().Firewall().RemoveDhcpRulesCalls(), 0u);
}

}  // namespace
}  // namespace connectkit::test
