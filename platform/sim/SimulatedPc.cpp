#include "platform/sim/SimulatedPc.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/sim/wificard/SimWifiCard.h"

namespace connectkit::sim {

SimulatedPc::SimulatedPc() : SimulatedPc(VirtualClock::Options{}) {}

SimulatedPc::SimulatedPc(VirtualClock::Options clockOptions) : clock_(clockOptions, &faults_) {}

void SimulatedPc::Apply(const Scenario& scenario) {
    faults_.Clear();
    registry_.Clear();
    files_.Clear();
    fileContents_.Clear();
    debugOutput_.Clear();
    processes_.Clear();
    devices_.Clear();
    ApplyWifiCard(scenario.wifiCard, registry_, files_, devices_, adapters_);
    wifiDirect_.Apply(scenario.wifiDirect);
    systemFacts_.Apply(scenario.system);
    firewall_.Reset();
    // Built-in programs first, so that a scenario's own entry replaces them.
    processes_.Install(L"netsh", wifiDirect_.NetshProgram());
    if (scenario.localTime) {
        clock_.SetLocalTime(*scenario.localTime, scenario.utcOffsetMinutes);
    }
    for (const auto& value : scenario.registry) {
        registry_.Write(value.hive, value.key, value.name, value.data);
    }
    if (scenario.mainModuleDirectory) {
        files_.SetMainModuleDirectory(*scenario.mainModuleDirectory);
    }
    for (const auto& file : scenario.files) {
        files_.AddFile(file);
    }
    for (const auto& [path, text] : scenario.fileContents) {
        fileContents_.SetText(path, text);
    }
    for (const auto& [folder, host] : scenario.hostFolders) {
        std::string error;
        if (!fileContents_.MapHostFolder(folder, host, error)) {
            LogErrorFun("[SimulatedPc] host folder not mapped: %s", error.c_str());
        }
    }
    for (const auto& program : scenario.programs) {
        processes_.Install(program.name,
                           SimProcesses::Program{program.exitCode, program.durationMs, nullptr});
    }
    for (const auto& rule : scenario.faults) {
        faults_.Add(rule);
    }
    LogWarnFun(
        "[SimulatedPc] world applied: %zu registry values, %zu files, %zu programs, "
        "%zu fault rules%s%.200s",
        scenario.registry.size(), scenario.files.size(), scenario.programs.size(),
        scenario.faults.size(), scenario.description.empty() ? "" : "; ",
        scenario.description.c_str());
}

SimulatedPc::Census SimulatedPc::TakeCensus() const {
    auto wifiDirect = wifiDirect_.TakeCensus();
    return Census{clock_.KnownThreads(),
                  clock_.PendingEvents(),
                  loader_.OpenLibraries(),
                  DriverLog().outstandingBuffers,
                  wifiDirect.publishers + wifiDirect.listeners + wifiDirect.devices,
                  wifiDirect.registrations};
}

}  // namespace connectkit::sim
