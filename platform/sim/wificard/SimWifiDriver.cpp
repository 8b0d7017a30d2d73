#include "platform/sim/wificard/SimWifiDriver.h"

#include <algorithm>
#include <cstring>
#include <mutex>

namespace connectkit::sim {
namespace {

struct DriverState {
    std::mutex mutex;
    SimDriverSettings settings;
    // The channel the group owner was pinned to; 0 leaves the choice to the
    // card.
    uint8_t preferredChannel = 0;
    std::optional<SimScanFilter> scanFilter;
    SimDriverLog log;
};

DriverState& State() {
    // Never destroyed: a library the loader deliberately never frees may
    // still be called while the process winds down.
    static auto* state = new DriverState();
    return *state;
}

void Record(DriverState& state, const char* entry, const _INTEL_REQUEST_HEADER* header,
            int32_t adapter) {
    state.log.calls.push_back({entry, header ? header->size : 0, adapter});
}

// Whether a call of `entry` should fail, counting the failure.
bool Fails(DriverState& state, const char* entry) {
    auto found = state.settings.intelFailures.find(entry);
    if (found == state.settings.intelFailures.end() || found->second == 0) {
        return false;
    }
    --found->second;
    return true;
}

// Remembers the first preferred channel; a channel the card does not list is
// refused (answer 1), and an empty list clears the preference.
int Prefer(DriverState& state, const _INTEL_GO_PREFERRED_CHANNEL& preferred) {
    if (preferred.channelCount == 0) {
        state.preferredChannel = 0;
        return 0;
    }
    uint8_t channel = preferred.entries[0].channel;
    const auto& listed = state.settings.channels;
    if (std::find(listed.begin(), listed.end(), channel) == listed.end()) {
        return 1;
    }
    state.preferredChannel = channel;
    return 0;
}

// The pinned channel, or the card's own choice: its first channel for Intel,
// 6 for Realtek.
void ReportOperatingChannel(const DriverState& state, uint8_t unpinned, void* structure) {
    uint8_t channel = state.preferredChannel != 0 ? state.preferredChannel : unpinned;
    uint32_t band = channel > 13 ? ConnectKit::kDriverBand5 : ConnectKit::kDriverBand24;
    *static_cast<_GO_OPERATION_CHANNEL_SETTING*>(structure) = {band, channel, 20, 0};
}

void FillChannels(const SimDriverSettings& settings, _GO_SUPPORTTED_CHANNELS* out) {
    std::memset(out, 0, sizeof(*out));
    out->areaCode = settings.areaCode;
    size_t count = std::min<size_t>(settings.channels.size(), sizeof(out->channels));
    out->channelCount = static_cast<uint8_t>(count);
    std::copy_n(settings.channels.begin(), count, out->channels);
}

// The filter as the driver keeps it; the SSID length is bounded by its field.
int SetScanFilter(DriverState& state, void* structure) {
    const auto& filter = *static_cast<const _WIFI_LEGACY_GO_SCAN_FILTER*>(structure);
    SimScanFilter kept;
    std::copy_n(filter.bssid, kept.bssid.size(), kept.bssid.begin());
    kept.ssid.assign(reinterpret_cast<const char*>(filter.ssid),
                     std::min<size_t>(filter.ssidLength, sizeof(filter.ssid)));
    state.scanFilter = kept;
    return 0;
}

// A request that carries a structure: refused without one or when failing,
// otherwise `work` (if any) takes it.
int IntelFlagged(const char* name, int adapter, _INTEL_REQUEST_HEADER* header, void* structure,
                 int (*work)(DriverState&, void*) = nullptr) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, name, header, adapter);
    if (!structure || Fails(state, name)) {
        return 1;
    }
    return work ? work(state, structure) : 0;
}

int IntelReset(const char* name, int adapter, _INTEL_REQUEST_HEADER* header,
               void (*effect)(DriverState&) = nullptr) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, name, header, adapter);
    if (Fails(state, name)) {
        return 1;
    }
    if (effect) {
        effect(state);
    }
    return 0;
}

bool RealtekReady(const DriverState& state) {
    return state.log.realtekInitialisations >= state.settings.realtekInitialisationsBeforeReady;
}

// Ordinals other than the channel query refuse to work before the library
// is ready, as the real one does.
int RealtekWithStructure(const char* name, void* structure,
                         int (*work)(DriverState&, void*) = nullptr) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, name, nullptr, 0);
    if (!RealtekReady(state)) {
        return 1;
    }
    return work && structure ? work(state, structure) : 0;
}

int RealtekPlain(const char* name, void (*effect)(DriverState&) = nullptr) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, name, nullptr, 0);
    if (effect) {
        effect(state);
    }
    return 0;
}

}  // namespace

void ConfigureSimDrivers(const SimDriverSettings& settings) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    state.settings = settings;
    state.preferredChannel = 0;
    state.scanFilter.reset();
    state.log = SimDriverLog{};
}

std::optional<SimScanFilter> LegacyGoScanFilter() {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    return state.scanFilter;
}

SimDriverLog DriverLog() {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    SimDriverLog log = state.log;
    log.outstandingBuffers = OutstandingDriverBuffers();
    return log;
}

