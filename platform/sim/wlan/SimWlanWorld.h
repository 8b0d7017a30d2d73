#pragma once
// The WLAN model's shared state: the port's calls, the timed events of the
// air and the DHCP server all work on one World under its lock. Timed events
// hold it weakly, and a stale one sees another `generation` and does nothing.
// A delivery under way may still hold the World when the model goes, after
// which the adapter list may go too: the model's share of it stays with the
// model, and a World without it touches the list no more.

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "platform/sim/wlan/SimWlan.h"

namespace connectkit::sim::wlan {

struct Registration {
    uint32_t sources = platform::kWlanSourceNone;
    platform::WlanNotificationCallback callback = nullptr;
    void* context = nullptr;
};

struct Connection {
    size_t network = 0;
    std::wstring profileName;
    // The SSID asked for: a network not in range has none of its own.
    platform::Dot11Ssid ssid;
    platform::WlanInterfaceState state = platform::WlanInterfaceState::Associating;
    platform::MacAddress bssid{};
    uint32_t channel = 0;
    int32_t rssi = 0;
    bool secured = false;
    // Lease exchanges finished during this connection.
    uint32_t exchanges = 0;
};

struct Note {
    uint32_t source = 0;
    uint32_t code = 0;
    std::vector<uint8_t> data;
};

using Lock = std::unique_lock<std::mutex>;

struct World : std::enable_shared_from_this<World> {
    World(VirtualClock& clock, FaultInjector& faults, SimNetworkAdapters& adapters,
          SimNetworkAdapters::Share& share)
        : clock(clock), faults(faults), adapters(adapters), share(&share) {}

    VirtualClock& clock;
    FaultInjector& faults;
    SimNetworkAdapters& adapters;
    // Null once the model is gone.
    SimNetworkAdapters::Share* share;

    std::mutex mutex;
    SimWlanConfig config;
    // Bumped by every change that makes timed events of the air stale: a new
    // world, a connection attempt, a disconnection.
    uint64_t generation = 0;
    std::optional<Connection> connection;
    std::vector<bool> gone;
    std::string address;
    bool leasePending = false;
    // Whether the model lists the Wi-Fi adapter itself (no card), and whether
    // it may (the scenario describes the interface).
    bool ownsAdapter = false;
    bool mayOwnAdapter = false;
    std::wstring adapterDescription;

    uint64_t lastHandle = 0;
    std::map<uint64_t, Registration> handles;
    std::deque<Note> queue;
    bool delivering = false;
    std::thread::id deliverer;
    uint64_t deliveringHandle = 0;

    SimWlanHistory history;
};

// Runs `step` with the lock `delayMs` from now, unless the world changed.
void After(World& world, uint32_t delayMs, uint64_t generation,
           std::function<void(World&, Lock&)> step);
// Queues a notification, with the lock held; a dispatcher thread delivers
// the queue, so a step of the air never lets go of the lock half-way.
void Emit(World& world, Lock& lock, uint32_t source, uint32_t code, std::vector<uint8_t> data = {});
// Delivers the queued notifications unless another thread is at it.
void Deliver(World& world);

// The air: association, roaming, disconnection, the network leaving.
void StartAssociation(World& world, Lock& lock, std::optional<size_t> network,
                      const std::wstring& profileName, const std::string& ssid,
                      const std::string& key, bool secured);
void Disassociate(World& world, Lock& lock, bool requested);
void ScheduleAutoConnects(World& world, Lock& lock);
platform::Dot11Ssid SsidOf(const std::string& text);

// The DHCP server and the adapter's address.
void StartLease(World& world, Lock& lock);
void SetAddress(World& world, const std::string& address);
void PublishAdapter(World& world);
uint32_t RenewAndWait(World& world);
// "ipconfig /release|/renew [NAME]": the exit code.
uint32_t RunIpconfig(World& world, const std::wstring& commandLine);

}  // namespace connectkit::sim::wlan
