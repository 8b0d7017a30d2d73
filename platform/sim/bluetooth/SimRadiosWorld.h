#pragma once
// The state behind SimBluetooth, shared by the model and the objects it hands
// out. One mutex guards all of it; handlers and completions are never called
// with it held, and a handler (which may capture an object whose destructor
// takes the mutex) is only let go once it is released.

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/sim/bluetooth/SimBluetooth.h"
#include "platform/sim/core/EventDelivery.h"

namespace connectkit::sim::radios {

// Which radio an object stands for: the Wi-Fi radio, or a controller's.
inline constexpr int kWifiOwner = -1;

struct ControllerRecord {
    SimBluetoothConfig::Controller config;
    bool present = true;
    bool enabled = true;
    bool running = false;
    // Listed with `state`, or switched off hard and not listed.
    bool listed = true;
    platform::RadioState state = platform::RadioState::On;
    std::wstring name;
    // The start still due; a later disable or enable supersedes it.
    uint64_t startOp = 0;
};

struct RadioRecord {
    std::weak_ptr<platform::Radio> object;
    int owner = kWifiOwner;
    uint64_t epoch = 0;
    HandlerTable<platform::Radio::StateHandler> stateChanged;
};

struct World : std::enable_shared_from_this<World> {
    World(VirtualClock& clock, FaultInjector& faults, SimRegistry& registry)
        : clock(clock), faults(faults), registry(registry) {}

    VirtualClock& clock;
    FaultInjector& faults;
    SimRegistry& registry;

    // Everything below needs `mutex` held.
    mutable std::mutex mutex;
    bool detached = false;
    // Bumped by Apply: objects and timers of an earlier world fall silent.
    uint64_t epoch = 0;
    SimBluetoothConfig config;
    std::vector<ControllerRecord> controllers;
    bool wifiPresent = false;
    platform::RadioState wifiState = platform::RadioState::On;
    std::deque<platform::AsyncStatus> outcomes;
    SimRadiosHistory history;
    platform::EventToken lastToken = 0;
    uint64_t lastId = 0;
    std::map<uint64_t, RadioRecord> radios;
    std::weak_ptr<SimControllerExtension> extension;

    bool Running(int owner, uint64_t ownerEpoch) const;
    // The state an object of `owner` reports.
    platform::RadioState StateOf(int owner, uint64_t ownerEpoch) const;
    const SimRadioBehaviour& Behaviour(int owner) const;
    // Deliveries of StateChanged to every object of `owner`.
    void StateChanged(int owner, Events& events);
    // Changes a radio's state; the events when it really changed.
    void ChangeState(int owner, platform::RadioState state, Events& events);
    // Takes the controller's name from its "Local Name", as its driver does.
    void ReloadName(ControllerRecord& controller);
    // Objects for the radios listed now.
    platform::RadioList List();

    // Called without the mutex.
    void RequestState(int owner, uint64_t ownerEpoch, platform::RadioState state);
    void ControllerToggled(size_t index, uint64_t worldEpoch, bool enabled);
    void StartController(size_t index, uint64_t worldEpoch, uint64_t op);
};

std::shared_ptr<platform::Radio> MakeRadio(const std::shared_ptr<World>& world, uint64_t id);
// An open handle on the Win32 radio of controller `index`.
std::unique_ptr<platform::BluetoothRadio> MakeClassicRadio(const std::shared_ptr<World>& world,
                                                           size_t index);
std::unique_ptr<platform::BluetoothRadioSearch> MakeRadioSearch(const std::shared_ptr<World>& world,
                                                                std::vector<size_t> remaining);
// HKLM's key of a controller's device parameters.
std::wstring DeviceParameters(const std::wstring& instanceId);

}  // namespace connectkit::sim::radios
