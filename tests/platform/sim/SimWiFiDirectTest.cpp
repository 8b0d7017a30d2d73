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
    sim::SimWiFiDirect& model() { return pc().wifiDirect(); }
    platform::WiFiDirect& port() { return pc().wifiDirect(); }
    uint64_t Now() { return pc().clock().TickCount64(); }

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

    // Up at once, its MAC only after the delay.
    auto adapter = VirtualAdapter();
    EXPECT_TRUE(adapter->up);
    EXPECT_EQ(adapter->index, 21u);
    EXPECT_EQ(adapter->ipv4, std::vector<std::string>{"192.168.137.1"});
    EXPECT_FALSE(MacShown());
    pc().clock().Sleep(299);
    EXPECT_FALSE(MacShown());
    pc().clock().Sleep(1);
    EXPECT_EQ(VirtualAdapter()->mac, config.virtualAdapter.mac);
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
    pc().clock().Sleep(5000);
    publisher->Stop();
    pc().clock().Sleep(5000);
    EXPECT_EQ(publisher->Status(), PublisherStatus::Stopped);
    EXPECT_EQ(firstCalls, 1);
    EXPECT_EQ(secondCalls, 0);
    EXPECT_EQ(model().TakeCensus().registrations, 0u);
}

TEST_F(SimWiFiDirectTest, StoppingThePublisherDisconnectsItsPhones) {
    sim::SimWiFiDirectConfig config;
    config.phones = {Phone(L"WiFiDirect#a", 100), Phone(L"WiFiDirect#b", 100)};
    ApplyWorld(config);
    Seen<platform::PublisherStatusChange> seen(pc().clock());
    auto publisher = Publisher(seen);
    StartAndWait(*publisher, seen);
    pc().clock().Sleep(100);
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

// The foreign group owner's side of a restart is the soft-AP manager's to
// show; here, our own group owner is aborted and its phone drops.
TEST_F(SimWiFiDirectTest, ARestartStopsEveryGroupOwnerOnTheAdapter) {
    sim::SimWiFiDirectConfig config;
    config.virtualAdapter.restartLatencyMs = 1500;
    config.phones = {Phone(L"WiFiDirect#p", 100)};
    ApplyWorld(config);
    auto& devices = pc().devices();
    const std::wstring node = sim::kWiFiDirectVirtualAdapterInstanceId;
    Seen<platform::PublisherStatusChange> seen(pc().clock());
    auto publisher = Publisher(seen);
    StartAndWait(*publisher, seen);
    pc().clock().Sleep(100);
    auto device = DeviceFromId(L"WiFiDirect#p").device;
    ASSERT_TRUE(device);
    uint64_t before = Now();
    ASSERT_EQ(devices.SetEnabled(node, false), platform::kCrSuccess);
    EXPECT_EQ(Now() - before, 1500u);
    platform::DeviceState state;
    ASSERT_EQ(devices.State(node, state), platform::kCrSuccess);
    EXPECT_EQ(state.problem, platform::kProblemDisabled);
    EXPECT_FALSE(VirtualAdapter());
    ASSERT_TRUE(seen.Wait());
    EXPECT_EQ(seen.Items()[1].status, PublisherStatus::Aborted);
    EXPECT_EQ(seen.Items()[1].error, WiFiDirectError::RadioNotAvailable);
    EXPECT_EQ(device->ConnectionStatus(), WiFiDirectConnectionStatus::Disconnected);
    EXPECT_EQ(model().History().adapterRestarts, 1u);
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
        pc().clock().Sleep(100);
        auto device = DeviceFromId(L"WiFiDirect#p").device;
        ASSERT_TRUE(device);
        device->AddConnectionStatusChanged([](auto&) {});
        auto census = pc().TakeCensus();
        EXPECT_EQ(census.wifiDirectObjects, 3u);
        EXPECT_EQ(census.wifiDirectRegistrations, 3u);
        EXPECT_TRUE(VirtualAdapter()->up);
    }
    pc().clock().Sleep(1);
    auto census = pc().TakeCensus();
    EXPECT_EQ(census.wifiDirectObjects, 0u);
    EXPECT_EQ(census.wifiDirectRegistrations, 0u);
    // The last reference gone, its group owner is gone too.
    EXPECT_FALSE(VirtualAdapter()->up);
}

TEST_F(SimWiFiDirectTest, FaultsAndAMissingRuntime) {
    ApplyWorld({});
    pc().faults().Add({"wifidirect.activate", sim::FaultAction::Throw, 0, 1, 0, 0});
    pc().faults().Add({"wifidirect.start", sim::FaultAction::Throw, 0, 1, 0, 0});
    pc().faults().Add({"wifidirect.fromId", sim::FaultAction::Fail, 0, 1, 0, 0});
    pc().faults().Add({"wifidirect.fromId", sim::FaultAction::Throw, 1, 1, 0, 0});
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

}  // namespace
}  // namespace connectkit::test
