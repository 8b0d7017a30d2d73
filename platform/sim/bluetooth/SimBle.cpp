#include "platform/sim/bluetooth/SimBle.h"

#include "platform/ports/Errors.h"
#include "platform/sim/bluetooth/SimBleWorld.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/Scenario.h"

namespace connectkit::sim {

SimBle::SimBle(VirtualClock& clock, FaultInjector& faults, SimBluetooth& bluetooth)
    : bluetooth_(bluetooth), world_(std::make_shared<ble::World>(clock, faults, bluetooth)) {
    bluetooth_.Extend(world_);
}

SimBle::~SimBle() {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->detached = true;
}

std::shared_ptr<platform::BleAdvertisementWatcher> SimBle::NewWatcher() {
    if (FaultedCall(world_->faults, world_->clock, "ble.newWatcher",
                    platform::kErrorCallNotImplemented)) {
        return nullptr;
    }
    return ble::MakeWatcher(world_);
}

uint32_t SimBle::Enable(const std::wstring& name) {
    if (auto error = FaultedCall(world_->faults, world_->clock, "privileges.enable",
                                 platform::kErrorNotAllAssigned)) {
        return *error;
    }
    std::lock_guard<std::mutex> lock(world_->mutex);
    if (!world_->config.elevated) {
        return platform::kErrorNotAllAssigned;
    }
    world_->loadDriverEnabled = world_->loadDriverEnabled || name == platform::kLoadDriverPrivilege;
    return platform::kErrorSuccess;
}

void SimBle::Reset() {
    world_->controller.Configure({});
    std::lock_guard<std::mutex> lock(world_->mutex);
    ++world_->epoch;
    world_->config = {};
    world_->loadDriverEnabled = false;
    world_->air.clear();
}

void SimBle::Apply(const Scenario& scenario) {
    world_->controller.Configure(scenario.ble.controller);
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->config = scenario.ble;
    for (const auto& phone : scenario.ble.phones) {
        world_->Place(phone);
    }
}

void SimBle::Count(SimCensus& census) const {
    std::lock_guard<std::mutex> lock(world_->mutex);
    census.bleWatchers += world_->watchers.size();
    for (const auto& [id, watcher] : world_->watchers) {
        census.bleRegistrations += watcher.received.Size() + watcher.stopped.Size();
    }
}

void SimBle::PutOnAir(const SimBlePhone& phone) {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->Place(phone);
}

void SimBle::TakeOffAir(const std::string& name) {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->air.erase(name);
}

std::vector<SimBlePhone> SimBle::Air() const {
    std::lock_guard<std::mutex> lock(world_->mutex);
    std::vector<SimBlePhone> air;
    for (const auto& [name, advertiser] : world_->air) {
        if (advertiser.phone.onAir) {
            air.push_back(advertiser.phone);
        }
    }
    return air;
}

SimHciController& SimBle::Controller() {
    return world_->controller;
}

}  // namespace connectkit::sim
