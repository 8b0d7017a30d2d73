#pragma once
// The simulated PC: one coherent model of a laptop behind every port. Tests
// and the command-line tool configure it through a Scenario (JSON) or through
// the models' own C++ interfaces, then install it as the process's backend.

#include <memory>

#include "platform/ports/Backend.h"
#include "platform/sim/FaultInjector.h"
#include "platform/sim/Scenario.h"
#include "platform/sim/SimDevices.h"
#include "platform/sim/SimFileSystem.h"
#include "platform/sim/SimFirewall.h"
#include "platform/sim/SimLoader.h"
#include "platform/sim/SimNetworkAdapters.h"
#include "platform/sim/SimProcesses.h"
#include "platform/sim/SimRegistry.h"
#include "platform/sim/SimWiFiDirect.h"
#include "platform/sim/VirtualClock.h"

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
    platform::Clock& clock() override { return clock_; }
    platform::Registry& registry() override { return registry_; }
    platform::Loader& loader() override { return loader_; }
    platform::FileSystem& files() override { return files_; }
    platform::Processes& processes() override { return processes_; }
    platform::DeviceSetup& devices() override { return devices_; }
    platform::NetworkAdapters& adapters() override { return adapters_; }
    platform::WiFiDirect& wifiDirect() override { return wifiDirect_; }
    platform::Firewall& firewall() override { return firewall_; }

    // Replaces the world with the scenario's. The tick count goes on, as it
    // does on a real PC, so objects created earlier keep sensible timings.
    void Apply(const Scenario& scenario);
    void Reset() { Apply(Scenario{}); }

    VirtualClock& Clock() { return clock_; }
    SimRegistry& Registry() { return registry_; }
    SimFileSystem& Files() { return files_; }
    SimLoader& Loader() { return loader_; }
    SimProcesses& Processes() { return processes_; }
    SimDevices& Devices() { return devices_; }
    SimNetworkAdapters& Adapters() { return adapters_; }
    SimWiFiDirect& WiFiDirect() { return wifiDirect_; }
    SimFirewall& Firewall() { return firewall_; }
    FaultInjector& Faults() { return faults_; }
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
};

}  // namespace connectkit::sim
