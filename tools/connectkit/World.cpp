#include "World.h"

#include "platform/Platform.h"
#include "platform/sim/SimulatedPc.h"

namespace connectkit::tool {

std::shared_ptr<sim::SimulatedPc> InstallWorld(const std::string& path, std::string& error) {
    sim::Scenario scenario;
    if (!path.empty()) {
        sim::ScenarioError problem;
        if (!sim::LoadScenarioFile(path, scenario, problem)) {
            error = problem.ToString();
            return nullptr;
        }
    }
    auto pc = std::make_shared<sim::SimulatedPc>();
    pc->Apply(scenario);
    if (!platform::Install(pc)) {
        error = "a backend is already in use";
        return nullptr;
    }
    return pc;
}

}  // namespace connectkit::tool
