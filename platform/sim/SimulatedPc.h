#pragma once
// The simulated PC: one coherent model of a laptop behind every port. Tests
// and the command-line tool configure it through a Scenario (JSON) or through
// the models' own C++ interfaces, then install it as the process's backend.

#include <memory>

#include "platform/ports/Backend.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/VirtualClock.h"
#include "platform/sim/machine/SimDevices.h"
#include "platform/sim/machine/SimFileSystem.h"
#include "platform/sim/machine/SimFirewall.h"
#include "platform/sim/machine/SimLoader.h"
#include "platform/sim/machine/SimNetworkAdapters.h"
#include "platform/sim/machine/SimProcesses.h"
#include "platform/sim/machine/SimRegistry.h"
#include "platform/sim/system/SimDebugOutput.h"
#include "platform/sim/system/SimFileContents.h"
#include "platform/sim/system/SimSystemFacts.h"
#include "platform/sim/wifidirect/SimWiFiDirect.h"

namespace connectkit::sim {

class SimulatedPc final : public platform::Backend {
public:
    // What is still open or running: the figures a leak check compares.
    struct Census {
        size_t knownThreads = 0;
        size_t pendingEvents = 0;
        size_t openLibraries = 0;
        size_t driverBuffers = 0;
        // Wi-Fi Direct publishers, listeners and devices still alive, and the
        // handlers still registered on them.
        size_t wifiDirectObjects = 0;
        size_t wifiDirectRegistrations = 0;
    };

    SimulatedPc();
    explicit SimulatedPc(VirtualClock::Options clockOptions);

    std::wstring Name() const override { return L"simulated PC"; }

    // One accessor per model: each answers as the port it implements and as
    // the model that tests and the tool configure.
    VirtualClock& clock() override { return clock_; }
    SimRegistry& registry() override { return registry_; }
    SimLoader& loader() override { return loader_; }
    SimFileSystem& files() override { return files_; }
    SimProcesses& processes() override { return processes_; }
    SimDevices& devices() override { return devices_; }
    SimNetworkAdapters& adapters() override { return adapters_; }
    SimWiFiDirect& wifiDirect() override { return wifiDirect_; }
    SimFirewall& firewall() override { return firewall_; }
    SimDebugOutput& debugOutput() override { return debugOutput_; }
    SimFileContents& fileContents() override { return fileContents_; }
    SimSystemFacts& systemFacts() override { return systemFacts_; }
    FaultInjector& faults() { return faults_; }

    // Replaces the world with the scenario's. The tick count goes on, as it
    // does on a real PC, so objects created earlier keep sensible timings.
    void Apply(const Scenario& scenario);
    void Reset() { Apply(Scenario{}); }

    Census TakeCensus() const;

private:
    FaultInjector faults_;
    VirtualClock clock_;
    SimRegistry registry_{clock_, faults_};
    SimFileSystem files_{clock_, faults_};
    SimLoader loader_{clock_, faults_, files_};
    SimProcesses processes_{clock_, faults_};
    SimDevices devices_{clock_, faults_};
    SimNetworkAdapters adapters_{clock_, faults_};
    SimWiFiDirect wifiDirect_{clock_, faults_, adapters_, devices_};
    SimFirewall firewall_{clock_, faults_};
    SimDebugOutput debugOutput_;
    SimFileContents fileContents_{clock_, faults_, files_};
    SimSystemFacts systemFacts_;
};

}  // namespace connectkit::sim
