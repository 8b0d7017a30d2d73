#include "platform/sim/bluetooth/SimBluetooth.h"

#include <cstdio>

#include "platform/ports/Errors.h"
#include "platform/sim/bluetooth/SimRadiosWorld.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/SimText.h"
#include "platform/sim/core/VirtualClock.h"
#include "platform/sim/machine/SimDevices.h"
#include "platform/sim/machine/SimRegistry.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim {
namespace {

using platform::RadioState;
using radios::World;

// One inquiry unit of BLUETOOTH_DEVICE_SEARCH_PARAMS: 1.28 s.
constexpr uint32_t kInquiryUnitMs = 1280;

std::wstring AddressText(uint64_t address) {
    wchar_t text[13];
    std::swprintf(text, 13, L"%012llX",
                  static_cast<unsigned long long>(address & 0xFFFFFFFFFFFFull));
    return text;
}

// A software node's hardware id: its instance id without the instance part.
std::wstring EnumeratorId(const std::wstring& instanceId) {
    return instanceId.substr(0, instanceId.rfind(L'\\'));
}

void WriteParameters(SimRegistry& registry, const SimBluetoothConfig::Controller& controller) {
    auto key = radios::DeviceParameters(controller.instanceId);
    auto hklm = platform::RegistryHive::LocalMachine;
    bool on = controller.radio == SimBluetoothConfig::Controller::Radio::On;
    registry.Put(hklm, key, L"RadioState", platform::RegistryData::FromDword(on ? 2 : 4));
    registry.Put(hklm, key, L"DeviceAddressCache",
                 platform::RegistryData::FromString(AddressText(controller.address)));
    std::string name = DE::UnicodeToUTF8(controller.name);
    registry.Put(hklm, key, L"Local Name",
                 platform::RegistryData::FromBinary({name.begin(), name.end()}));
}

radios::ControllerRecord Installed(const SimBluetoothConfig::Controller& config) {
    using Radio = SimBluetoothConfig::Controller::Radio;
    radios::ControllerRecord record;
    record.config = config;
    record.present = config.present;
    record.running = config.present && config.problemCode == 0;
    record.listed = config.radio != Radio::HardOff;
    record.state = config.radio == Radio::On         ? RadioState::On
                   : config.radio == Radio::Disabled ? RadioState::Disabled
                                                     : RadioState::Off;
    record.name = config.name;
    return record;
}

}  // namespace

SimBluetooth::SimBluetooth(VirtualClock& clock, FaultInjector& faults, SimRegistry& registry,
                           SimDevices& devices)
    : registry_(registry),
      devices_(devices),
      world_(std::make_shared<World>(clock, faults, registry)) {}

SimBluetooth::~SimBluetooth() {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->detached = true;
}

void SimBluetooth::GetRadiosAsync(ListCompletion completed) {
    auto& world = *world_;
    if (auto error = FaultedCall(world.faults, world.clock, "radios.list",
                                 platform::kErrorCallNotImplemented)) {
        throw platform::PlatformError(static_cast<int32_t>(0x80070000u | (*error & 0xFFFF)),
                                      "Radio.GetRadiosAsync refused");
    }
    platform::AsyncStatus status = platform::AsyncStatus::Completed;
    uint32_t latencyMs = 0;
    {
        std::lock_guard<std::mutex> lock(world.mutex);
        ++world.history.listings;
        if (!world.outcomes.empty()) {
            status = world.outcomes.front();
            world.outcomes.pop_front();
        }
        latencyMs = world.config.listing.latencyMs;
    }
    world.clock.Post(
        latencyMs, [weak = std::weak_ptr<World>(world_), status, completed = std::move(completed)] {
            platform::RadioList list;
            auto world = weak.lock();
            if (world && status == platform::AsyncStatus::Completed) {
                std::lock_guard<std::mutex> lock(world->mutex);
                list = world->List();
            }
            completed(world ? status : platform::AsyncStatus::Canceled, std::move(list));
        });
}

std::unique_ptr<platform::BluetoothRadioSearch> SimBluetooth::FindFirstRadio(
    std::unique_ptr<platform::BluetoothRadio>& first, uint32_t& error) {
    first.reset();
    auto& world = *world_;
    if (auto faulted = FaultedCall(world.faults, world.clock, "bluetooth.findRadio",
                                   platform::kErrorNoMoreItems)) {
        error = *faulted;
        return nullptr;
    }
    std::vector<size_t> running;
    {
        std::lock_guard<std::mutex> lock(world.mutex);
        for (size_t i = 0; i < world.controllers.size(); ++i) {
            if (world.Running(static_cast<int>(i), world.epoch)) {
                running.push_back(i);
            }
        }
    }
    if (running.empty()) {
        error = platform::kErrorNoMoreItems;
        return nullptr;
    }
    error = platform::kErrorSuccess;
    auto search = radios::MakeRadioSearch(world_, std::move(running));
    first = search->Next(error);
    return search;
}

