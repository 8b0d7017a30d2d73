#include "platform/sim/wlan/SimWlan.h"

#include <algorithm>
#include <string_view>

#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/VirtualClock.h"
#include "platform/sim/machine/SimProcesses.h"
#include "platform/sim/wificard/SimWifiDriver.h"
#include "platform/sim/wlan/SimWlanProfile.h"
#include "platform/sim/wlan/SimWlanWorld.h"

namespace connectkit::sim {
namespace {

using platform::kErrorAccessDenied;
using platform::kErrorSuccess;
using wlan::Lock;
using wlan::World;

constexpr uint32_t kErrorInvalidHandle = 6;
constexpr uint32_t kErrorInvalidParameter = 87;
constexpr uint32_t kErrorNotFound = 1168;
constexpr uint32_t kErrorBadProfile = 1206;
constexpr uint32_t kErrorInvalidState = 5023;

uint64_t HandleId(platform::WlanHandle handle) {
    return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(handle));
}

// Locks the model for a call on `handle`: ERROR_SUCCESS when the handle is
// open and `guid`, if given, names the interface.
uint32_t Enter(World& world, Lock& lock, platform::WlanHandle handle, const platform::Guid* guid) {
    lock = Lock(world.mutex);
    if (!world.handles.contains(HandleId(handle))) {
        return kErrorInvalidHandle;
    }
    if (guid && (!world.config.interface.present || *guid != world.config.interface.guid)) {
        return kErrorNotFound;
    }
    return kErrorSuccess;
}

// The same, after the fault injected at `call`, if any, which answers `faultError`.
uint32_t Enter(World& world, Lock& lock, std::string_view call, uint32_t faultError,
               platform::WlanHandle handle, const platform::Guid* guid) {
    if (auto error = FaultedCall(world.faults, world.clock, call, faultError)) {
        return *error;
    }
    return Enter(world, lock, handle, guid);
}

// The 0-100 quality Windows derives from RSSI: -100 dBm and below is 0,
// -50 dBm and above 100.
uint32_t Quality(int32_t rssi) {
    return static_cast<uint32_t>(std::clamp(2 * (rssi + 100), 0, 100));
}

uint32_t FrequencyKhz(uint32_t channel) {
    if (channel == 14) {
        return 2484000;
    }
    return channel < 14 ? 2407000 + 5000 * channel : 5000000 + 5000 * channel;
}

// Whether the card driver's legacy group-owner scan filter lets `network`
// through: its SSID, and its BSSID when the filter names one.
bool PassesScanFilter(const SimWlanConfig::Network& network) {
    auto filter = LegacyGoScanFilter();
    if (!filter) {
        return true;
    }
    bool anyBssid =
        std::all_of(filter->bssid.begin(), filter->bssid.end(), [](uint8_t b) { return b == 0; });
    return filter->ssid == network.ssid && (anyBssid || filter->bssid == network.bssid);
}

std::optional<size_t> FindNetwork(const World& world, const std::string& ssid,
                                  const std::optional<platform::Dot11BssidList>& desired) {
    for (size_t i = 0; i < world.config.networks.size(); ++i) {
        const auto& network = world.config.networks[i];
        if (network.ssid != ssid) {
            continue;
        }
        if (desired && desired->numberOfEntries > 0) {
            auto end = desired->entries.begin() + desired->numberOfEntries;
            if (std::find(desired->entries.begin(), end, network.bssid) == end) {
                continue;
            }
        }
        return i;
    }
    return std::nullopt;
}

}  // namespace

SimWlan::SimWlan(VirtualClock& clock, FaultInjector& faults, SimNetworkAdapters& adapters,
                 SimProcesses& processes)
    : share_(adapters.Own()), world_(std::make_shared<World>(clock, faults, adapters, share_)) {
    std::weak_ptr<World> weak = world_;
    share_.SetLeases([weak](uint32_t index, bool renew) -> std::optional<uint32_t> {
        auto world = weak.lock();
        if (!world) {
            return std::nullopt;
        }
        {
            Lock lock(world->mutex);
            if (!world->config.interface.present || index != world->config.interface.index) {
                return std::nullopt;
            }
            if (!renew) {
                wlan::SetAddress(*world, "");
                return kErrorSuccess;
            }
        }
        return wlan::RenewAndWait(*world);
    });
    for (const wchar_t* verb : {L"/renew", L"/release"}) {
        processes.AddHandler(
            L"ipconfig",
            [verb](const SimProcesses::Arguments& arguments) {
                return !arguments.empty() && arguments.front() == verb;
            },
            SimProcesses::Program{0, 0, [weak](const std::wstring& commandLine) {
                                      auto world = weak.lock();
                                      return world ? wlan::RunIpconfig(*world, commandLine) : 1u;
                                  }});
    }
}

