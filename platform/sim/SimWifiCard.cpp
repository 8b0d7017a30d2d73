#include "platform/sim/SimWifiCard.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <set>

#include "connectkit/WifiDriverTypes.h"
#include "platform/sim/SimDevices.h"
#include "platform/sim/SimFileSystem.h"
#include "platform/sim/SimNetworkAdapters.h"
#include "platform/sim/SimRegistry.h"

namespace connectkit::sim {
namespace {

// The driver entry points are plain C functions, so the card they serve is
// process-wide: the one applied last.
struct CardState {
    std::mutex mutex;
    SimWifiCardConfig config;
    // The channel the group owner was pinned to; 0 leaves the choice to the
    // card.
    uint8_t preferredChannel = 0;
    SimDriverLog log;
    std::set<uint8_t*> buffers;
};

CardState& State() {
    static auto* state = new CardState();
    return *state;
}

void Record(CardState& state, const char* entry, const _INTEL_REQUEST_HEADER* header,
            int32_t adapter) {
    state.log.calls.push_back({entry, header ? header->size : 0, adapter});
}

// Whether a call of `entry` should fail, counting the failure.
bool Fails(CardState& state, const char* entry) {
    auto found = state.config.intel.failures.find(entry);
    if (found == state.config.intel.failures.end() || found->second == 0) {
        return false;
    }
    --found->second;
    return true;
}

// Remembers the first preferred channel; a channel the card does not list is
// refused (answer 1), and an empty list clears the preference.
int Prefer(CardState& state, const _INTEL_GO_PREFERRED_CHANNEL& preferred) {
    if (preferred.channelCount == 0) {
        state.preferredChannel = 0;
        return 0;
    }
    uint8_t channel = preferred.entries[0].channel;
    const auto& listed = state.config.channels;
    if (std::find(listed.begin(), listed.end(), channel) == listed.end()) {
        return 1;
    }
    state.preferredChannel = channel;
    return 0;
}

// The pinned channel, or the card's own choice: its first channel for Intel,
// 6 for Realtek.
void ReportOperatingChannel(const CardState& state, uint8_t unpinned, void* structure) {
    uint8_t channel = state.preferredChannel != 0 ? state.preferredChannel : unpinned;
    uint32_t band = channel > 13 ? ConnectKit::kDriverBand5 : ConnectKit::kDriverBand24;
    *static_cast<_GO_OPERATION_CHANNEL_SETTING*>(structure) = {band, channel, 20, 0};
}

void FillChannels(const SimWifiCardConfig& config, _GO_SUPPORTTED_CHANNELS* out) {
    std::memset(out, 0, sizeof(*out));
    out->areaCode = config.areaCode;
    size_t count = std::min<size_t>(config.channels.size(), sizeof(out->channels));
    out->channelCount = static_cast<uint8_t>(count);
    std::copy_n(config.channels.begin(), count, out->channels);
}

// --- murocapi.dll ---

int IntelGetAdapterList(_INTEL_REQUEST_HEADER* header, void** list) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, "WifiGetAdapterList", header, 0);
    if (!list || Fails(state, "WifiGetAdapterList")) {
        return 1;
    }
    const auto& adapters = state.config.intel.adapters;
    size_t size = 4 + ConnectKit::kIntelAdapterStride * std::max<size_t>(adapters.size(), 1);
    auto* buffer = new uint8_t[size]();
    auto count = static_cast<uint32_t>(adapters.size());
    std::memcpy(buffer, &count, 4);
    for (size_t i = 0; i < adapters.size(); ++i) {
        uint8_t* entry = buffer + ConnectKit::kIntelAdapterStride * i;
        uint32_t inUse = adapters[i].inUse ? 1 : 0;
        std::memcpy(entry + ConnectKit::kIntelAdapterHandleOffset, &adapters[i].handle, 4);
        std::memcpy(entry + ConnectKit::kIntelAdapterInUseOffset, &inUse, 4);
    }
    state.buffers.insert(buffer);
    state.log.outstandingBuffers = state.buffers.size();
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
    FillChannels(state.config, static_cast<_GO_SUPPORTTED_CHANNELS*>(structure));
    return 0;
}

int IntelQueryPreferredChannelSetting(int adapter, _INTEL_REQUEST_HEADER* header, void* structure) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, "WifiPanQueryPreferredChannelSetting", header, adapter);
    if (!structure || Fails(state, "WifiPanQueryPreferredChannelSetting")) {
        return 1;
    }
    uint8_t first = state.config.channels.empty() ? 6 : state.config.channels.front();
    ReportOperatingChannel(state, first, structure);
    return 0;
}