uint32_t SimBluetooth::FindFirstDevice(const platform::BluetoothDeviceSearch& search,
                                       platform::BluetoothDeviceInfo& first) {
    first = {};
    auto& world = *world_;
    if (auto error = FaultedCall(world.faults, world.clock, "bluetooth.findDevice",
                                 platform::kErrorNoMoreItems)) {
        return *error;
    }
    {
        std::lock_guard<std::mutex> lock(world.mutex);
        bool anyRunning = false;
        for (size_t i = 0; i < world.controllers.size(); ++i) {
            anyRunning = anyRunning || world.Running(static_cast<int>(i), world.epoch);
        }
        if (!anyRunning || !search.issueInquiry) {
            return platform::kErrorNoMoreItems;
        }
        ++world.history.inquiries;
    }
    world.clock.Sleep(search.timeoutMultiplier * kInquiryUnitMs);
    return platform::kErrorNoMoreItems;
}

void SimBluetooth::Reset() {
    std::lock_guard<std::mutex> lock(world_->mutex);
    ++world_->epoch;
    world_->config = {};
    world_->controllers.clear();
    world_->wifiPresent = false;
    world_->wifiState = RadioState::On;
    world_->outcomes.clear();
    world_->history = {};
}

void SimBluetooth::Apply(const Scenario& scenario) {
    const SimBluetoothConfig& config = scenario.bluetooth;
    {
        std::lock_guard<std::mutex> lock(world_->mutex);
        world_->config = config;
        for (const auto& controller : config.controllers) {
            world_->controllers.push_back(Installed(controller));
        }
        world_->wifiPresent =
            config.wifi.present.value_or(scenario.wifiCard.maker != SimWifiCardConfig::Maker::None);
        world_->wifiState = config.wifi.state;
        world_->outcomes.assign(config.listing.outcomes.begin(), config.listing.outcomes.end());
    }
    for (const auto& controller : config.controllers) {
        WriteParameters(registry_, controller);
    }
    AddNodes(config);
}

void SimBluetooth::AddNodes(const SimBluetoothConfig& config) {
    uint64_t epoch = 0;
    {
        std::lock_guard<std::mutex> lock(world_->mutex);
        epoch = world_->epoch;
    }
    std::vector<SimDevices::Device> controllers;
    std::vector<SimDevices::Device> softwareNodes;
    for (size_t i = 0; i < config.controllers.size(); ++i) {
        const auto& controller = config.controllers[i];
        SimDevices::Device node;
        node.instanceId = controller.instanceId;
        node.hardwareIds = controller.hardwareIds;
        node.classGuid = kBluetoothClassGuid;
        node.problem = controller.problemCode;
        node.present = controller.present;
        node.enabledChanged = [weak = std::weak_ptr<World>(world_), i, epoch](bool enabled) {
            if (auto world = weak.lock()) {
                world->ControllerToggled(i, epoch, enabled);
            }
        };
        controllers.push_back(std::move(node));
        for (const auto& id : controller.softwareNodes) {
            SimDevices::Device software;
            software.instanceId = id;
            software.hardwareIds = {EnumeratorId(id)};
            software.classGuid = kBluetoothClassGuid;
            software.present = controller.present;
            softwareNodes.push_back(std::move(software));
        }
    }
    auto& first = config.softwareNodesLast ? controllers : softwareNodes;
    auto& second = config.softwareNodesLast ? softwareNodes : controllers;
    for (auto* nodes : {&first, &second}) {
        for (auto& node : *nodes) {
            devices_.Add(std::move(node));
        }
    }
}

void SimBluetooth::Count(SimCensus& census) const {
    std::lock_guard<std::mutex> lock(world_->mutex);
    census.radioObjects += world_->radios.size();
    for (const auto& [id, record] : world_->radios) {
        census.radioRegistrations += record.stateChanged.Size();
    }
}

void SimBluetooth::SwitchRadio(platform::RadioKind kind, RadioState state) {
    Events events;
    {
        std::lock_guard<std::mutex> lock(world_->mutex);
        if (kind == platform::RadioKind::WiFi) {
            world_->ChangeState(radios::kWifiOwner, state, events);
        }
        for (size_t i = 0; i < world_->controllers.size() && kind == platform::RadioKind::Bluetooth;
             ++i) {
            if (world_->controllers[i].running) {
                world_->ChangeState(static_cast<int>(i), state, events);
                break;
            }
        }
    }
    PostEvents(world_->clock, std::move(events));
}

bool SimBluetooth::BluetoothOn() const {
    std::lock_guard<std::mutex> lock(world_->mutex);
    for (size_t i = 0; i < world_->controllers.size(); ++i) {
        if (world_->StateOf(static_cast<int>(i), world_->epoch) == RadioState::On) {
            return true;
        }
    }
    return false;
}

void SimBluetooth::Extend(std::weak_ptr<SimControllerExtension> extension) {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->extension = std::move(extension);
}

SimRadiosHistory SimBluetooth::History() const {
    std::lock_guard<std::mutex> lock(world_->mutex);
    return world_->history;
}

}  // namespace connectkit::sim
