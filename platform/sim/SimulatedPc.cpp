#include "platform/sim/SimulatedPc.h"

#include "SDK/Util/LogTool/LogTool.h"

namespace connectkit::sim {

SimulatedPc::SimulatedPc() : SimulatedPc(VirtualClock::Options{}) {}

SimulatedPc::SimulatedPc(VirtualClock::Options clockOptions) : clock_(clockOptions, &faults_) {}

void SimulatedPc::Apply(const Scenario& scenario) {
    for (SimModel* model : models_) {
        model->Reset();
    }
    for (SimModel* model : models_) {
        model->Apply(scenario);
    }
    LogWarnFun(
        "[SimulatedPc] world applied: %zu registry values, %zu files, %zu programs, "
        "%zu fault rules%s%.200s",
        scenario.registry.size(), scenario.files.size(), scenario.programs.size(),
        scenario.faults.size(), scenario.description.empty() ? "" : "; ",
        scenario.description.c_str());
}

SimulatedPc::Census SimulatedPc::TakeCensus() const {
    Census census;
    for (const SimModel* model : models_) {
        model->Count(census);
    }
    return census;
}

}  // namespace connectkit::sim
