#pragma once
// The simulated PC's Wi-Fi card and its maker's driver library. Applying a
// card puts everything a real installation leaves behind into the world: the
// adapter (whose description names the maker), the driver DLL with the real
// entry points (by name for Intel's murocapi.dll, by ordinal 68-77 for
// RealtekWiFi.dll), and where the Intel library is found (the PROSet registry
// value, or the platform-integration device's "PiePathHint"). Both drivers
// run their group owner on the channel last pinned through the preferred
// channel settings (a channel the card does not list is refused) and report
// it through the operating channel query until a reset.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/sim/core/SimModel.h"
#include "platform/sim/machine/SimNetworkAdapters.h"
#include "platform/sim/wificard/SimWifiDriver.h"

namespace connectkit::sim {

class SimDevices;
class SimFileSystem;
class SimRegistry;

struct SimWifiCardConfig {
    enum class Maker { None, Intel, Realtek, Other };
    Maker maker = Maker::None;
    // Adapter description; empty picks one that names the maker.
    std::wstring description;
    // Regulatory area: two ASCII letters, the first in the high byte ("US").
    uint16_t areaCode = 0x5553;
    std::vector<uint8_t> channels{1, 6, 11, 36, 40, 44, 48, 149, 153, 157, 161, 165};

    struct Intel {
        enum class Discovery { ProSet, Pie, None };
        Discovery discovery = Discovery::ProSet;
        // Folder of murocapi.dll, as the PROSet value holds it.
        std::wstring directory = L"C:\\Program Files\\Intel\\WiFi\\bin\\";
        // With no discovery: whether MurocApi.dll still lies at the default path.
        bool libraryAtDefaultPath = false;
        std::vector<std::string> missingExports;
        struct Adapter {
            int32_t handle = 1;
            bool inUse = true;
        };
        std::vector<Adapter> adapters{Adapter{}};
        // Export name -> how many calls of it fail (answer 1).
        std::map<std::string, uint32_t> failures;
    } intel;

    struct Realtek {
        // Channel queries answer empty until the library was initialised
        // this many times.
        uint32_t initialisationsBeforeReady = 1;
        std::vector<uint16_t> missingOrdinals;
    } realtek;
};

// Installs the scenario's "wifiCard" into the machine (replacing any earlier
// card); counts the adapter lists its Intel library handed out and nobody
// freed yet.
class SimWifiCard final : public SimModel {
public:
    SimWifiCard(SimRegistry& registry, SimFileSystem& files, SimDevices& devices,
                SimNetworkAdapters& adapters)
        : registry_(registry), files_(files), devices_(devices), adapter_(adapters.Own()) {}

    void Apply(const Scenario& scenario) override;
    void Count(SimCensus& census) const override;

private:
    void InstallIntelLibrary(const SimWifiCardConfig::Intel& intel);

    SimRegistry& registry_;
    SimFileSystem& files_;
    SimDevices& devices_;
    SimNetworkAdapters::Share adapter_;
};

// Frees an adapter list the simulated Intel library handed out; false for
// memory it did not allocate.
bool FreeSimDriverBuffer(void* buffer);

}  // namespace connectkit::sim
