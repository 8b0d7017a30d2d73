// The Wi-Fi client on the simulated PC, joining the phone's hotspot of
// examples/worlds/wifi-phone-ap.json:
// - wifi_connect_overhead_ms: virtual time of Connect plus GetDynamicIP
//   beyond the card's association latency and the DHCP lease delay, the
//   lease rounded up to GetDynamicIP's 100 ms polls; the largest over 20 joins.
// - wifi_virtual_per_wall: virtual milliseconds that pass per wall-clock
//   millisecond over 1,000 connect, address and disconnect cycles.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>

#include "SimFigures.h"
#include "connectkit/WifiNetworkService.h"
#include "platform/Platform.h"

namespace connectkit::bench {
namespace {

using WifiConnectManage::WifiNetworkService;

constexpr uint32_t kPollMs = 100;
constexpr uint32_t kSettleLimitMs = 30000;
// Lets the disconnection's notifications arrive before the next join.
constexpr uint32_t kDrainMs = 100;

struct PhoneAp {
    std::wstring ssid;
    std::wstring key;
    uint32_t associateMs = 0;
    uint32_t leaseDelayMs = 0;
};

// Applies the world; false when it cannot be read.
bool UsePhoneWorld(PhoneAp& ap) {
    sim::Scenario scenario;
    sim::ScenarioError error;
    if (!sim::LoadScenarioFile(std::string(CONNECTKIT_WORLDS_DIR) + "/wifi-phone-ap.json", scenario,
                               error) ||
        !scenario.wlan || scenario.wlan->networks.empty()) {
        return false;
    }
    Pc().Apply(scenario);
    const auto& network = scenario.wlan->networks.front();
    ap.ssid.assign(network.ssid.begin(), network.ssid.end());
    ap.key.assign(network.passphrase.begin(), network.passphrase.end());
    ap.associateMs = scenario.wlan->associateMs;
    ap.leaseDelayMs = network.leaseDelayMs;
    return true;
}

// Wakes the caller once a join has completed.
class Joined final : public WifiNetworkService::IWifiNetworkServiceObserver {
public:
    Joined() : event_(platform::Current().clock().NewEvent(false, false)) {
        WifiNetworkService::GetInstance()->RegistObserver(this);
    }
    ~Joined() { WifiNetworkService::GetInstance()->UnregistObserver(this); }

    void OnWifiStateChanged(std::wstring, WifiConnectManage::WifiConnectState state) override {
        if (state == WifiConnectManage::WifiDisConnected) {
            event_->Set();
        }
    }
    // Connects and returns once joined and addressed; false on any failure.
    bool Join(const PhoneAp& ap) {
        auto* service = WifiNetworkService::GetInstance();
        event_->Reset();
        std::string ip;
        return service->Connect(ap.ssid, ap.key, true, 0, {}, false) &&
               event_->Wait(kSettleLimitMs) == platform::WaitResult::Signaled &&
               service->GetDynamicIP(ip) == 0;
    }

private:
    std::unique_ptr<platform::Event> event_;
};

void Leave() {
    WifiNetworkService::GetInstance()->DisConnnect();
    Pc().clock().Sleep(kDrainMs);
}

double OverheadMs() {
    PhoneAp ap;
    if (!UsePhoneWorld(ap)) {
        return -1;
    }
    auto& clock = Pc().clock();
    uint32_t leaseToPoll = (ap.leaseDelayMs + kPollMs - 1) / kPollMs * kPollMs;
    Joined joined;
    int64_t worst = 0;
    for (int i = 0; i < 20; ++i) {
        uint64_t before = clock.TickCount64();
        if (!joined.Join(ap)) {
            return -1;
        }
        int64_t spent = static_cast<int64_t>(clock.TickCount64() - before);
        worst = std::max<int64_t>(worst, spent - ap.associateMs - leaseToPoll);
        Leave();
    }
    return static_cast<double>(worst);
}

double VirtualPerWall() {
    PhoneAp ap;
    if (!UsePhoneWorld(ap)) {
        return -1;
    }
    Joined joined;
    return MeasureVirtualPerWall(1000, [&] {
        if (!joined.Join(ap)) {
            return false;
        }
        Leave();
        return true;
    });
}

void BM_JoinAndLeave(benchmark::State& state) {
    PhoneAp ap;
    UsePhoneWorld(ap);
    Joined joined;
    for (auto _ : state) {
        benchmark::DoNotOptimize(joined.Join(ap));
        Leave();
    }
}
BENCHMARK(BM_JoinAndLeave)->Unit(benchmark::kMicrosecond);

[[maybe_unused]] const bool registered = [] {
    AddSimFigures("wifi_connect_overhead_ms", OverheadMs, "wifi_virtual_per_wall", VirtualPerWall);
    return true;
}();

}  // namespace
}  // namespace connectkit::bench