int IntelSetPreferred(int adapter, _INTEL_REQUEST_HEADER* header,
                      _INTEL_GO_PREFERRED_CHANNEL* channels, uint32_t* driverResult) {
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

template <const char* kName>
int IntelSetWithFlag(int adapter, _INTEL_REQUEST_HEADER* header, void* structure, uint32_t) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, kName, header, adapter);
    return !structure || Fails(state, kName) ? 1 : 0;
}

constexpr char kSetDiscoveryFilter[] = "WifiPanSetDiscoveryFilter";
constexpr char kSetScanFilter[] = "WifiLegacyGoSetScanFilter";
constexpr char kResetPreferred[] = "WifiPanResetPreferredChannelSettings";
constexpr char kResetDiscovery[] = "WifiPanReSetDiscoveryFilter";
constexpr char kResetScanFilter[] = "WifiPanReSetLegacyGoScanFilter";

template <const char* kName>
int IntelReset(int adapter, _INTEL_REQUEST_HEADER* header) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, kName, header, adapter);
    if (Fails(state, kName)) {
        return 1;
    }
    if (kName == kResetPreferred) {
        state.preferredChannel = 0;
    }
    return 0;
}

// --- RealtekWiFi.dll ---

bool RealtekReady(const CardState& state) {
    return state.log.realtekInitialisations >= state.config.realtek.initialisationsBeforeReady;
}

int RealtekGetSupportedChannels(void* structure) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, "#68", nullptr, 0);
    if (!structure) {
        return 1;
    }
    auto* channels = static_cast<_GO_SUPPORTTED_CHANNELS*>(structure);
    if (RealtekReady(state)) {
        FillChannels(state.config, channels);
    } else {
        std::memset(channels, 0, sizeof(*channels));
    }
    return 0;
}

template <int kOrdinal>
int RealtekWithStructure(void* structure) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, ("#" + std::to_string(kOrdinal)).c_str(), nullptr, 0);
    if (!RealtekReady(state)) {
        return 1;
    }
    if (kOrdinal == 69 && structure) {
        return Prefer(state, *static_cast<_INTEL_GO_PREFERRED_CHANNEL*>(structure));
    }
    if (kOrdinal == 71 && structure) {
        ReportOperatingChannel(state, 6, structure);
    }
    return 0;
}

template <int kOrdinal>
int RealtekPlain() {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    Record(state, ("#" + std::to_string(kOrdinal)).c_str(), nullptr, 0);
    if (kOrdinal == 70) {
        state.preferredChannel = 0;
    } else if (kOrdinal == 76) {
        ++state.log.realtekInitialisations;
    } else if (kOrdinal == 77) {
        ++state.log.realtekDeinitialisations;
    }
    return 0;
}

template <class F>
platform::ProcAddress Entry(F function) {
    return reinterpret_cast<platform::ProcAddress>(function);
}

std::shared_ptr<SimLibraryImage> IntelImage(const SimWifiCardConfig::Intel& intel) {
    auto image = std::make_shared<SimLibraryImage>();
    image->symbols = {
        {"WifiGetAdapterList", Entry(&IntelGetAdapterList)},
        {"WifiPanQuerySupportedChannels", Entry(&IntelQuerySupportedChannels)},
        {"WifiPanSetPreferredChannelSettings", Entry(&IntelSetPreferred)},
        {"WifiPanQueryPreferredChannelSetting", Entry(&IntelQueryPreferredChannelSetting)},
        {"WifiPanSetDiscoveryFilter", Entry(&IntelSetWithFlag<kSetDiscoveryFilter>)},
        {"WifiPanResetPreferredChannelSettings", Entry(&IntelReset<kResetPreferred>)},
        {"WifiPanReSetDiscoveryFilter", Entry(&IntelReset<kResetDiscovery>)},
        {"WifiLegacyGoSetScanFilter", Entry(&IntelSetWithFlag<kSetScanFilter>)},
        {"WifiPanReSetLegacyGoScanFilter", Entry(&IntelReset<kResetScanFilter>)},
    };
    for (const auto& missing : intel.missingExports) {
        image->symbols.erase(missing);
    }
    return image;
}

