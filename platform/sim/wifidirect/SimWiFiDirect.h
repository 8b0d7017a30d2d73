#pragma once
// The simulated PC's Wi-Fi Direct: the runtime classes behind the Wi-Fi
// Direct port, the Wi-Fi Direct virtual adapter they run on, a group owner
// that someone else started, and phones that join and leave.
//
// One model, seen through three ports:
// - the Wi-Fi Direct port (publisher, listener, devices);
// - the network adapters port: the virtual adapter is listed with kind
//   WiFiDirectVirtual (not at all while missing or disabled), `up` while a
//   group owner (ours or the foreign one) runs on it, its MAC all zero until
//   `macDelayMs` after it came up, and its IPv4 address when `ipPresent`;
// - the device setup port: the virtual adapter's device node
//   (kWiFiDirectVirtualAdapterInstanceId, hardware id
//   kWiFiDirectVirtualAdapterHardwareId). Disabling or enabling it takes
//   `restartLatencyMs`; once disabled, every group owner on it has stopped
//   (our publisher is Aborted with RadioNotAvailable, phones drop, the
//   foreign group owner ends). Enabling brings the adapter back down but
//   ready, except that a foreign group owner with `survivesRestart` runs
//   again. Each disable counts as one adapter restart in History().
//
// Publisher state machine, per Start(): after `startLatencyMs` of virtual
// time the next entry of `startOutcomes` happens (the list is consumed; once
// empty every start succeeds); a disabled or missing virtual adapter makes
// every start Aborted with RadioNotAvailable:
//   Started  status Started, StatusChanged raised;
//   Aborted  status Aborted with `abortError`, StatusChanged raised;
//   Silent   nothing at all: the status stays Created and no event comes.
// Stop() after `stopLatencyMs`: status Stopped and StatusChanged, unless
// `stopOutcome` is Stuck: then the status stays Started and no event comes.
//
// Phones: each joins `joinAfterMs` after our publisher reported Started (a
// phone joins only the first group owner it sees, and joins once: a group
// owner that ends before the phone arrived leaves it waiting for the next),
// raises ConnectionRequested on every listener registered at that moment;
// FromIdAsync for its id completes after `fromIdLatencyMs` with a Connected
// device whose endpoint pair has the phone's `address` as remote host and the
// adapter's `ip` as local host (or Error when `fromIdFails`, or when no phone
// of that id is connected). It leaves `leaveAfterMs` after joining (never
// when absent): the device turns Disconnected and ConnectionStatusChanged is
// raised unless `missDisconnectEvent`. Stopping the publisher, releasing its
// last reference, or a restart of the adapter disconnects every phone of its
// group; a phone that left never comes back.
//
// Events run on the clock's dispatcher threads, never on the caller's, and
// never with the model's lock held. Objects keep the model alive, the model
// knows them only weakly; a closed device throws RO_E_CLOSED from its calls
// except RemoveConnectionStatusChanged.
//
// Without `runtimeAvailable` the factories answer null and FromIdAsync throws
// REGDB_E_CLASSNOTREG, as on a system without the runtime classes.
//
// Fault points: "wifidirect.activate" makes the factories answer null;
// "wifidirect.start", "wifidirect.stop" and "wifidirect.fromId" make the call
// throw PlatformError, except that a failing (not throwing) FromIdAsync
// completes with Error.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/ports/WiFiDirect.h"
#include "platform/sim/core/SimModel.h"
#include "platform/sim/machine/SimNetworkAdapters.h"

namespace connectkit::sim {

class FaultInjector;
class SimDevices;
class SimProcesses;
class VirtualClock;
namespace wfd {
struct World;
}

inline constexpr wchar_t kWiFiDirectVirtualAdapterHardwareId[] =
    L"{5d624f94-8850-40c3-a3fa-a4fd2080baf3}\\vwifimp_wfd";
inline constexpr wchar_t kWiFiDirectVirtualAdapterInstanceId[] =
    L"{5D624F94-8850-40C3-A3FA-A4FD2080BAF3}\\VWIFIMP_WFD\\5&2C1E6D29&0&11";

struct SimWiFiDirectConfig {
    // Whether the runtime classes can be activated at all.
    bool runtimeAvailable = true;

