// The Bluetooth radio on the simulated PC, switched off so hard that the
// platform lists no radio:
// - radio_overhead_ms: how much virtual time setradio, GetBluetoothState and
//   EnableBluetooth spend beyond what the platform itself takes (each radio
//   listing's latency) and the waits the radio must make (2 s between
//   disabling and enabling the controller, 300 ms between looks for the
//   radio).

#include "Ratios.h"
#include "SimFigures.h"
#include "connectkit/BluetoothManage.h"

namespace connectkit::bench {
namespace {

constexpr uint32_t kListingLatencyMs = 50;
// Long enough that the first look after the restart misses the radio.
constexpr uint32_t kRestartLatencyMs = 300;
constexpr uint64_t kControllerPauseMs = 2000;
constexpr uint64_t kSearchPauseMs = 300;
constexpr uint32_t kSearchTries = 3;

void UseHardOffWorld() {
    sim::Scenario scenario;
    sim::SimBluetoothConfig::Controller controller;
    controller.radio = sim::SimBluetoothConfig::Controller::Radio::HardOff;
    controller.restartLatencyMs = kRestartLatencyMs;
    scenario.bluetooth.controllers.push_back(controller);
    scenario.bluetooth.listing.latencyMs = kListingLatencyMs;
    scenario.bluetooth.wifi.present = false;
    Pc().Apply(scenario);
}

// Virtual time a call spends, less the listings it caused and, when it had to
// switch the controller through the registry, the waits that path makes.
// With no Wi-Fi radio every look for the radio lists twice.
template <typename Call>
double Overhead(ConnectKitBluetooth::BluetoothManage& manage, const Call& call) {
    auto& clock = Pc().clock();
    bool heldBefore = manage.IsBluetoothAvailable();
    uint32_t listingsBefore = Pc().bluetooth().History().listings;
    uint64_t before = clock.TickCount64();
    call();
    uint64_t spent = clock.TickCount64() - before;
    uint32_t listings = Pc().bluetooth().History().listings - listingsBefore;
    uint64_t waits = listings * uint64_t{kListingLatencyMs};
    if (!heldBefore && listings > 0) {
        uint32_t tries = manage.IsBluetoothAvailable() ? listings / 2 : kSearchTries;
        uint32_t pauses = manage.IsBluetoothAvailable() ? tries - 1 : tries;
        waits += kControllerPauseMs + pauses * kSearchPauseMs;
    }
    return static_cast<double>(spent) - static_cast<double>(waits);
}

double OverheadMs() {
    UseHardOffWorld();
    auto& manage = *ConnectKitBluetooth::BluetoothManage::GetInstance();
    if (manage.IsBluetoothAvailable()) {
        return -1;
    }
    double overhead = Overhead(manage, [&] { manage.setradio(); });
    overhead += Overhead(manage, [&] { manage.GetBluetoothState(); });
    Pc().clock().Sleep(1000);
    overhead += Overhead(manage, [&] { manage.EnableBluetooth(1); });
    return manage.IsBluetoothAvailable() ? overhead : -1;
}

[[maybe_unused]] const bool registered = [] {
    AddMeasured("radio_overhead_ms", OverheadMs, "=", 0);
    return true;
}();

}  // namespace
}  // namespace connectkit::bench
