#include "Context.h"
#include "Machine.h"
#include "platform/Platform.h"
#include "platform/windows/DefaultBackend.h"

namespace connectkit::tool {

const char* const kMachineHelp = "On Windows every command runs against this PC.";
const char* const kWorldHelp = "Not on Windows: only the Linux build has the simulated PC";

bool UseMachine(const Options& options, std::string& error) {
    if (!options.world.empty()) {
        error =
            "--world needs the simulated PC, which only the Linux build has; on Windows "
            "connectkit runs against this PC";
        return false;
    }
    platform::SetDefaultBackend(&win::MakeDefaultBackend);
    return true;
}

std::vector<std::wstring> DebuggerLines() {
    return {};
}

bool AirAdvertisers(std::vector<AirAdvertiser>&) {
    return false;
}

// On this PC the files are where DIR says; the digests read them in place.
bool UseInstallationFolder(const std::string& directory, std::string& folder, std::string&) {
    folder = directory;
    while (folder.size() > 1 && (folder.back() == '\\' || folder.back() == '/')) {
        folder.pop_back();
    }
    return true;
}

}  // namespace connectkit::tool
