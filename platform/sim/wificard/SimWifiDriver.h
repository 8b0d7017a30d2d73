#pragma once
// The simulated card makers' driver libraries: plain C-shaped entry points
// with process-wide state, as the real libraries have. The simulated PC maps
// them into its loader; the vendor DLL doubles of the Windows test lane
// export them under the real names and ordinals. Nothing here knows about
// the simulated world, so both can build it.

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "connectkit/WifiDriverTypes.h"

namespace connectkit::sim {

struct SimDriverSettings {
    // Regulatory area: two ASCII letters, the first in the high byte ("US").
    uint16_t areaCode = 0x5553;
    std::vector<uint8_t> channels{1, 6, 11, 36, 40, 44, 48, 149, 153, 157, 161, 165};

    struct Adapter {
        int32_t handle = 1;
        bool inUse = true;
    };
    std::vector<Adapter> intelAdapters{Adapter{}};
    // The adapter list as a faulty driver hands it out: the count word it
    // claims instead of the number of adapters, and how many bytes the list
    // holds instead of room for every adapter (cut short or padded with
    // zeros).
    std::optional<uint32_t> intelListCount;
    std::optional<uint32_t> intelListBytes;
    // Intel export name -> how many calls of it fail (answer 1).
    std::map<std::string, uint32_t> intelFailures;

    // Realtek channel queries answer empty until the library was
    // initialised this many times.
    uint32_t realtekInitialisationsBeforeReady = 1;
};

// What the driver libraries saw; tests read it back.
struct SimDriverLog {
    struct Call {
        std::string entry;    // export name, or "#68" for an ordinal
        uint32_t headerSize;  // Intel request size word; 0 for Realtek
        int32_t adapter;      // Intel adapter handle; 0 for Realtek
    };
    std::vector<Call> calls;
    uint32_t realtekInitialisations = 0;
    uint32_t realtekDeinitialisations = 0;
    size_t outstandingBuffers = 0;
};

// The legacy group-owner scan filter last set and not reset: the one network
// the card's scans show.
struct SimScanFilter {
    std::array<uint8_t, 6> bssid{};  // all zero: any
    std::string ssid;
};

// Replaces the settings and starts a fresh log; any pinned channel and scan
// filter are forgotten.
void ConfigureSimDrivers(const SimDriverSettings& settings);
SimDriverLog DriverLog();
std::optional<SimScanFilter> LegacyGoScanFilter();

// Where adapter lists come from: the simulated PC and each DLL double
// provide their own, matching how their loader frees vendor buffers.
void* AllocateDriverBuffer(size_t bytes);
size_t OutstandingDriverBuffers();

namespace driver {

// murocapi.dll
int IntelGetAdapterList(_INTEL_REQUEST_HEADER* header, void** list);
int IntelQuerySupportedChannels(int adapter, _INTEL_REQUEST_HEADER* header, void* structure);
int IntelSetPreferredChannelSettings(int adapter, _INTEL_REQUEST_HEADER* header,
                                     _INTEL_GO_PREFERRED_CHANNEL* channels, uint32_t* driverResult);
int IntelQueryPreferredChannelSetting(int adapter, _INTEL_REQUEST_HEADER* header, void* structure);
int IntelSetDiscoveryFilter(int adapter, _INTEL_REQUEST_HEADER* header, void* structure,
                            uint32_t zero);
int IntelResetPreferredChannelSettings(int adapter, _INTEL_REQUEST_HEADER* header);
int IntelResetDiscoveryFilter(int adapter, _INTEL_REQUEST_HEADER* header);
int IntelSetLegacyGoScanFilter(int adapter, _INTEL_REQUEST_HEADER* header, void* structure,
                               uint32_t zero);
int IntelResetLegacyGoScanFilter(int adapter, _INTEL_REQUEST_HEADER* header);

// RealtekWiFi.dll, named by ordinal.
int Realtek68GetSupportedChannels(void* structure);
int Realtek69SetPreferredChannelSettings(void* structure);
int Realtek70ResetPreferredChannelSettings();
int Realtek71GetPreferredChannelSetting(void* structure);
int Realtek72SetLegacyGoScanFilter(void* structure);
int Realtek73ResetLegacyGoScanFilter();
int Realtek74EnableSoftApShow();
int Realtek75DisableSoftApShow();
int Realtek76Initialize();
int Realtek77Deinitialize();

}  // namespace driver
}  // namespace connectkit::sim
