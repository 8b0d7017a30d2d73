#pragma once
// The state behind SimWiFiDirect, shared by the model and the objects it hands
// out. One mutex guards all of it; handlers are never called with it held.
//
// Lifetime rules that keep the census honest and the mutex deadlock-free:
// - Objects hold the world strongly; the world knows objects only by id (and
//   weakly, to name the sender of an event). An object's record lives exactly
//   as long as the object.
// - An object's destructor takes the mutex, so a strong reference to an object
//   (or a handler, which may capture one) is never dropped while the mutex is
//   held: records and handlers are moved out and die after unlocking.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/ports/NetworkAdapters.h"
#include "platform/sim/core/EventDelivery.h"
#include "platform/sim/wifidirect/SimWiFiDirect.h"

namespace connectkit::sim::wfd {

struct PublisherRecord {
    std::weak_ptr<platform::WiFiDirectPublisher> object;
    platform::PublisherStatus status = platform::PublisherStatus::Created;
    // The Start() or Stop() whose outcome is still due; a later call or an
    // abort supersedes it.
    uint64_t pendingOp = 0;
    // Non-zero while this publisher runs a group owner.
    uint64_t session = 0;
    bool autonomousGroupOwner = false;
    bool legacyEnabled = false;
    std::wstring ssid;
    std::shared_ptr<platform::PasswordCredential> passphrase;
    HandlerTable<platform::WiFiDirectPublisher::StatusHandler> statusChanged;
};

struct ListenerRecord {
    HandlerTable<platform::WiFiDirectConnectionListener::RequestHandler> requested;
};

struct DeviceRecord {
    std::weak_ptr<platform::WiFiDirectDevice> object;
    std::wstring deviceId;
    uint64_t phone = 0;
    platform::EndpointPair endpoints;
    bool connected = true;
    bool closed = false;
    HandlerTable<platform::WiFiDirectDevice::StatusHandler> statusChanged;
};

struct PhoneRecord {
    enum class Stage { Waiting, Scheduled, Joined, Gone };
    uint64_t serial = 0;
    SimWiFiDirectConfig::Phone config;
    Stage stage = Stage::Waiting;
    uint64_t session = 0;
};

struct World : std::enable_shared_from_this<World> {
    World(VirtualClock& clock, FaultInjector& faults) : clock(clock), faults(faults) {}

    VirtualClock& clock;
    FaultInjector& faults;

    // Everything below needs `mutex` held.
    mutable std::mutex mutex;
    // Set once the model is gone; objects that outlive it fall silent.
    bool detached = false;
    SimWiFiDirectConfig config;
    SimWiFiDirectHistory history;
    // Bumped by Apply: timers of an earlier world find nothing to do.
    uint64_t epoch = 0;
    platform::EventToken lastToken = 0;
    uint64_t lastId = 0;
    uint64_t lastSession = 0;
    std::map<uint64_t, PublisherRecord> publishers;
    std::map<uint64_t, ListenerRecord> listeners;
    std::map<uint64_t, DeviceRecord> devices;
    std::vector<PhoneRecord> phones;

    bool adapterEnabled = true;
    bool foreignRunning = false;
    bool foreignSurvivesRestart = false;
    // A surviving foreign group owner that the last disable stopped.
    bool foreignAwaitsEnable = false;
    std::optional<uint64_t> upSince;
    bool repairedSinceUp = false;
    bool ipPresent = true;

    bool AdapterUsable() const;
    // Notes the adapter coming up or going down; call after any change.
    void RefreshUp();
    bool MacVisible() const;
    void AppendAdapter(std::vector<platform::NetworkAdapterInfo>& adapters);

    void SetStatus(uint64_t id, PublisherRecord& record, platform::PublisherStatusChange change,
                   Events& events);
    // Ends every group owner on the adapter, as a driver restart does.
    void AbortAll(Events& events);
    void EndSession(uint64_t session, Events& events);
    uint64_t RunningSession() const;
    void SchedulePhones();
    void DisconnectPhone(const PhoneRecord& phone, Events& events);
    PhoneRecord* FindPhone(uint64_t serial);
    void JoinPhone(uint64_t serial, uint64_t session, uint64_t worldEpoch);
    void LeavePhone(uint64_t serial, uint64_t session, uint64_t worldEpoch);

    // Publisher operations, called by the objects without the mutex.
    void StartPublisher(uint64_t id);
    void StopPublisher(uint64_t id);
    void ReleasePublisher(uint64_t id);
    void CompleteStart(uint64_t id, uint64_t op, SimWiFiDirectConfig::Publisher::Outcome outcome);
    void CompleteStop(uint64_t id, uint64_t op,
                      SimWiFiDirectConfig::Publisher::StopOutcome outcome);
    // Under the mutex: the publisher whose operation completes, if still due.
    PublisherRecord* TakePending(uint64_t id, uint64_t op);

    // Event deliveries to the handlers registered when the event happened.
    std::function<void()> DeviceEvent(uint64_t id);
    std::function<void()> ListenerEvent(uint64_t id, std::wstring deviceId);
};

std::shared_ptr<platform::WiFiDirectPublisher> MakePublisher(const std::shared_ptr<World>& world);
std::shared_ptr<platform::WiFiDirectConnectionListener> MakeListener(
    const std::shared_ptr<World>& world);
// Registers a device of the joined phone `phone`; null when it is no longer
// connected.
std::shared_ptr<platform::WiFiDirectDevice> MakeDevice(const std::shared_ptr<World>& world,
                                                       const std::wstring& deviceId,
                                                       uint64_t epoch);
std::shared_ptr<platform::WiFiDirectConnectionRequest> MakeRequest(std::wstring deviceId);
std::shared_ptr<platform::PasswordCredential> MakeCredential();

}  // namespace connectkit::sim::wfd
