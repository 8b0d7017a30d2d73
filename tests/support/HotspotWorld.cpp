#include "support/HotspotWorld.h"

#include "channel/CommonAPI.h"

namespace connectkit::test {

void Recorder::OnLegacyAPAdvertiserStatusChanged(ConnectKit::LegacyAPAdvertisemenStatus status) {
    std::lock_guard<std::mutex> lock(mutex_);
    statuses_.push_back(status);
    threads_.push_back(std::this_thread::get_id());
}

void Recorder::OnLegacyAPConnectionStatusChanged(ConnectKit::LegacyAPDeviceConnectionStatus status,
                                                 ConnectKit::LegacyAPDeviceInformation device) {
    std::lock_guard<std::mutex> lock(mutex_);
    connections_.push_back(Connection{status, device.deviceId, device.ipAddress});
    threads_.push_back(std::this_thread::get_id());
}

std::vector<int> Recorder::AdvertiserStatuses() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return statuses_;
}

std::vector<Recorder::Connection> Recorder::Connections() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return connections_;
}

bool Recorder::SawThread(std::thread::id id) const {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto seen : threads_) {
        if (seen == id) {
            return true;
        }
    }
    return false;
}

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

void HotspotTest::RestartVirtualAdapter() {
    ASSERT_TRUE(CommonAPI::RestartWiFiDirectVirtualAdapter(true));
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