std::shared_ptr<SimLibraryImage> RealtekImage(const SimWifiCardConfig::Realtek& realtek) {
    auto image = std::make_shared<SimLibraryImage>();
    image->ordinals = {
        {68, Entry(&RealtekGetSupportedChannels)},
        {69, Entry(&RealtekWithStructure<69>)},
        {70, Entry(&RealtekPlain<70>)},
        {71, Entry(&RealtekWithStructure<71>)},
        {72, Entry(&RealtekWithStructure<72>)},
        {73, Entry(&RealtekPlain<73>)},
        {74, Entry(&RealtekPlain<74>)},
        {75, Entry(&RealtekPlain<75>)},
        {76, Entry(&RealtekPlain<76>)},
        {77, Entry(&RealtekPlain<77>)},
    };
    for (uint16_t missing : realtek.missingOrdinals) {
        image->ordinals.erase(missing);
    }
    return image;
}

const wchar_t* DefaultDescription(SimWifiCardConfig::Maker maker) {
    switch (maker) {
        case SimWifiCardConfig::Maker::Intel:
            return L"Intel(R) Wi-Fi 6 AX201 160MHz";
        case SimWifiCardConfig::Maker::Realtek:
            return L"Realtek RTL8852BE WiFi 6 802.11ax PCIe Adapter";
        default:
            return L"MediaTek Wi-Fi 6 MT7921 Wireless LAN Card";
    }
}

}  // namespace

void ApplyWifiCard(const SimWifiCardConfig& config, SimRegistry& registry, SimFileSystem& files,
                   SimDevices& devices, SimNetworkAdapters& adapters) {
    auto& state = State();
    {
        std::lock_guard<std::mutex> lock(state.mutex);
        state.config = config;
        state.preferredChannel = 0;
        state.log = SimDriverLog{};
        state.log.outstandingBuffers = state.buffers.size();
    }
    if (config.maker == SimWifiCardConfig::Maker::None) {
        adapters.Set({});
        return;
    }
    platform::NetworkAdapterInfo wifi;
    wifi.kind = platform::NetworkAdapterInfo::Kind::Wifi;
    wifi.index = 12;
    wifi.description =
        config.description.empty() ? DefaultDescription(config.maker) : config.description;
    wifi.mac = {0x3C, 0x6A, 0xA7, 0x12, 0x34, 0x56};
    adapters.Set({wifi});

    if (config.maker == SimWifiCardConfig::Maker::Realtek) {
        files.AddFile(std::wstring(SimFileSystem::kSystemDirectory) + L"RealtekWiFi.dll",
                      RealtekImage(config.realtek));
        return;
    }
    if (config.maker != SimWifiCardConfig::Maker::Intel) {
        return;
    }
    const auto& intel = config.intel;
    auto image = IntelImage(intel);
    // The library lies in the folder whatever the registry value looks like.
    std::wstring directory = intel.directory;
    if (!directory.empty() && directory.back() != L'\\') {
        directory += L'\\';
    }
    switch (intel.discovery) {
        case SimWifiCardConfig::Intel::Discovery::ProSet:
            registry.Write(platform::RegistryHive::LocalMachine, L"SOFTWARE\\Intel\\Wireless",
                           L"PROSetBinDir", platform::RegistryData::FromString(intel.directory));
            files.AddFile(directory + L"murocapi.dll", image);
            break;
        case SimWifiCardConfig::Intel::Discovery::Pie: {
            SimDevices::Device pie;
            pie.instanceId = L"SWD\\DRIVERENUM\\PIE&4&1A2B3C&0";
            pie.hardwareIds = {L"SWC\\VID_8086&PID_PIE&SID_0001", L"SWC\\VID_8086&PID_PIE"};
            pie.values = {{L"PiePathHint", directory + L"murocapi.dll"}};
            devices.Add(std::move(pie));
            files.AddFile(directory + L"murocapi.dll", image);
            break;
        }
        case SimWifiCardConfig::Intel::Discovery::None:
            if (intel.libraryAtDefaultPath) {
                files.AddFile(L"C:\\Program Files\\Intel\\WiFi\\bin\\MurocApi.dll", image);
            }
            break;
    }
}

SimDriverLog DriverLog() {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    return state.log;
}

bool FreeSimDriverBuffer(void* buffer) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    auto found = state.buffers.find(static_cast<uint8_t*>(buffer));
    if (found == state.buffers.end()) {
        return false;
    }
    delete[] * found;
    state.buffers.erase(found);
    state.log.outstandingBuffers = state.buffers.size();
    return true;
}

}  // namespace connectkit::sim
