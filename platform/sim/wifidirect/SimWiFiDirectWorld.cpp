#include "platform/sim/wifidirect/SimWiFiDirectWorld.h"

#include <algorithm>

#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/VirtualClock.h"

namespace connectkit::sim::wfd {
namespace {

using platform::PublisherStatus;
using platform::PublisherStatusChange;
using platform::WiFiDirectError;
using Outcome = SimWiFiDirectConfig::Publisher::Outcome;
using StopOutcome = SimWiFiDirectConfig::Publisher::StopOutcome;

int32_t HresultFromWin32(uint32_t error) {
    return static_cast<int32_t>(0x80070000u | (error & 0xFFFFu));
}

}  // namespace

bool World::AdapterUsable() const {
    return config.virtualAdapter.present && adapterEnabled;
}

void World::RefreshUp() {
    bool ours = std::any_of(publishers.begin(), publishers.end(), [](const auto& entry) {
        return entry.second.status == PublisherStatus::Started;
    });
    bool up = AdapterUsable() && (ours || foreignRunning);
    if (up && !upSince) {
        upSince = clock.TickCount64();
    } else if (!up && upSince) {
        upSince.reset();
        repairedSinceUp = false;
    }
}

bool World::MacVisible() const {
    if (!upSince) {
        return false;
    }
    const auto& delay = config.virtualAdapter.macDelayMs;
    return repairedSinceUp || (delay && clock.TickCount64() - *upSince >= *delay);
}

void World::AppendAdapter(std::vector<platform::NetworkAdapterInfo>& adapters) {
    // IP Helper does not list a disabled adapter at all.
    if (detached || !AdapterUsable()) {
        return;
    }
    RefreshUp();
    const auto& virtualAdapter = config.virtualAdapter;
    platform::NetworkAdapterInfo info;
    info.kind = platform::NetworkAdapterInfo::Kind::WiFiDirectVirtual;
    info.index = virtualAdapter.index;
    info.description = virtualAdapter.description;
    if (MacVisible()) {
        info.mac = virtualAdapter.mac;
    }
    if (ipPresent) {
        info.ipv4.push_back(virtualAdapter.ip);
    }
    info.up = upSince.has_value();
    adapters.push_back(std::move(info));
}

void World::SetStatus(uint64_t id, PublisherRecord& record, PublisherStatusChange change,
                      Events& events) {
    if (record.session) {
        uint64_t ended = std::exchange(record.session, 0);
        EndSession(ended, events);
    }
    record.status = change.status;
    if (change.status == PublisherStatus::Started) {
        record.session = ++lastSession;
        SchedulePhones();
    }
    if (record.statusChanged.Size()) {
        std::weak_ptr<platform::WiFiDirectPublisher> object = record.object;
        events.push_back(Delivery(*this, &World::publishers, &PublisherRecord::statusChanged, id,
                                  [object, change](const auto& handler) {
                                      if (auto sender = object.lock()) {
                                          handler(*sender, change);
                                      }
                                  }));
    }
}

void World::AbortAll(Events& events) {
    for (auto& [id, record] : publishers) {
        if (record.status == PublisherStatus::Started) {
            record.pendingOp = 0;
            SetStatus(id, record, {PublisherStatus::Aborted, WiFiDirectError::RadioNotAvailable},
                      events);
        }
    }
    if (foreignRunning) {
        foreignRunning = false;
        foreignAwaitsEnable = foreignSurvivesRestart;
    }
    RefreshUp();
}

uint64_t World::RunningSession() const {
    for (const auto& [id, record] : publishers) {
        if (record.status == PublisherStatus::Started && record.session) {
            return record.session;
        }
    }
    return 0;
}

void World::EndSession(uint64_t session, Events& events) {
    for (auto& phone : phones) {
        if (phone.session != session) {
            continue;
        }
        if (phone.stage == PhoneRecord::Stage::Scheduled) {
            phone.stage = PhoneRecord::Stage::Waiting;
            phone.session = 0;
        } else if (phone.stage == PhoneRecord::Stage::Joined) {
            phone.stage = PhoneRecord::Stage::Gone;
            DisconnectPhone(phone, events);
        }
    }
    SchedulePhones();
}

void World::SchedulePhones() {
    uint64_t session = RunningSession();
    if (!session) {
        return;
    }
    for (auto& phone : phones) {
        if (phone.stage != PhoneRecord::Stage::Waiting) {
            continue;
        }
        phone.stage = PhoneRecord::Stage::Scheduled;
        phone.session = session;
        clock.Post(phone.config.joinAfterMs,
                   [weak = weak_from_this(), serial = phone.serial, session, worldEpoch = epoch] {
                       if (auto world = weak.lock()) {
                           world->JoinPhone(serial, session, worldEpoch);
                       }
                   });
    }
}

PhoneRecord* World::FindPhone(uint64_t serial) {
    for (auto& phone : phones) {
        if (phone.serial == serial) {
            return &phone;
        }
    }
    return nullptr;
}

void World::DisconnectPhone(const PhoneRecord& phone, Events& events) {
    for (auto& [id, device] : devices) {
        if (device.phone != phone.serial || !device.connected) {
            continue;
        }
        device.connected = false;
        if (!phone.config.missDisconnectEvent && device.statusChanged.Size()) {
            events.push_back(DeviceEvent(id));
        }
    }
}

void World::JoinPhone(uint64_t serial, uint64_t session, uint64_t worldEpoch) {
    Events events;
    {
        std::lock_guard<std::mutex> lock(mutex);
        PhoneRecord* phone = FindPhone(serial);
        if (detached || epoch != worldEpoch || !phone ||
            phone->stage != PhoneRecord::Stage::Scheduled || phone->session != session) {
            return;
        }
        phone->stage = PhoneRecord::Stage::Joined;
        for (auto& [id, listener] : listeners) {
            if (listener.requested.Size()) {
                events.push_back(ListenerEvent(id, phone->config.id));
            }
        }
        if (phone->config.leaveAfterMs) {
            clock.Post(*phone->config.leaveAfterMs,
                       [weak = weak_from_this(), serial, session, worldEpoch] {
                           if (auto world = weak.lock()) {
                               world->LeavePhone(serial, session, worldEpoch);
                           }
                       });
        }
    }
    Run(events);
}

void World::LeavePhone(uint64_t serial, uint64_t session, uint64_t worldEpoch) {
    Events events;
    {
        std::lock_guard<std::mutex> lock(mutex);
        PhoneRecord* phone = FindPhone(serial);
        if (detached || epoch != worldEpoch || !phone ||
            phone->stage != PhoneRecord::Stage::Joined || phone->session != session) {
            return;
        }
        phone->stage = PhoneRecord::Stage::Gone;
        DisconnectPhone(*phone, events);
    }
    Run(events);
}

void World::StartPublisher(uint64_t id) {
    if (auto error = FaultedCall(faults, clock, "wifidirect.start", platform::kErrorNotSupported)) {
        throw platform::PlatformError(HresultFromWin32(*error), "publisher start failed");
    }
    std::shared_ptr<platform::PasswordCredential> passphrase;
    {
        std::lock_guard<std::mutex> lock(mutex);
        passphrase = publishers.at(id).passphrase;
    }
    // The credential is the caller's object: read it without the mutex.
    std::wstring password = passphrase ? passphrase->Password() : L"";
    std::lock_guard<std::mutex> lock(mutex);
    if (detached) {
        return;
    }
    auto& record = publishers.at(id);
    history.starts++;
    history.lastSsid = record.ssid;
    history.lastPassphrase = password;
    history.lastAutonomousGroupOwner = record.autonomousGroupOwner;
    history.lastLegacyEnabled = record.legacyEnabled;
    auto& outcomes = config.publisher.startOutcomes;
    Outcome outcome = Outcome::Started;
    if (!outcomes.empty()) {
        outcome = outcomes.front();
        outcomes.erase(outcomes.begin());
    }
    uint64_t op = ++lastId;
    record.pendingOp = op;
    clock.Post(config.publisher.startLatencyMs, [weak = weak_from_this(), id, op, outcome] {
        if (auto world = weak.lock()) {
            world->CompleteStart(id, op, outcome);
        }
    });
}

// Under the lock: the publisher whose operation `op` completes now, with the
// operation cleared; null when it was overtaken (a newer operation, the
// publisher gone, the world detached).
PublisherRecord* World::TakePending(uint64_t id, uint64_t op) {
    auto found = publishers.find(id);
    if (detached || found == publishers.end() || found->second.pendingOp != op) {
        return nullptr;
    }
    found->second.pendingOp = 0;
    return &found->second;
}

void World::CompleteStart(uint64_t id, uint64_t op, Outcome outcome) {
    Events events;
    uint32_t delay = 0;
    {
        std::lock_guard<std::mutex> lock(mutex);
        delay = config.publisher.startEventDelayMs;
        auto* pending = TakePending(id, op);
        if (!pending) {
            return;
        }
        auto& record = *pending;
        if (!AdapterUsable()) {
            SetStatus(id, record, {PublisherStatus::Aborted, WiFiDirectError::RadioNotAvailable},
                      events);
        } else if (outcome == Outcome::Started) {
            SetStatus(id, record, {PublisherStatus::Started, WiFiDirectError::Success}, events);
        } else if (outcome == Outcome::Aborted) {
            SetStatus(id, record, {PublisherStatus::Aborted, config.publisher.abortError}, events);
        }
        RefreshUp();
    }
    if (delay > 0) {
        clock.Post(delay, [events = std::move(events)] { Run(events); });
        return;
    }
    Run(events);
}

void World::StopPublisher(uint64_t id) {
    if (auto error = FaultedCall(faults, clock, "wifidirect.stop", platform::kErrorNotSupported)) {
        throw platform::PlatformError(HresultFromWin32(*error), "publisher stop failed");
    }
    std::lock_guard<std::mutex> lock(mutex);
    if (detached) {
        return;
    }
    history.stops++;
    uint64_t op = ++lastId;
    publishers.at(id).pendingOp = op;
    clock.Post(config.publisher.stopLatencyMs,
               [weak = weak_from_this(), id, op, outcome = config.publisher.stopOutcome] {
                   if (auto world = weak.lock()) {
                       world->CompleteStop(id, op, outcome);
                   }
               });
}

void World::CompleteStop(uint64_t id, uint64_t op, StopOutcome outcome) {
    Events events;
    {
        std::lock_guard<std::mutex> lock(mutex);
        auto* pending = TakePending(id, op);
        if (!pending) {
            return;
        }
        auto& record = *pending;
        if (outcome == StopOutcome::Stuck || record.status == PublisherStatus::Stopped ||
            record.status == PublisherStatus::Aborted) {
            return;
        }
        SetStatus(id, record, {PublisherStatus::Stopped, WiFiDirectError::Success}, events);
        RefreshUp();
    }
    Run(events);
}

void World::ReleasePublisher(uint64_t id) {
    PublisherRecord released;
    Events events;
    {
        std::lock_guard<std::mutex> lock(mutex);
        auto found = publishers.find(id);
        if (found == publishers.end()) {
            return;
        }
        released = std::move(found->second);
        publishers.erase(found);
        if (detached) {
            return;
        }
        // Letting go of the last reference ends its group owner.
        if (released.session) {
            EndSession(released.session, events);
        }
        RefreshUp();
    }
    PostEvents(clock, std::move(events));
}

std::function<void()> World::DeviceEvent(uint64_t id) {
    std::weak_ptr<platform::WiFiDirectDevice> object = devices.at(id).object;
    return Delivery(*this, &World::devices, &DeviceRecord::statusChanged, id,
                    [object](const auto& handler) {
                        if (auto sender = object.lock()) {
                            handler(*sender);
                        }
                    });
}

std::function<void()> World::ListenerEvent(uint64_t id, std::wstring deviceId) {
    auto request = MakeRequest(std::move(deviceId));
    return Delivery(*this, &World::listeners, &ListenerRecord::requested, id,
                    [request](const auto& handler) { handler(request); });
}

}  // namespace connectkit::sim::wfd