SimWlan::~SimWlan() {
    Lock lock(world_->mutex);
    world_->share = nullptr;
    ++world_->generation;
}

uint32_t SimWlan::OpenHandle(uint32_t clientVersion, uint32_t& negotiatedVersion,
                             platform::WlanHandle& handle) {
    handle = nullptr;
    negotiatedVersion = 0;
    if (auto error =
            FaultedCall(world_->faults, world_->clock, "wlan.open", kErrorInvalidParameter)) {
        return *error;
    }
    if (clientVersion != 1 && clientVersion != platform::kWlanClientVersion) {
        return kErrorInvalidParameter;
    }
    Lock lock(world_->mutex);
    uint64_t id = ++world_->lastHandle;
    world_->handles[id] = {};
    negotiatedVersion = clientVersion;
    handle = reinterpret_cast<platform::WlanHandle>(static_cast<uintptr_t>(id));
    return kErrorSuccess;
}

uint32_t SimWlan::CloseHandle(platform::WlanHandle handle) {
    uint64_t id = HandleId(handle);
    Lock lock(world_->mutex);
    if (!world_->handles.erase(id)) {
        return kErrorInvalidHandle;
    }
    // wlanapi waits for a callback in flight; from inside one it cannot.
    for (int turn = 0; turn < 1000 && world_->deliveringHandle == id &&
                       world_->deliverer != std::this_thread::get_id();
         ++turn) {
        lock.unlock();
        world_->clock.Sleep(1);
        lock.lock();
    }
    return kErrorSuccess;
}

uint32_t SimWlan::EnumInterfaces(platform::WlanHandle handle,
                                 std::vector<platform::WlanInterfaceInfo>& interfaces) {
    interfaces.clear();
    Lock lock;
    if (uint32_t error = Enter(*world_, lock, "wlan.enum", kErrorNotFound, handle, nullptr)) {
        return error;
    }
    const auto& config = world_->config;
    if (config.interface.present) {
        auto state = world_->connection ? world_->connection->state
                                        : platform::WlanInterfaceState::Disconnected;
        interfaces.push_back({config.interface.guid, world_->adapterDescription, state});
    }
    return kErrorSuccess;
}

uint32_t SimWlan::Scan(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                       const std::optional<platform::Dot11Ssid>&, const std::vector<uint8_t>&) {
    Lock lock;
    if (uint32_t error = Enter(*world_, lock, handle, &interfaceGuid)) {
        return error;
    }
    ++world_->history.scans;
    wlan::After(*world_, kScanDurationMs, world_->generation, [](World& world, Lock& held) {
        wlan::Emit(world, held, platform::kWlanSourceAcm, platform::kAcmScanComplete);
    });
    return kErrorSuccess;
}

uint32_t SimWlan::GetNetworkBssList(platform::WlanHandle handle,
                                    const platform::Guid& interfaceGuid,
                                    const std::optional<platform::Dot11Ssid>& ssid,
                                    platform::Dot11BssType, bool,
                                    std::vector<platform::WlanBssEntry>& entries) {
    entries.clear();
    Lock lock;
    if (uint32_t error =
            Enter(*world_, lock, "wlan.bssList", kErrorAccessDenied, handle, &interfaceGuid)) {
        return error;
    }
    if (world_->config.locationDenied) {
        return kErrorAccessDenied;
    }
    for (size_t i = 0; i < world_->config.networks.size(); ++i) {
        const auto& network = world_->config.networks[i];
        if (world_->gone[i] || !PassesScanFilter(network)) {
            continue;
        }
        platform::WlanBssEntry entry;
        entry.ssid = wlan::SsidOf(network.hidden ? "" : network.ssid);
        if (ssid && (ssid->length != entry.ssid.length ||
                     !std::equal(ssid->bytes.begin(), ssid->bytes.begin() + entry.ssid.length,
                                 entry.ssid.bytes.begin()))) {
            continue;
        }
        bool here = world_->connection && world_->connection->network == i;
        entry.bssid = here ? world_->connection->bssid : network.bssid;
        entry.rssi = here ? world_->connection->rssi : network.rssi;
        entry.linkQuality = Quality(entry.rssi);
        entry.centerFrequencyKhz =
            FrequencyKhz(here ? world_->connection->channel : network.channel);
        entries.push_back(entry);
    }
    return kErrorSuccess;
}

