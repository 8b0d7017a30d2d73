#include "platform/sim/bluetooth/SimRadiosWorld.h"

#include "platform/ports/Errors.h"
#include "platform/sim/core/VirtualClock.h"
#include "platform/sim/machine/SimRegistry.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim::radios {
namespace {

using platform::RadioState;

// HRESULT_FROM_WIN32(ERROR_BUSY): the runtime refuses a switch while another
// one is under way. Thrown, not reported through the operation, so that the
// caller's guard around SetStateAsync is what meets it.
constexpr int32_t kBusy = static_cast<int32_t>(0x800700AAu);
// BLUETOOTH_RADIO_INFO's name holds 248 characters with its terminator.
constexpr size_t kMostNameCharacters = 247;

}  // namespace

std::wstring DeviceParameters(const std::wstring& instanceId) {
    return L"SYSTEM\\CurrentControlSet\\Enum\\" + instanceId + L"\\Device Parameters";
}

bool World::Running(int owner, uint64_t ownerEpoch) const {
    if (detached || ownerEpoch != epoch) {
        return false;
    }
    if (owner == kWifiOwner) {
        return wifiPresent;
    }
    return static_cast<size_t>(owner) < controllers.size() && controllers[owner].running;
}

RadioState World::StateOf(int owner, uint64_t ownerEpoch) const {
    if (!Running(owner, ownerEpoch)) {
        return RadioState::Off;
    }
    if (owner == kWifiOwner) {
        return wifiState;
    }
    const auto& controller = controllers[owner];
    return controller.listed ? controller.state : RadioState::Off;
}

const SimRadioBehaviour& World::Behaviour(int owner) const {
    static const SimRadioBehaviour usual;
    if (owner == kWifiOwner) {
        return config.wifi.behaviour;
    }
    return static_cast<size_t>(owner) < controllers.size() ? controllers[owner].config.behaviour
                                                           : usual;
}

void World::StateChanged(int owner, Events& events) {
    if (owner != kWifiOwner && !extension.expired()) {
        events.push_back([extension = extension] {
            if (auto extended = extension.lock()) {
                extended->BluetoothChanged();
            }
        });
    }
    int deliveries = Behaviour(owner).stateChangedTwice ? 2 : 1;
    for (const auto& [id, record] : radios) {
        if (record.owner != owner || record.epoch != epoch || !record.stateChanged.Size()) {
            continue;
        }
        for (int i = 0; i < deliveries; ++i) {
            events.push_back(Delivery(*this, &World::radios, &RadioRecord::stateChanged, id,
                                      [object = record.object](const auto& handler) {
                                          if (auto sender = object.lock()) {
                                              handler(*sender);
                                          }
                                      }));
        }
    }
}

void World::ChangeState(int owner, RadioState state, Events& events) {
    if (owner == kWifiOwner) {
        if (!wifiPresent || wifiState == state) {
            return;
        }
        wifiState = state;
    } else {
        auto& controller = controllers[owner];
        if (!controller.running || (controller.listed && controller.state == state)) {
            return;
        }
        controller.listed = true;
        controller.state = state;
        registry.Put(platform::RegistryHive::LocalMachine,
                     DeviceParameters(controller.config.instanceId), L"RadioState",
                     platform::RegistryData::FromDword(state == RadioState::On ? 2 : 4));
    }
    StateChanged(owner, events);
}

platform::RadioList World::List() {
    platform::RadioList list;
    auto add = [&](int owner) {
        uint64_t id = ++lastId;
        auto object = MakeRadio(shared_from_this(), id);
        radios[id] = RadioRecord{object, owner, epoch, {}};
        list.push_back(std::move(object));
    };
    if (wifiPresent) {
        add(kWifiOwner);
    }
    for (size_t i = 0; i < controllers.size(); ++i) {
        if (controllers[i].running && controllers[i].listed) {
            add(static_cast<int>(i));
        }
    }
    list.resize(list.size() + config.listing.nullEntries);
    return list;
}

