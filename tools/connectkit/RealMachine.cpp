#include "Context.h"
#include "Machine.h"

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
    return true;
}

}  // namespace connectkit::tool
