#pragma once
// The state behind SimBle, shared by the model, its watchers and the timers
// of the advertisers on the air. One mutex guards it; the vendor controller
// has its own, never taken inside this one. Handlers run without the mutex.

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/sim/bluetooth/SimBle.h"
#include "platform/sim/bluetooth/SimBluetooth.h"
#include "platform/sim/core/EventDelivery.h"

namespace connectkit::sim::ble {

struct WatcherRecord {
    std::weak_ptr<platform::BleAdvertisementWatcher> object;
    uint64_t epoch = 0;
    platform::BleWatcherStatus status = platform::BleWatcherStatus::Created;
    platform::BleScanningMode mode = platform::BleScanningMode::Passive;
    std::optional<int16_t> threshold;
    std::vector<platform::BleBytePattern> patterns;
    HandlerTable<platform::BleAdvertisementWatcher::ReceivedHandler> received;
    HandlerTable<platform::BleAdvertisementWatcher::StoppedHandler> stopped;
};

struct Advertiser {
    SimBlePhone phone;
    // A new one for every change, so that the timer of the old one ends.
    uint64_t generation = 0;
    bool ticking = false;
};

struct World final : SimControllerExtension, std::enable_shared_from_this<World> {
    World(VirtualClock& clock, FaultInjector& faults, SimBluetooth& bluetooth)
        : clock(clock), faults(faults), bluetooth(bluetooth) {}

    VirtualClock& clock;
    FaultInjector& faults;
    SimBluetooth& bluetooth;
    SimHciController controller;

    // Everything below needs `mutex` held.
    mutable std::mutex mutex;
    bool detached = false;
    uint64_t epoch = 0;
    SimBleConfig config;
    bool loadDriverEnabled = false;
    // The first controller's address, which this PC's advertisements carry.
    uint64_t ownAddress = 0;
    std::map<std::string, Advertiser> air;
    std::map<uint64_t, WatcherRecord> watchers;
    uint64_t lastGeneration = 0;
    uint64_t lastId = 0;
    platform::EventToken lastToken = 0;

    bool AnyStarted() const;
    // Puts `phone` on the air in place of any of its name.
    void Place(const SimBlePhone& phone);
    // Starts the advertiser's timer when a watcher listens and none runs.
    void Schedule(const std::string& name);
    // The Stopped deliveries of watcher `id` with `error`.
    void Stopped(uint64_t id, platform::BluetoothError error, Events& events);

    // Called without the mutex.
    void Tick(const std::string& name, uint64_t generation);
    // Puts the controller's enabled instances on the air.
    void RefreshOwn();
    // The Realtek library's way to the controller: the event, or none while
    // the radio is off or when the controller keeps quiet (after the wait).
    std::vector<uint8_t> Send(const std::vector<uint8_t>& packet);
    void Start(uint64_t id);
    void Stop(uint64_t id);

    uint32_t Control(const SimBluetoothConfig::Controller& controller, uint32_t code,
                     const std::vector<uint8_t>& input, std::vector<uint8_t>& output,
                     uint32_t outputSize) override;
    void BluetoothChanged() override;
};

std::shared_ptr<platform::BleAdvertisementWatcher> MakeWatcher(const std::shared_ptr<World>& world);
// The AD structures of advertising data as the platform parses them: a zero
// length ends them, one that overruns the bytes is dropped.
std::vector<platform::BleDataSection> ParseSections(const std::vector<uint8_t>& data);

}  // namespace connectkit::sim::ble
