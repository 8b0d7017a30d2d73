#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <optional>
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

// What a handler saw.
template <class Item>
class Seen {
public:
    explicit Seen(platform::Clock& clock) : signal_(clock.NewSemaphore(0, 1000)) {}

    void Add(Item item) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            items_.push_back(std::move(item));
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

private:
    std::unique_ptr<platform::Semaphore> signal_;
    std::mutex mutex_;
    std::vector<Item> items_;
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

    std::shared_ptr<platform::WiFiDirectDevice> DeviceFromId(const std::wstring& id) {
        Seen<std::shared_ptr<platform::WiFiDirectDevice>> done(pc().clock());
        port().DeviceFromIdAsync(id, [&done](AsyncStatus, auto device) { done.Add(device); });
        EXPECT_TRUE(done.Wait());
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
    auto device = DeviceFromId(L"WiFiDirect#p");
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
        auto device = DeviceFromId(L"WiFiDirect#p");
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

}  // namespace
}  // namespace connectkit::test
