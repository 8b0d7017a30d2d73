#pragma once

#include <memory>
#include <string>

namespace connectkit::sim {
class SimulatedPc;
}

namespace connectkit::tool {

// Builds the simulated PC from the --world scenario file (or the default
// world when `path` is empty) and installs it as the process's backend.
// Null with `error` set when the scenario is not valid.
std::shared_ptr<sim::SimulatedPc> InstallWorld(const std::string& path, std::string& error);

}  // namespace connectkit::tool
