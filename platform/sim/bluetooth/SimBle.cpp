#include "platform/sim/bluetooth/SimBle.h"

#include "platform/ports/Errors.h"
#include "platform/sim/bluetooth/SimBleWorld.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/Scenario.h"
#include "platform/sim/machine/SimFileSystem.h"

namespace connectkit::sim {
namespace {

std::shared_ptr<SimLibraryImage> RealtekBluetoothImage() {
    auto image = std::make_shared<SimLibraryImage>();
    image->symbols = {
        {platform::rtk::kOpenDevice,
         reinterpret_cast<platform::ProcAddress>(&rtkbt::RtkApplOpenDevice)},
        {platform::rtk::kCloseDevice,
         reinterpret_cast<platform::ProcAddress>(&rtkbt::RtkApplCloseDevice)},
        {platform::rtk::kSetMultiAdvParam,
         reinterpret_cast<platform::ProcAddress>(&rtkbt::RtkSendHciLeSetMultiAdvParam)},
        {platform::rtk::kSendAdv, reinterpret_cast<platform::ProcAddress>(&rtkbt::RtkApplSendAdv)},
        {platform::rtk::kCloseAdv,
         reinterpret_cast<platform::ProcAddress>(&rtkbt::RtkApplCloseAdv)},
    };
    return image;
}

}  // namespace

SimBle::SimBle(VirtualClock& clock, FaultInjector& faults, SimBluetooth& bluetooth,
               SimFileSystem& files)
    : bluetooth_(bluetooth),
      files_(files),
      world_(std::make_shared<ble::World>(clock, faults, bluetooth)) {
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
    ConfigureSimRealtekBluetooth({}, nullptr);
    std::lock_guard<std::mutex> lock(world_->mutex);
    ++world_->epoch;
    world_->config = {};
    world_->loadDriverEnabled = false;
    world_->air.clear();
}

void SimBle::Apply(const Scenario& scenario) {
    world_->controller.Configure(scenario.ble.controller);
    const auto& library = scenario.ble.realtekLibrary;
    if (library.present.value_or(scenario.wifiCard.maker == SimWifiCardConfig::Maker::Realtek)) {
        files_.AddFile(std::wstring(SimFileSystem::kSystemDirectory) + platform::rtk::kLibraryName,
                       RealtekBluetoothImage());
    }
    ConfigureSimRealtekBluetooth(library.settings,
                                 [weak = std::weak_ptr<ble::World>(world_)](const auto& packet) {
                                     auto world = weak.lock();
                                     return world ? world->Send(packet) : std::vector<uint8_t>{};
                                 });
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->config = scenario.ble;
    world_->ownAddress =
        scenario.bluetooth.controllers.empty() ? 0 : scenario.bluetooth.controllers[0].address;
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
