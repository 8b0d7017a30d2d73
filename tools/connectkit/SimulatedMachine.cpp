#include "Context.h"
#include "Machine.h"
#include "World.h"

namespace connectkit::tool {

const char* const kMachineHelp =
    "This build runs every command against a simulated PC; --world FILE describes it.";
const char* const kWorldHelp =
    "Simulated PC scenario (JSON) to run against; examples/worlds holds examples";

bool UseMachine(const Options& options, std::string& error) {
    return InstallWorld(options.world, error) != nullptr;
}

}  // namespace connectkit::tool
