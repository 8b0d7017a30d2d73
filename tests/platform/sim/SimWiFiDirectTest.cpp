#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <vector>

#include "platform/sim/SimulatedPc.h"
#include "support/HotspotWorld.h"

namespace connectkit::test {
namespace {

using platform::PublisherStatus;

class SimWiFiDirectTest : public HotspotTest {
protected:
    sim::SimWiFiDirect& model() { return pc().wifiDirect(); }
    platform::WiFiDirect& port() { return pc().wifiDirect(); }

    bool VirtualAdapterUp() {
        std::vector<platform::NetworkAdapterInfo> adapters;
        EXPECT_EQ(pc().adapters().List(adapters), 0u);
        for (const auto& adapter : adapters) {
            if (adapter.kind == platform::NetworkAdapterInfo::Kind::WiFiDirectVirtual) {
                return adapter.up;
            }
        }
        return false;
    }
};

TEST_F(SimWiFiDirectTest, ARemovedHandlerIsNotCalledAgainEvenWhenRemovedByAnother) {
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
    EXPECT_EQ(model().TakeCensus().registrations, 2u);
    publisher->Start();
    pc().clock().Sleep(5000);
    publisher->Stop();
    pc().clock().Sleep(5000);
    EXPECT_EQ(firstCalls, 1);
    EXPECT_EQ(secondCalls, 0);
    EXPECT_EQ(model().TakeCensus().registrations, 0u);
}

// The product's leak checks read this census: it must count what is held.
TEST_F(SimWiFiDirectTest, ReleasingEverythingBringsTheCensusBackToZero) {
    sim::SimWiFiDirectConfig config;
    sim::SimWiFiDirectConfig::Phone phone;
    phone.id = L"WiFiDirect#p";
    phone.joinAfterMs = 100;
    config.phones = {phone};
    Use(config);
    {
        auto publisher = port().NewPublisher();
        publisher->AddStatusChanged([](auto&, const auto&) {});
        auto listener = port().NewConnectionListener();
        // A handler may hold another of the model's objects: letting go of
        // the holder still frees both.
        listener->AddConnectionRequested([publisher](auto) {});
        publisher->Start();
        pc().clock().Sleep(5000);
        ASSERT_EQ(publisher->Status(), PublisherStatus::Started);
        std::mutex mutex;
        std::shared_ptr<platform::WiFiDirectDevice> device;
        port().DeviceFromIdAsync(phone.id, [&](auto, auto opened) {
            std::lock_guard<std::mutex> lock(mutex);
            device = opened;
        });
        pc().clock().Sleep(1000);
        std::lock_guard<std::mutex> lock(mutex);
        ASSERT_TRUE(device);
        device->AddConnectionStatusChanged([](auto&) {});
        auto census = pc().TakeCensus();
        EXPECT_EQ(census.wifiDirectObjects, 3u);
        EXPECT_EQ(census.wifiDirectRegistrations, 3u);
        EXPECT_TRUE(VirtualAdapterUp());
    }
    pc().clock().Sleep(1);
    auto census = pc().TakeCensus();
    EXPECT_EQ(census.wifiDirectObjects, 0u);
    EXPECT_EQ(census.wifiDirectRegistrations, 0u);
    // The last reference gone, its group owner is gone too.
    EXPECT_FALSE(VirtualAdapterUp());
}

}  // namespace
}  // namespace connectkit::test
