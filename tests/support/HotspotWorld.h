#pragma once
// A simulated PC with an Intel card and a working Wi-Fi Direct virtual
// adapter, and an observer that records what the legacy AP tells it.
#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "connectkit/LegacyAP.h"
#include "platform/sim/wifidirect/SimWiFiDirect.h"
#include "support/SimWorld.h"

namespace connectkit::test {

class Recorder : public ConnectKit::LegacyAP::ILegacyAPNotification {
public:
    struct Connection {
        int status = 0;
        std::wstring deviceId;
        std::wstring address;
        bool operator==(const Connection& other) const {
            return std::tie(status, deviceId, address) ==
                   std::tie(other.status, other.deviceId, other.address);
        }
    };

    void OnLegacyAPAdvertiserStatusChanged(ConnectKit::LegacyAPAdvertisemenStatus status) override;
    void OnLegacyAPConnectionStatusChanged(ConnectKit::LegacyAPDeviceConnectionStatus status,
                                           ConnectKit::LegacyAPDeviceInformation device) override;
    std::vector<int> AdvertiserStatuses() const;
    std::vector<Connection> Connections() const;
    bool SawThread(std::thread::id id) const;

private:
    mutable std::mutex mutex_;
    std::vector<int> statuses_;
    std::vector<Connection> connections_;
    std::vector<std::thread::id> threads_;
};

class HotspotTest : public SimTest {
protected:
    void SetUp() override;
    // The world every hotspot test starts from; tests change a copy.
    static sim::SimWiFiDirectConfig World();
    void Use(const sim::SimWiFiDirectConfig& wifiDirect);
    uint64_t Now() { return pc().clock().TickCount64(); }
    // Lets every notification thread that has work run it to the end.
    void Settle() { pc().clock().Sleep(10); }
    void RestartVirtualAdapter();
    // No publisher, listener, event registration or phone's device is left.
    void ExpectNothingLeft();
    // leaveAfterMs 0: the phone stays.
    static sim::SimWiFiDirectConfig::Phone Phone(const std::wstring& id, const std::string& address,
                                                 uint32_t joinAfterMs, uint32_t leaveAfterMs,
                                                 bool missDisconnectEvent);
};

}  // namespace connectkit::test
