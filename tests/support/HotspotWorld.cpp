#include "support/HotspotWorld.h"

namespace connectkit::test {

void HotspotTest::SetUp() {
    SimTest::SetUp();
    Use(World());
}

sim::SimWiFiDirectConfig HotspotTest::World() {
    sim::SimWiFiDirectConfig world;
    world.publisher.startLatencyMs = 800;
    world.publisher.stopLatencyMs = 200;
    world.virtualAdapter.macDelayMs = 0;
    return world;
}

void HotspotTest::Use(const sim::SimWiFiDirectConfig& wifiDirect) {
    sim::Scenario scenario;
    scenario.wifiCard.maker = sim::SimWifiCardConfig::Maker::Intel;
    scenario.wifiDirect = wifiDirect;
    pc().Apply(scenario);
}

void HotspotTest::ExpectNothingLeft() {
    auto census = pc().wifiDirect().TakeCensus();
    EXPECT_EQ(census.publishers, 0u);
    EXPECT_EQ(census.listeners, 0u);
    EXPECT_EQ(census.registrations, 0u);
    EXPECT_EQ(census.devices, 0u);
}

sim::SimWiFiDirectConfig::Phone HotspotTest::Phone(const std::wstring& id,
                                                   const std::string& address, uint32_t joinAfterMs,
                                                   uint32_t leaveAfterMs,
                                                   bool missDisconnectEvent) {
    sim::SimWiFiDirectConfig::Phone phone;
    phone.id = id;
    phone.address = address;
    phone.joinAfterMs = joinAfterMs;
    if (leaveAfterMs != 0) {
        phone.leaveAfterMs = leaveAfterMs;
    }
    phone.missDisconnectEvent = missDisconnectEvent;
    return phone;
}

}  // namespace connectkit::test
