#include "Context.h"
#include "Machine.h"
#include "World.h"
#include "platform/Platform.h"
#include "platform/sim/SimulatedPc.h"
#include "platform/suite/DEString.h"

namespace connectkit::tool {

const char* const kMachineHelp =
    "This build runs every command against a simulated PC; --world FILE describes it.";
const char* const kWorldHelp =
    "Simulated PC scenario (JSON) to run against; examples/worlds holds examples";

bool UseMachine(const Options& options, std::string& error) {
    return InstallWorld(options.world, error) != nullptr;
}

namespace {

sim::SimulatedPc& Pc() {
    return dynamic_cast<sim::SimulatedPc&>(platform::Current());
}

}  // namespace

std::vector<std::wstring> DebuggerLines() {
    return Pc().debugOutput().Lines();
}

bool AirAdvertisers(std::vector<AirAdvertiser>& air) {
    for (const auto& phone : Pc().bluetoothLE().Air()) {
        air.push_back({phone.name, phone.address, phone.rssi, phone.intervalMs, phone.type,
                       phone.advertisement, phone.scanResponse});
    }
    return true;
}

// The simulated executable's folder is backed by DIR, so the library's own
// digest reads DIR's files under the names the check will use.
bool UseInstallationFolder(const std::string& directory, std::string& folder, std::string& error) {
    const std::wstring simulated = Pc().files().MainModuleDirectory();
    if (!Pc().fileContents().MapHostFolder(simulated, directory, error)) {
        return false;
    }
    folder = DE::UnicodeToUTF8(simulated.substr(0, simulated.size() - 1));
    return true;
}

}  // namespace connectkit::tool
