// Bluetooth LE on the simulated PC:
// - ble_scan_headroom: advertisement events the scanner sorts and delivers
//   per second of one core, over about the most a controller reports
//   (10,000 a second). The events are handed to the scanner's Received
//   handler directly, a mix as a crowded air gives: the suite's phones in
//   both forms and under 0xFDEE, scan responses, other companies and UUIDs,
//   both kinds in one advertisement and sections too short for their UUID.
// - ble_advertise_overhead_ms: virtual time StartAdvertise spends beyond the
//   latencies scripted for the controller's commands it sent.

#include <ctime>

#include "HandedWatcher.h"
#include "Ratios.h"
#include "SimFigures.h"
#include "connectkit/BLEAdvertiser.h"
#include "connectkit/BleScanner.h"

namespace connectkit::bench {
namespace {

constexpr double kControllerReportsPerSecond = 10000;
constexpr int kScanEvents = 1000000;

using Section = platform::BleDataSection;

platform::BleAdvertisementReceived Event(uint64_t address, platform::BleAdvertisementType type,
                                         std::vector<platform::BleManufacturerData> manufacturer,
                                         std::vector<Section> sections) {
    platform::BleAdvertisementReceived event;
    event.bluetoothAddress = address;
    event.rawSignalStrengthInDBm = -60;
    event.advertisementType = type;
    event.timestamp = 133000000000000000;
    event.manufacturerData = std::move(manufacturer);
    sections.insert(sections.begin(), Section{0x01, {0x06}});
    for (const auto& entry : event.manufacturerData) {
        std::vector<uint8_t> data{static_cast<uint8_t>(entry.companyId),
                                  static_cast<uint8_t>(entry.companyId >> 8)};
        data.insert(data.end(), entry.data.begin(), entry.data.end());
        sections.push_back({0xFF, data});
    }
    event.dataSections = std::move(sections);
    return event;
}

std::vector<platform::BleAdvertisementReceived> CrowdedAir() {
    using Type = platform::BleAdvertisementType;
    const std::vector<uint8_t> payload{0x0E, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    return {
        Event(1, Type::NonConnectableUndirected, {{0x027D, payload}}, {}),
        Event(2, Type::NonConnectableUndirected, {}, {{0x16, {0x35, 0xFE, 0x0F, 1, 2, 3}}}),
        Event(3, Type::ScannableUndirected, {}, {{0x16, {0xEE, 0xFD, 0x0F, 4}}}),
        Event(3, Type::ScanResponse, {{0x027D, payload}}, {}),
        Event(4, Type::ConnectableUndirected, {{0x004C, {0x02, 0x15, 1, 2, 3}}}, {}),
        Event(5, Type::NonConnectableUndirected, {}, {{0x16, {0x9F, 0xFE, 1}}}),
        Event(6, Type::NonConnectableUndirected, {{0x027D, payload}}, {{0x16, {0x35, 0xFE, 1}}}),
        Event(7, Type::NonConnectableUndirected, {}, {{0x16, {0x35}}}),
    };
}

struct Counter final : ConnectKit::BleScanner::INotification {
    void OnRecved(uint64_t, uint64_t, const std::vector<uint8_t>& payload, ConnectKit::BleAdvType,
                  uint16_t) override {
        bytes += payload.size();
    }
    void OnStopped() override {}
    size_t bytes = 0;
};

// The time this thread ran: one core's work, whatever else the machine does.
double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

double ScanHeadroom() {
    auto& pc = HandedPc();
    pc.handOut = true;
    ConnectKit::BleScanner scanner;
    pc.handOut = false;
    Counter counter;
    scanner.RegisterRecvedCallback(&counter);
    scanner.Start();
    const auto air = CrowdedAir();
    const double start = ThreadSeconds();
    for (int i = 0; i < kScanEvents; ++i) {
        pc.watcher->Hand(air[i % air.size()]);
    }
    const double seconds = ThreadSeconds() - start;
    scanner.Stop();
    scanner.UnRegisterRecvedCallback(&counter);
    if (counter.bytes == 0) {
        return -1;
    }
    return kScanEvents / seconds / kControllerReportsPerSecond;
}

double AdvertiseOverheadMs() {
    sim::Scenario scenario;
    scenario.bluetooth.controllers.emplace_back();
    scenario.ble.controller.latencyMs = {{1, 3}, {2, 5}, {3, 7}, {5, 11}};
    Pc().Apply(scenario);
    auto& front = *BLEAdvertiser::GetUniqueInstance();
    front.init();
    auto& controller = Pc().bluetoothLE().Controller();
    const size_t sentBefore = controller.Exchanges().size();
    const uint8_t payload[] = {0x0E, 1, 2};
    auto& clock = Pc().clock();
    const uint64_t before = clock.TickCount64();
    const bool on = front.StartAdvertise(payload, sizeof(payload), 160);
    const uint64_t spent = clock.TickCount64() - before;
    const auto exchanges = controller.Exchanges();
    front.StopAdvertise(0);
    front.unInit();
    uint64_t scripted = 0;
    for (size_t i = sentBefore; i < exchanges.size(); ++i) {
        // Opcode, parameter length, then the sub-opcode.
        const auto& command = exchanges[i].command;
        if (command.size() > 3) {
            scripted += scenario.ble.controller.latencyMs[command[3]];
        }
    }
    if (!on || scripted == 0) {
        return -1;
    }
    return static_cast<double>(spent) - static_cast<double>(scripted);
}

[[maybe_unused]] const bool registered = [] {
    AddMeasured("ble_scan_headroom", ScanHeadroom, ">=", 1000);
    AddMeasured("ble_advertise_overhead_ms", AdvertiseOverheadMs, "=", 0);
    return true;
}();

}  // namespace
}  // namespace connectkit::bench