    struct Publisher {
        enum class Outcome { Started, Aborted, Silent };
        enum class StopOutcome { Stopped, Stuck };
        uint32_t startLatencyMs = 800;
        uint32_t stopLatencyMs = 200;
        // How much later than the status changes a start's StatusChanged
        // reaches the handlers, as from a busy thread pool.
        uint32_t startEventDelayMs = 0;
        std::vector<Outcome> startOutcomes;
        platform::WiFiDirectError abortError = platform::WiFiDirectError::RadioNotAvailable;
        StopOutcome stopOutcome = StopOutcome::Stopped;
    } publisher;

    struct VirtualAdapter {
        bool present = true;
        bool enabled = true;
        uint32_t index = 21;
        std::wstring description = L"Microsoft Wi-Fi Direct Virtual Adapter #2";
        std::array<uint8_t, 6> mac{0x3a, 0x7c, 0x76, 0x12, 0x9e, 0x51};
        // Virtual ms after the adapter comes up until its MAC shows; empty
        // means never.
        std::optional<uint32_t> macDelayMs = 300;
        // A successful "netsh interface ipv4 set address" on the adapter makes
        // a MAC that never showed appear.
        bool macAfterRepair = false;
        std::string ip = "192.168.137.1";
        bool ipPresent = true;
        // Virtual ms that disabling or enabling the device takes.
        uint32_t restartLatencyMs = 1500;
    } virtualAdapter;

    struct ForeignGroupOwner {
        bool running = false;
        // Whether it comes back by itself after the adapter restarts.
        bool survivesRestart = false;
    } foreignGroupOwner;

    struct Phone {
        std::wstring id = L"WiFiDirect#phone";
        std::string address = "192.168.137.23";
        uint32_t joinAfterMs = 1000;
        std::optional<uint32_t> leaveAfterMs;
        uint32_t fromIdLatencyMs = 200;
        bool fromIdFails = false;
        bool missDisconnectEvent = false;
    };
    std::vector<Phone> phones;
};

// What is still alive in the model: a leak check compares these.
struct SimWiFiDirectCensus {
    size_t publishers = 0;
    size_t listeners = 0;
    size_t devices = 0;
    // Handlers still registered on any object.
    size_t registrations = 0;
};

// Publisher history, for tests: one entry per Start()/Stop() call.
struct SimWiFiDirectHistory {
    uint32_t starts = 0;
    uint32_t stops = 0;
    uint32_t adapterRestarts = 0;
    std::wstring lastSsid;
    std::wstring lastPassphrase;
    bool lastAutonomousGroupOwner = false;
    bool lastLegacyEnabled = false;
};

// Answers "netsh interface ipv4 ..." with exit 0 after 300 ms. "set address
// name=<index> ..." on the virtual adapter, with `macAfterRepair`, makes the
// address present and, while the adapter is up, its MAC show.
class SimWiFiDirect final : public platform::WiFiDirect, public SimModel {
public:
    SimWiFiDirect(VirtualClock& clock, FaultInjector& faults, SimNetworkAdapters& adapters,
                  SimDevices& devices, SimProcesses& processes);
    ~SimWiFiDirect() override;

    std::shared_ptr<platform::WiFiDirectPublisher> NewPublisher() override;
    std::shared_ptr<platform::WiFiDirectConnectionListener> NewConnectionListener() override;
    std::shared_ptr<platform::PasswordCredential> NewPasswordCredential() override;
    void DeviceFromIdAsync(const std::wstring& deviceId, DeviceCompletion completed) override;

    // Replaces the configuration with the scenario's "wifiDirect"; objects
    // handed out earlier keep working against the new world (phones of the
    // earlier world drop). Puts the virtual adapter into the device list.
    void Apply(const Scenario& scenario) override;
    void Count(SimCensus& census) const override;

    // C++ control for tests, all thread-safe. A phone added while our group
    // owner runs joins `joinAfterMs` from now.
    void AddPhone(const SimWiFiDirectConfig::Phone& phone);
    void SetMacDelay(std::optional<uint32_t> delayMs);
    void SetForeignGroupOwner(bool running, bool survivesRestart);

    SimWiFiDirectCensus TakeCensus() const;
    SimWiFiDirectHistory History() const;

private:
    void AddVirtualAdapterNode(const SimWiFiDirectConfig::VirtualAdapter& adapter);

    SimDevices& devices_;
    std::shared_ptr<wfd::World> world_;
    SimNetworkAdapters::Share adapters_;
};

}  // namespace connectkit::sim
