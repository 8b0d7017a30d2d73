#include "platform/sim/wifidirect/SimWiFiDirect.h"

#include <algorithm>
#include <utility>

#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/SimText.h"
#include "platform/sim/core/VirtualClock.h"
#include "platform/sim/machine/SimDevices.h"
#include "platform/sim/machine/SimProcesses.h"
#include "platform/sim/wifidirect/SimWiFiDirectWorld.h"

namespace connectkit::sim {
namespace {

// REGDB_E_CLASSNOTREG: what activating a runtime class that is not there
// reports.
constexpr int32_t kClassNotRegistered = static_cast<int32_t>(0x80040154u);
constexpr uint32_t kDefaultFromIdLatencyMs = 200;
constexpr uint32_t kNetshDurationMs = 300;

// Whether the arguments begin with `words`.
bool Begins(const SimProcesses::Arguments& arguments, const SimProcesses::Arguments& words) {
    return arguments.size() >= words.size() &&
           std::equal(words.begin(), words.end(), arguments.begin());
}

// Whether netsh's arguments are "interface ipv4 set address name=<index> ...".
bool NamesAddressRepair(const SimProcesses::Arguments& arguments, uint32_t index) {
    if (!Begins(arguments, {L"interface", L"ipv4", L"set", L"address"})) {
        return false;
    }
    std::wstring wanted = L"name=" + std::to_wstring(index);
    return std::any_of(arguments.begin() + 4, arguments.end(), [&](std::wstring argument) {
        std::erase(argument, L'"');
        return argument == wanted;
    });
}

void RepairAddress(wfd::World& world, const std::wstring& commandLine) {
    std::lock_guard<std::mutex> lock(world.mutex);
    const auto& adapter = world.config.virtualAdapter;
    if (!world.detached && adapter.macAfterRepair &&
        NamesAddressRepair(SimProcesses::ArgumentsOf(commandLine), adapter.index)) {
        world.ipPresent = true;
        world.RefreshUp();
        world.repairedSinceUp = world.upSince.has_value();
    }
}

// Whether a factory call is refused; a refusal is an answer, never a throw.
bool ActivationRefused(wfd::World& world) {
    Fault fault = world.faults.Check("wifidirect.activate");
    if (fault.action == FaultAction::TimeOut) {
        world.clock.Sleep(fault.delayMs);
    }
    std::lock_guard<std::mutex> lock(world.mutex);
    return fault || world.detached || !world.config.runtimeAvailable;
}

}  // namespace

SimWiFiDirect::SimWiFiDirect(VirtualClock& clock, FaultInjector& faults,
                             SimNetworkAdapters& adapters, SimDevices& devices,
                             SimProcesses& processes)
    : devices_(devices),
      world_(std::make_shared<wfd::World>(clock, faults)),
      adapters_(adapters.Own()) {
    std::weak_ptr<wfd::World> weak = world_;
    adapters_.SetSource([weak](std::vector<platform::NetworkAdapterInfo>& list) {
        if (auto world = weak.lock()) {
            std::lock_guard<std::mutex> lock(world->mutex);
            world->AppendAdapter(list);
        }
    });
    processes.AddHandler(
        L"netsh",
        [](const SimProcesses::Arguments& arguments) {
            return Begins(arguments, {L"interface", L"ipv4"});
        },
        SimProcesses::Program{0, kNetshDurationMs, [weak](const std::wstring& commandLine) {
                                  if (auto world = weak.lock()) {
                                      RepairAddress(*world, commandLine);
                                  }
                                  return 0u;
                              }});
}

SimWiFiDirect::~SimWiFiDirect() {
    devices_.Remove(kWiFiDirectVirtualAdapterInstanceId);
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->detached = true;
}

std::shared_ptr<platform::WiFiDirectPublisher> SimWiFiDirect::NewPublisher() {
    return ActivationRefused(*world_) ? nullptr : wfd::MakePublisher(world_);
}

std::shared_ptr<platform::WiFiDirectConnectionListener> SimWiFiDirect::NewConnectionListener() {
    return ActivationRefused(*world_) ? nullptr : wfd::MakeListener(world_);
}

std::shared_ptr<platform::PasswordCredential> SimWiFiDirect::NewPasswordCredential() {
    return ActivationRefused(*world_) ? nullptr : wfd::MakeCredential();
}

void SimWiFiDirect::DeviceFromIdAsync(const std::wstring& deviceId, DeviceCompletion completed) {
    auto& world = *world_;
    uint32_t latencyMs = kDefaultFromIdLatencyMs;
    uint64_t epoch = 0;
    {
        std::lock_guard<std::mutex> lock(world.mutex);
        if (world.detached || !world.config.runtimeAvailable) {
            throw platform::PlatformError(kClassNotRegistered, "WiFiDirectDevice not registered");
        }
        for (const auto& phone : world.phones) {
            if (phone.config.id == deviceId) {
                latencyMs = phone.config.fromIdLatencyMs;
            }
        }
        epoch = world.epoch;
    }
    if (FaultedCall(world.faults, world.clock, "wifidirect.fromId", platform::kErrorNotSupported)) {
        world.clock.Post(latencyMs, [completed = std::move(completed)] {
            completed(platform::AsyncStatus::Error, nullptr);
        });
        return;
    }
    world.clock.Post(latencyMs, [weak = std::weak_ptr<wfd::World>(world_), deviceId, epoch,
                                 completed = std::move(completed)] {
        auto world = weak.lock();
        auto device = world ? wfd::MakeDevice(world, deviceId, epoch) : nullptr;
        if (device) {
            completed(platform::AsyncStatus::Completed, std::move(device));
        } else {
            completed(platform::AsyncStatus::Error, nullptr);
        }
    });
}

void SimWiFiDirect::Apply(const Scenario& scenario) {
    const SimWiFiDirectConfig& config = scenario.wifiDirect;
    Events events;
    {
        auto& world = *world_;
        std::lock_guard<std::mutex> lock(world.mutex);
        for (const auto& phone : world.phones) {
            if (phone.stage == wfd::PhoneRecord::Stage::Joined) {
                world.DisconnectPhone(phone, events);
            }
        }
        world.config = config;
        world.history = SimWiFiDirectHistory{};
        world.epoch++;
        world.phones.clear();
        for (const auto& phone : config.phones) {
            world.phones.push_back(wfd::PhoneRecord{++world.lastId, phone});
        }
        const auto& adapter = config.virtualAdapter;
        world.adapterEnabled = adapter.enabled;
        world.foreignRunning = config.foreignGroupOwner.running && world.AdapterUsable();
        world.foreignSurvivesRestart = config.foreignGroupOwner.survivesRestart;
        world.foreignAwaitsEnable = false;
        world.ipPresent = adapter.ipPresent;
        world.upSince.reset();
        world.repairedSinceUp = false;
        if (!world.AdapterUsable()) {
            world.AbortAll(events);
        }
        world.RefreshUp();
        world.SchedulePhones();
    }
    PostEvents(world_->clock, std::move(events));
    devices_.Remove(kWiFiDirectVirtualAdapterInstanceId);
    if (config.virtualAdapter.present) {
        AddVirtualAdapterNode(config.virtualAdapter);
    }
}

void SimWiFiDirect::AddVirtualAdapterNode(const SimWiFiDirectConfig::VirtualAdapter& adapter) {
    SimDevices::Device node;
    node.instanceId = kWiFiDirectVirtualAdapterInstanceId;
    node.hardwareIds = {kWiFiDirectVirtualAdapterHardwareId};
    node.values = {{L"DriverDesc", L"Microsoft Wi-Fi Direct Virtual Adapter"},
                   {L"FriendlyName", adapter.description}};
    node.enabled = adapter.enabled;
    node.toggleLatencyMs = adapter.restartLatencyMs;
    node.enabledChanged = [weak = std::weak_ptr<wfd::World>(world_)](bool enabled) {
        auto world = weak.lock();
        if (!world) {
            return;
        }
        Events events;
        {
            std::lock_guard<std::mutex> lock(world->mutex);
            if (world->detached) {
                return;
            }
            if (!enabled) {
                world->history.adapterRestarts++;
                world->adapterEnabled = false;
                world->AbortAll(events);
            } else if (!world->adapterEnabled) {
                world->adapterEnabled = true;
                world->foreignRunning = std::exchange(world->foreignAwaitsEnable, false);
                world->RefreshUp();
            }
        }
        PostEvents(world->clock, std::move(events));
    };
    devices_.Add(std::move(node));
}

void SimWiFiDirect::AddPhone(const SimWiFiDirectConfig::Phone& phone) {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->phones.push_back(wfd::PhoneRecord{++world_->lastId, phone});
    world_->SchedulePhones();
}

void SimWiFiDirect::SetMacDelay(std::optional<uint32_t> delayMs) {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->config.virtualAdapter.macDelayMs = delayMs;
}

void SimWiFiDirect::SetForeignGroupOwner(bool running, bool survivesRestart) {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->foreignRunning = running && world_->AdapterUsable();
    world_->foreignSurvivesRestart = survivesRestart;
    world_->foreignAwaitsEnable = running && !world_->AdapterUsable() && survivesRestart;
    world_->RefreshUp();
}

void SimWiFiDirect::Count(SimCensus& census) const {
    auto own = TakeCensus();
    census.wifiDirectObjects += own.publishers + own.listeners + own.devices;
    census.wifiDirectRegistrations += own.registrations;
}

SimWiFiDirectCensus SimWiFiDirect::TakeCensus() const {
    std::lock_guard<std::mutex> lock(world_->mutex);
    SimWiFiDirectCensus census;
    census.publishers = world_->publishers.size();
    census.listeners = world_->listeners.size();
    census.devices = world_->devices.size();
    for (const auto& [id, record] : world_->publishers) {
        census.registrations += record.statusChanged.Size();
    }
    for (const auto& [id, record] : world_->listeners) {
        census.registrations += record.requested.Size();
    }
    for (const auto& [id, record] : world_->devices) {
        census.registrations += record.statusChanged.Size();
    }
    return census;
}

SimWiFiDirectHistory SimWiFiDirect::History() const {
    std::lock_guard<std::mutex> lock(world_->mutex);
    return world_->history;
}

}  // namespace connectkit::sim
