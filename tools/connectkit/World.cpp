#include "World.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/Platform.h"
#include "platform/sim/SimulatedPc.h"

namespace connectkit::tool {

std::shared_ptr<sim::SimulatedPc> InstallWorld(const std::string& path, std::string& error) {
    auto pc = std::make_shared<sim::SimulatedPc>();
    if (!path.empty()) {
        sim::Scenario scenario;
        sim::ScenarioError problem;
        if (!sim::LoadScenarioFile(path, scenario, problem)) {
            error = problem.ToString();
            LogErrorFun("[connectkit] world rejected: %s", error.c_str());
            return nullptr;
        }
        pc->Apply(scenario);
    }
    if (!platform::Install(pc)) {
        error = "a backend is already in use";
        return nullptr;
    }
    return pc;
}

}  // namespace connectkit::tool
