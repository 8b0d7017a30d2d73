// The air around the simulated card: association outcomes, roaming,
// disconnection and networks leaving, each as the notification sequence
// Windows gives, delivered one at a time and in order.
#include <algorithm>

#include "platform/ports/WlanRecords.h"
#include "platform/sim/core/VirtualClock.h"
#include "platform/sim/wlan/SimWlanWorld.h"

namespace connectkit::sim::wlan {
namespace {

using platform::kWlanSourceAcm;
using platform::kWlanSourceMsm;
using State = platform::WlanInterfaceState;

// wlan_notification_msm_disassociating: not one the library reads.
constexpr uint32_t kMsmDisassociating = 9;

// The fields the ACM and MSM records share, for the connection under way.
template <class Data>
Data Describe(const World& world, uint32_t reason) {
    const auto& connection = *world.connection;
    Data data;
    data.mode = platform::WlanConnectionMode::TemporaryProfile;
    data.profileName = connection.profileName;
    data.ssid = connection.ssid;
    data.securityEnabled = connection.secured;
    data.reasonCode = reason;
    return data;
}

void Acm(World& world, Lock& lock, uint32_t code, uint32_t reason = 0) {
    auto data = Describe<platform::WlanConnectionNotificationData>(world, reason);
    Emit(world, lock, kWlanSourceAcm, code, platform::EncodeConnectionNotification(data));
}

void Msm(World& world, Lock& lock, uint32_t code, uint32_t reason = 0) {
    auto data = Describe<platform::WlanMsmNotificationData>(world, reason);
    data.peer = world.connection->bssid;
    data.firstPeer = true;
    data.lastPeer = true;
    Emit(world, lock, kWlanSourceMsm, code, platform::EncodeMsmNotification(data));
}

// connection_attempt_fail and connection_complete with `reason`; the
// interface is left disconnected.
void Fail(World& world, Lock& lock, uint32_t reason) {
    Acm(world, lock, platform::kAcmConnectionAttemptFail, reason);
    Acm(world, lock, platform::kAcmConnectionComplete, reason);
    world.connection.reset();
}

void ScheduleLinkEvents(World& world, Lock&, size_t network, uint64_t generation) {
    const auto& air = world.config.networks[network];
    if (air.roam) {
        After(world, air.roam->afterMs, generation, [](World& w, Lock& lock) {
            auto roam = *w.config.networks[w.connection->network].roam;
            Msm(w, lock, platform::kMsmRoamingStart);
            w.connection->state = State::Associating;
            w.connection->bssid = roam.bssid;
            w.connection->channel = roam.channel;
            w.connection->rssi = roam.rssi;
            Msm(w, lock, platform::kMsmAssociating);
            Msm(w, lock, platform::kMsmAssociated);
            Msm(w, lock, platform::kMsmAuthenticating);
            w.connection->state = State::Connected;
            Msm(w, lock, platform::kMsmRoamingEnd);
        });
    }
    if (air.dropAfterMs) {
        After(world, *air.dropAfterMs, generation, [](World& w, Lock& lock) {
            w.gone[w.connection->network] = true;
            Disassociate(w, lock, false);
        });
    }
}

}  // namespace

platform::Dot11Ssid SsidOf(const std::string& text) {
    platform::Dot11Ssid ssid;
    ssid.length = static_cast<uint32_t>(std::min(text.size(), ssid.bytes.size()));
    std::copy_n(text.begin(), ssid.length, ssid.bytes.begin());
    return ssid;
}

void After(World& world, uint32_t delayMs, uint64_t generation,
           std::function<void(World&, Lock&)> step) {
    world.clock.Post(delayMs, [weak = world.weak_from_this(), generation, step] {
        auto self = weak.lock();
        if (!self) {
            return;
        }
        Lock lock(self->mutex);
        if (self->generation == generation) {
            step(*self, lock);
        }
    });
}

void Emit(World& world, Lock&, uint32_t source, uint32_t code, std::vector<uint8_t> data) {
    world.queue.push_back({source, code, std::move(data)});
    world.clock.Post(0, [weak = world.weak_from_this()] {
        if (auto self = weak.lock()) {
            Deliver(*self);
        }
    });
}

void Deliver(World& world) {
    Lock lock(world.mutex);
    if (world.delivering) {
        return;
    }
    world.delivering = true;
    world.deliverer = std::this_thread::get_id();
    while (!world.queue.empty()) {
        Note note = std::move(world.queue.front());
        world.queue.pop_front();
        std::vector<uint64_t> targets;
        for (const auto& [id, registration] : world.handles) {
            if (registration.sources & note.source) {
                targets.push_back(id);
            }
        }
        for (uint64_t id : targets) {
            // A handle closed or unregistered by an earlier callback hears
            // nothing more.
            auto still = world.handles.find(id);
            if (still == world.handles.end() || !(still->second.sources & note.source)) {
                continue;
            }
            Registration current = still->second;
            platform::WlanNotification notification{note.source, note.code,
                                                    world.config.interface.guid, note.data};
            world.deliveringHandle = id;
            ++world.history.notifications;
            lock.unlock();
            current.callback(&notification, current.context);
            lock.lock();
            world.deliveringHandle = 0;
        }
    }
    world.delivering = false;
    world.deliverer = {};
}

void StartAssociation(World& world, Lock& lock, std::optional<size_t> network,
                      const std::wstring& profileName, const std::string& ssid,
                      const std::string& key, bool secured) {
    if (world.connection) {
        Disassociate(world, lock, true);
    }
    uint64_t generation = ++world.generation;
    Connection connection;
    connection.network = network.value_or(world.config.networks.size());
    connection.profileName = profileName;
    connection.ssid = SsidOf(ssid);
    connection.secured = secured;
    world.connection = connection;
    Acm(world, lock, platform::kAcmConnectionStart);
    if (!network || world.config.networks[*network].hidden || world.gone[*network]) {
        Fail(world, lock, kReasonNotVisible);
        return;
    }
    const auto& air = world.config.networks[*network];
    bool airSecured = air.security == SimWlanConfig::Network::Security::Wpa2Psk;
    if (airSecured != secured) {
        Fail(world, lock, kReasonNetworkNotCompatible);
        return;
    }
    world.connection->bssid = air.bssid;
    world.connection->channel = air.channel;
    world.connection->rssi = air.rssi;
    Msm(world, lock, platform::kMsmAssociating);
    uint32_t half = world.config.associateMs / 2;
    After(world, half, generation, [](World& w, Lock& lock) {
        Msm(w, lock, platform::kMsmAssociated);
        w.connection->state = State::Authenticating;
        Msm(w, lock, platform::kMsmAuthenticating);
    });
    bool keyMatches = !secured || key == air.passphrase;
    After(world, world.config.associateMs, generation,
          [keyMatches, generation](World& w, Lock& lock) {
              const auto& reached = w.config.networks[w.connection->network];
              if (!keyMatches) {
                  Msm(w, lock, kMsmDisassociating, kReasonPskMismatch);
                  Msm(w, lock, platform::kMsmDisconnected, kReasonPskMismatch);
                  Fail(w, lock, kReasonPskMismatch);
                  return;
              }
              if (reached.completeReason != 0) {
                  Acm(w, lock, platform::kAcmConnectionComplete, reached.completeReason);
                  w.connection.reset();
                  return;
              }
              w.connection->state = State::Connected;
              Msm(w, lock, platform::kMsmConnected);
              StartLease(w, lock);
              ScheduleLinkEvents(w, lock, w.connection->network, generation);
              Acm(w, lock, platform::kAcmConnectionComplete);
          });
}

void Disassociate(World& world, Lock& lock, bool requested) {
    ++world.generation;
    world.leasePending = false;
    SetAddress(world, "");
    if (requested) {
        Acm(world, lock, platform::kAcmDisconnecting);
    }
    world.connection->state = State::Disconnecting;
    Msm(world, lock, kMsmDisassociating);
    Msm(world, lock, platform::kMsmDisconnected);
    Acm(world, lock, platform::kAcmDisconnected);
    world.connection.reset();
}

void ScheduleAutoConnects(World& world, Lock&) {
    for (size_t i = 0; i < world.config.networks.size(); ++i) {
        const auto& air = world.config.networks[i];
        if (!air.autoConnectAfterMs) {
            continue;
        }
        After(world, *air.autoConnectAfterMs, world.generation, [i](World& w, Lock& lock) {
            const auto& network = w.config.networks[i];
            bool secured = network.security == SimWlanConfig::Network::Security::Wpa2Psk;
            std::wstring profile(network.ssid.begin(), network.ssid.end());
            StartAssociation(w, lock, i, profile, network.ssid, network.passphrase, secured);
        });
    }
}

}  // namespace connectkit::sim::wlan