void World::RequestState(int owner, uint64_t ownerEpoch, RadioState state) {
    std::lock_guard<std::mutex> lock(mutex);
    ++history.setStateCalls;
    const SimRadioBehaviour& behaviour = Behaviour(owner);
    using Access = SimRadioBehaviour::Access;
    if (behaviour.access == Access::Busy) {
        throw platform::PlatformError(kBusy, "Radio.SetStateAsync: busy");
    }
    bool switchable = state == RadioState::On || state == RadioState::Off;
    if (behaviour.access != Access::Allowed || !switchable || !Running(owner, ownerEpoch) ||
        StateOf(owner, ownerEpoch) == RadioState::Disabled) {
        return;
    }
    clock.Post(behaviour.latencyMs, [weak = weak_from_this(), owner, ownerEpoch, state] {
        auto world = weak.lock();
        if (!world) {
            return;
        }
        Events events;
        {
            std::lock_guard<std::mutex> lock(world->mutex);
            if (world->Running(owner, ownerEpoch)) {
                world->ChangeState(owner, state, events);
            }
        }
        Run(events);
    });
}

void World::ControllerToggled(size_t index, uint64_t worldEpoch, bool enabled) {
    Events events;
    {
        std::lock_guard<std::mutex> lock(mutex);
        if (detached || worldEpoch != epoch || index >= controllers.size()) {
            return;
        }
        auto& controller = controllers[index];
        controller.enabled = enabled;
        uint64_t op = ++controller.startOp;
        if (enabled) {
            clock.Post(controller.config.restartLatencyMs,
                       [weak = weak_from_this(), index, worldEpoch, op] {
                           if (auto world = weak.lock()) {
                               world->StartController(index, worldEpoch, op);
                           }
                       });
        } else if (controller.running) {
            bool wasOff = StateOf(static_cast<int>(index), epoch) == RadioState::Off;
            controller.running = false;
            if (!wasOff) {
                StateChanged(static_cast<int>(index), events);
            }
        }
    }
    PostEvents(clock, std::move(events));
}

void World::StartController(size_t index, uint64_t worldEpoch, uint64_t op) {
    Events events;
    {
        std::lock_guard<std::mutex> lock(mutex);
        if (detached || worldEpoch != epoch || index >= controllers.size()) {
            return;
        }
        auto& controller = controllers[index];
        if (controller.startOp != op || !controller.enabled || !controller.present ||
            controller.config.problemCode != 0 || controller.running) {
            return;
        }
        ++history.controllerStarts;
        controller.running = true;
        // The driver reads its settings as it starts.
        std::wstring key = DeviceParameters(controller.config.instanceId);
        platform::RegistryData value;
        uint32_t radioState = 0;
        bool on = registry.Peek(platform::RegistryHive::LocalMachine, key, L"RadioState", value) ==
                      platform::kErrorSuccess &&
                  value.type == platform::RegistryType::Dword && value.ToDword(radioState) &&
                  radioState == 2;
        controller.listed = on;
        controller.state = on ? RadioState::On : RadioState::Off;
        ReloadName(controller);
        if (on) {
            StateChanged(static_cast<int>(index), events);
        }
    }
    Run(events);
}

void World::ReloadName(ControllerRecord& controller) {
    platform::RegistryData value;
    if (registry.Peek(platform::RegistryHive::LocalMachine,
                      DeviceParameters(controller.config.instanceId), L"Local Name",
                      value) != platform::kErrorSuccess ||
        value.type != platform::RegistryType::Binary) {
        return;
    }
    std::string utf8(value.bytes.begin(), value.bytes.end());
    utf8 = utf8.substr(0, utf8.find('\0'));
    controller.name = DE::UTF8ToUnicode(utf8).substr(0, kMostNameCharacters);
}

}  // namespace connectkit::sim::radios
