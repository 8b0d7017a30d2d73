#pragma once
// A simulated PC with an Intel card and a working Wi-Fi Direct virtual
// adapter, and an observer that records what the legacy AP tells it.
#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "connectkit/LegacyAP.h"
#include "platform/sim/wifidirect/SimWiFiDirect.h"
#include "support/SimWorld.h"

namespace connectkit::test {

// With `reenter`, it also calls back into the legacy AP from inside every
// notification, as a suite observer may.
class Recorder : public ConnectKit::LegacyAP::ILegacyAPNotification {
public:
    explicit Recorder(bool reenter = false) : reenter_(reenter) {}
    struct Connection {
        int status = 0;
        std::wstring deviceId;
        std::wstring address;
        bool operator==(const Connection&) const = default;
    };

    void OnLegacyAPAdvertiserStatusChanged(ConnectKit::LegacyAPAdvertisemenStatus status) override {
        Reenter();
        std::lock_guard<std::mutex> lock(mutex_);
        statuses_.push_back(status);
        threads_.push_back(std::this_thread::get_id());
    }
    void OnLegacyAPConnectionStatusChanged(ConnectKit::LegacyAPDeviceConnectionStatus status,
                                           ConnectKit::LegacyAPDeviceInformation device) override {
        Reenter();
        std::lock_guard<std::mutex> lock(mutex_);
        connections_.push_back(Connection{status, device.deviceId, device.ipAddress});
        threads_.push_back(std::this_thread::get_id());
    }
    std::vector<int> AdvertiserStatuses() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return statuses_;
    }
    std::vector<Connection> Connections() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return connections_;
    }
    bool SawThread(std::thread::id id) const {
        std::lock_guard<std::mutex> lock(mutex_);
        return std::find(threads_.begin(), threads_.end(), id) != threads_.end();
    }

private:
    void Reenter() {
        if (reenter_) {
            auto* ap = ConnectKit::LegacyAP::GetInstance();
            ap->IsLegacyAPNeed();
            ap->GetLegacyAPStatus();
            ap->GetSSID();
        }
    }
    const bool reenter_;
    mutable std::mutex mutex_;
    std::vector<int> statuses_;
    std::vector<Connection> connections_;
    std::vector<std::thread::id> threads_;
};

class HotspotTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        Use(World());
    }
    // The world every hotspot test starts from; tests change a copy.
    static sim::SimWiFiDirectConfig World() {
        sim::SimWiFiDirectConfig world;
        world.publisher.startLatencyMs = 800;
        world.publisher.stopLatencyMs = 200;
        world.virtualAdapter.macDelayMs = 0;
        return world;
    }
    // `cardFailures`: the Intel library's exports that fail so many times.
    void Use(const sim::SimWiFiDirectConfig& wifiDirect,
             const std::map<std::string, uint32_t>& cardFailures = {}) {
        sim::Scenario scenario;
        scenario.wifiCard.maker = sim::SimWifiCardConfig::Maker::Intel;
        scenario.wifiCard.intel.failures = cardFailures;
        scenario.wifiDirect = wifiDirect;
        pc().Apply(scenario);
    }
    // The result of `call`; the virtual time it took goes to `elapsedMs`.
    template <class Call>
    int Timed(uint64_t& elapsedMs, Call call) {
        uint64_t before = Now();
        int result = call();
        elapsedMs = Now() - before;
        return result;
    }
    // Lets every notification thread that has work run it to the end.
    void Settle() { pc().clock().Sleep(10); }
    // No publisher, listener, event registration or phone's device is left.
    void ExpectNothingLeft() {
        auto census = pc().wifiDirect().TakeCensus();
        EXPECT_EQ(census.publishers, 0u);
        EXPECT_EQ(census.listeners, 0u);
        EXPECT_EQ(census.registrations, 0u);
        EXPECT_EQ(census.devices, 0u);
    }
    // leaveAfterMs 0: the phone stays.
    static sim::SimWiFiDirectConfig::Phone Phone(const std::wstring& id, const std::string& address,
                                                 uint32_t joinAfterMs, uint32_t leaveAfterMs,
                                                 bool missDisconnectEvent) {
        return {.id = id,
                .address = address,
                .joinAfterMs = joinAfterMs,
                .leaveAfterMs = leaveAfterMs == 0 ? std::nullopt : std::optional(leaveAfterMs),
                .missDisconnectEvent = missDisconnectEvent};
    }
};

}  // namespace connectkit::test