namespace driver {

int IntelGetAdapterList(_INTEL_REQUEST_HEADER* header, void** list) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, "WifiGetAdapterList", header, 0);
    if (!list || Fails(state, "WifiGetAdapterList")) {
        return 1;
    }
    const auto& adapters = state.settings.intelAdapters;
    std::vector<uint8_t> image(4 + ConnectKit::kIntelAdapterStride *
                                       std::max<size_t>(adapters.size(), 1));
    auto count = state.settings.intelListCount.value_or(static_cast<uint32_t>(adapters.size()));
    std::memcpy(image.data(), &count, 4);
    for (size_t i = 0; i < adapters.size(); ++i) {
        uint8_t* entry = image.data() + ConnectKit::kIntelAdapterStride * i;
        uint32_t inUse = adapters[i].inUse ? 1 : 0;
        std::memcpy(entry + ConnectKit::kIntelAdapterHandleOffset, &adapters[i].handle, 4);
        std::memcpy(entry + ConnectKit::kIntelAdapterInUseOffset, &inUse, 4);
    }
    image.resize(state.settings.intelListBytes.value_or(image.size()));
    auto* buffer = static_cast<uint8_t*>(AllocateDriverBuffer(image.size()));
    if (!buffer) {
        return 1;
    }
    std::copy(image.begin(), image.end(), buffer);
    *list = buffer;
    return 0;
}

int IntelQuerySupportedChannels(int adapter, _INTEL_REQUEST_HEADER* header, void* structure) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, "WifiPanQuerySupportedChannels", header, adapter);
    if (!structure || Fails(state, "WifiPanQuerySupportedChannels")) {
        return 1;
    }
    FillChannels(state.settings, static_cast<_GO_SUPPORTTED_CHANNELS*>(structure));
    return 0;
}

int IntelQueryPreferredChannelSetting(int adapter, _INTEL_REQUEST_HEADER* header, void* structure) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, "WifiPanQueryPreferredChannelSetting", header, adapter);
    if (!structure || Fails(state, "WifiPanQueryPreferredChannelSetting")) {
        return 1;
    }
    uint8_t first = state.settings.channels.empty() ? 6 : state.settings.channels.front();
    ReportOperatingChannel(state, first, structure);
    return 0;
}

int IntelSetPreferredChannelSettings(int adapter, _INTEL_REQUEST_HEADER* header,
                                     _INTEL_GO_PREFERRED_CHANNEL* channels,
                                     uint32_t* driverResult) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, "WifiPanSetPreferredChannelSettings", header, adapter);
    if (driverResult) {
        *driverResult = 0;
    }
    if (!channels || Fails(state, "WifiPanSetPreferredChannelSettings")) {
        return 1;
    }
    return Prefer(state, *channels);
}

int IntelSetDiscoveryFilter(int adapter, _INTEL_REQUEST_HEADER* header, void* structure, uint32_t) {
    return IntelFlagged("WifiPanSetDiscoveryFilter", adapter, header, structure);
}

int IntelSetLegacyGoScanFilter(int adapter, _INTEL_REQUEST_HEADER* header, void* structure,
                               uint32_t) {
    return IntelFlagged("WifiLegacyGoSetScanFilter", adapter, header, structure, SetScanFilter);
}

int IntelResetPreferredChannelSettings(int adapter, _INTEL_REQUEST_HEADER* header) {
    return IntelReset("WifiPanResetPreferredChannelSettings", adapter, header,
                      [](DriverState& state) { state.preferredChannel = 0; });
}

int IntelResetDiscoveryFilter(int adapter, _INTEL_REQUEST_HEADER* header) {
    return IntelReset("WifiPanReSetDiscoveryFilter", adapter, header);
}

int IntelResetLegacyGoScanFilter(int adapter, _INTEL_REQUEST_HEADER* header) {
    return IntelReset("WifiPanReSetLegacyGoScanFilter", adapter, header,
                      [](DriverState& state) { state.scanFilter.reset(); });
}

int Realtek68GetSupportedChannels(void* structure) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, "#68", nullptr, 0);
    if (!structure) {
        return 1;
    }
    auto* channels = static_cast<_GO_SUPPORTTED_CHANNELS*>(structure);
    if (RealtekReady(state)) {
        FillChannels(state.settings, channels);
    } else {
        std::memset(channels, 0, sizeof(*channels));
    }
    return 0;
}

int Realtek69SetPreferredChannelSettings(void* structure) {
    return RealtekWithStructure("#69", structure, [](DriverState& state, void* preferred) {
        return Prefer(state, *static_cast<_INTEL_GO_PREFERRED_CHANNEL*>(preferred));
    });
}

int Realtek70ResetPreferredChannelSettings() {
    return RealtekPlain("#70", [](DriverState& state) { state.preferredChannel = 0; });
}

int Realtek71GetPreferredChannelSetting(void* structure) {
    return RealtekWithStructure("#71", structure, [](DriverState& state, void* setting) {
        ReportOperatingChannel(state, 6, setting);
        return 0;
    });
}

int Realtek72SetLegacyGoScanFilter(void* structure) {
    return RealtekWithStructure("#72", structure, SetScanFilter);
}

int Realtek73ResetLegacyGoScanFilter() {
    return RealtekPlain("#73", [](DriverState& state) { state.scanFilter.reset(); });
}

int Realtek74EnableSoftApShow() {
    return RealtekPlain("#74");
}

int Realtek75DisableSoftApShow() {
    return RealtekPlain("#75");
}

int Realtek76Initialize() {
    return RealtekPlain("#76", [](DriverState& state) { ++state.log.realtekInitialisations; });
}

int Realtek77Deinitialize() {
    return RealtekPlain("#77", [](DriverState& state) { ++state.log.realtekDeinitialisations; });
}

}  // namespace driver
}  // namespace connectkit::sim
