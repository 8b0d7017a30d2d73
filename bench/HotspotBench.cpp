// The hotspot on the simulated PC:
// - hotspot_overhead_ms: how much virtual time SystemCreateSoftAP spends
//   beyond what the platform itself takes (the publisher's start latency) and
//   the waits the hotspot must make; the largest over 50 creations.
// - hotspot_virtual_per_wall: virtual milliseconds that pass per wall-clock
//   millisecond over 1,000 create/destroy cycles, i.e. how much faster than
//   real time the simulated PC runs the hotspot's waits.

#include <benchmark/benchmark.h>

#include <algorithm>

#include "SimFigures.h"
#include "connectkit/SoftAPManager.h"

namespace connectkit::bench {
namespace {

constexpr uint32_t kStartLatencyMs = 800;
// Longer than the legacy AP's start pacing, so no creation has to wait it out.
constexpr uint32_t kPauseBetweenStartsMs = 2000;

void UseHotspotWorld() {
    sim::Scenario scenario;
    scenario.wifiCard.maker = sim::SimWifiCardConfig::Maker::Intel;
    scenario.wifiDirect.publisher.startLatencyMs = kStartLatencyMs;
    scenario.wifiDirect.virtualAdapter.macDelayMs = 0;
    Pc().Apply(scenario);
}

double OverheadMs() {
    UseHotspotWorld();
    auto& clock = Pc().clock();
    uint64_t worst = 0;
    for (int i = 0; i < 50; ++i) {
        clock.Sleep(kPauseBetweenStartsMs);
        SoftAPInfo info;
        uint64_t before = clock.TickCount64();
        if (SystemCreateSoftAP(info) != 0) {
            return -1;
        }
        uint64_t spent = clock.TickCount64() - before;
        worst = std::max<uint64_t>(worst, spent - kStartLatencyMs);
        SystemDestroySoftAP(info);
    }
    return static_cast<double>(worst);
}

double VirtualPerWall() {
    UseHotspotWorld();
    return MeasureVirtualPerWall(1000, [] {
        SoftAPInfo info;
        SystemCreateSoftAP(info);
        SystemDestroySoftAP(info);
        return true;
    });
}

void BM_CreateDestroySoftAP(benchmark::State& state) {
    UseHotspotWorld();
    for (auto _ : state) {
        SoftAPInfo info;
        benchmark::DoNotOptimize(SystemCreateSoftAP(info));
        SystemDestroySoftAP(info);
    }
}
BENCHMARK(BM_CreateDestroySoftAP)->Unit(benchmark::kMicrosecond);

[[maybe_unused]] const bool registered = [] {
    AddSimFigures("hotspot_overhead_ms", OverheadMs, "hotspot_virtual_per_wall", VirtualPerWall);
    return true;
}();

}  // namespace
}  // namespace connectkit::bench