uint32_t SimWlan::QueryInterface(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                                 platform::WlanIntfOpcode opcode,
                                 platform::WlanInterfaceAnswer& answer) {
    answer = {};
    Lock lock;
    if (uint32_t error =
            Enter(*world_, lock, "wlan.query", kErrorInvalidState, handle, &interfaceGuid)) {
        return error;
    }
    if (world_->config.locationDenied) {
        return kErrorAccessDenied;
    }
    const auto& connection = world_->connection;
    if (!connection || connection->state == platform::WlanInterfaceState::Disconnecting) {
        return kErrorInvalidState;
    }
    switch (opcode) {
        case platform::WlanIntfOpcode::CurrentConnection: {
            auto& attributes = answer.connection;
            attributes.state = connection->state;
            attributes.mode = platform::WlanConnectionMode::TemporaryProfile;
            attributes.profileName = connection->profileName;
            attributes.ssid = connection->ssid;
            attributes.bssid = connection->bssid;
            attributes.signalQuality = Quality(connection->rssi);
            attributes.rxRateKbps = attributes.txRateKbps = 866700;
            attributes.securityEnabled = connection->secured;
            return kErrorSuccess;
        }
        case platform::WlanIntfOpcode::ChannelNumber:
            answer.channel = connection->channel;
            return kErrorSuccess;
        case platform::WlanIntfOpcode::Rssi:
            answer.rssi = connection->rssi;
            return kErrorSuccess;
    }
    return kErrorInvalidParameter;
}

uint32_t SimWlan::Connect(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                          const platform::WlanConnectionParameters& parameters) {
    Lock lock;
    if (uint32_t error =
            Enter(*world_, lock, "wlan.connect", kErrorInvalidParameter, handle, &interfaceGuid)) {
        return error;
    }
    if (parameters.mode != platform::WlanConnectionMode::TemporaryProfile) {
        // No profile is ever saved in the simulated PC.
        return kErrorNotFound;
    }
    const auto& desired = parameters.desiredBssids;
    if (desired && desired->numberOfEntries > desired->entries.size()) {
        return kErrorInvalidParameter;
    }
    wlan::TemporaryProfile profile;
    if (!wlan::ReadTemporaryProfile(parameters.profile, profile)) {
        return kErrorBadProfile;
    }
    ++world_->history.connects;
    world_->history.desiredBssids = desired;
    wlan::StartAssociation(*world_, lock, FindNetwork(*world_, profile.ssid, desired), profile.name,
                           profile.ssid, profile.key, profile.secured);
    return kErrorSuccess;
}

uint32_t SimWlan::Disconnect(platform::WlanHandle handle, const platform::Guid& interfaceGuid) {
    Lock lock;
    if (uint32_t error = Enter(*world_, lock, handle, &interfaceGuid)) {
        return error;
    }
    if (world_->connection) {
        wlan::Disassociate(*world_, lock, true);
    }
    return kErrorSuccess;
}

uint32_t SimWlan::RegisterNotification(platform::WlanHandle handle, uint32_t sources, bool,
                                       platform::WlanNotificationCallback callback, void* context,
                                       uint32_t* previousSources) {
    Lock lock(world_->mutex);
    auto found = world_->handles.find(HandleId(handle));
    if (found == world_->handles.end()) {
        return kErrorInvalidHandle;
    }
    if (sources != platform::kWlanSourceNone && !callback) {
        return kErrorInvalidParameter;
    }
    if (previousSources) {
        *previousSources = found->second.sources;
    }
    found->second = {sources, callback, context};
    return kErrorSuccess;
}

void SimWlan::Reset() {
    Lock lock(world_->mutex);
    ++world_->generation;
    world_->config = SimWlanConfig{};
    world_->connection.reset();
    world_->leasePending = false;
    world_->address.clear();
    world_->gone.clear();
    world_->ownsAdapter = false;
    world_->mayOwnAdapter = false;
    share_.Set({});
    world_->history = {};
}

void SimWlan::Apply(const Scenario& scenario) {
    Lock lock(world_->mutex);
    world_->config = scenario.wlan.value_or(SimWlanConfig{});
    world_->mayOwnAdapter = scenario.wlan.has_value();
    world_->gone.assign(world_->config.networks.size(), false);
    wlan::PublishAdapter(*world_);
    wlan::ScheduleAutoConnects(*world_, lock);
}

void SimWlan::Count(SimCensus& census) const {
    Lock lock(world_->mutex);
    census.wlanHandles += world_->handles.size();
}

SimWlanHistory SimWlan::History() const {
    Lock lock(world_->mutex);
    return world_->history;
}

}  // namespace connectkit::sim
