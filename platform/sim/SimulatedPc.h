#pragma once
// The simulated PC: one coherent model of a laptop behind every port. Tests
// and the command-line tool configure it through a Scenario (JSON) or through
// the models' own C++ interfaces, then install it as the process's backend.

#include <memory>
#include <vector>

#include "platform/ports/Backend.h"
#include "platform/sim/bluetooth/SimBle.h"
#include "platform/sim/bluetooth/SimBluetooth.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/SimModel.h"
#include "platform/sim/core/VirtualClock.h"
#include "platform/sim/machine/SimDevices.h"
#include "platform/sim/machine/SimFileSystem.h"
#include "platform/sim/machine/SimFirewall.h"
#include "platform/sim/machine/SimLoader.h"
#include "platform/sim/machine/SimNetworkAdapters.h"
#include "platform/sim/machine/SimProcesses.h"
#include "platform/sim/machine/SimRegistry.h"
#include "platform/sim/machine/SimSockets.h"
#include "platform/sim/system/SimDebugOutput.h"
#include "platform/sim/system/SimFileContents.h"
#include "platform/sim/system/SimSystemFacts.h"
#include "platform/sim/wificard/SimWifiCard.h"
#include "platform/sim/wifidirect/SimWiFiDirect.h"
#include "platform/sim/wlan/SimWlan.h"

namespace connectkit::sim {

class SimulatedPc final : public platform::Backend {
public:
    using Census = SimCensus;

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
    // The Bluetooth controllers and the radios: one model behind both ports.
    SimBluetooth& radios() override { return bluetooth_; }
    SimBluetooth& bluetooth() override { return bluetooth_; }
    // Bluetooth LE and the process's privileges: one model behind both ports.
    SimBle& bluetoothLE() override { return ble_; }
    SimBle& privileges() override { return ble_; }
    SimWlan& wlan() override { return wlan_; }
    SimSockets& sockets() override { return sockets_; }
    FaultInjector& faults() { return faults_; }
    SimWifiCard& wifiCard() { return wifiCard_; }

    // Replaces the world with the scenario's: every model is reset, then
    // every model applies its section. The tick count goes on, as it does on
    // a real PC, so objects created earlier keep sensible timings.
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
    SimFirewall firewall_{clock_, faults_};
    SimDebugOutput debugOutput_;
    SimFileContents fileContents_{clock_, faults_, files_};
    SimSystemFacts systemFacts_;
    SimSockets sockets_;
    SimWifiCard wifiCard_{registry_, files_, devices_, adapters_};
    SimWiFiDirect wifiDirect_{clock_, faults_, adapters_, devices_, processes_};
    SimBluetooth bluetooth_{clock_, faults_, registry_, devices_};
    SimBle ble_{clock_, faults_, bluetooth_, files_};
    SimWlan wlan_{clock_, faults_, adapters_, processes_};

    // The order models are reset and applied in, which is the only order
    // that matters between them:
    // - the hardware first: like its installer, it leaves registry values,
    //   driver files and device nodes in the machine;
    // - then the machine's own sections, so that a scenario's registry
    //   values and files win over what the hardware left;
    // - faults last, so that applying the world trips none of them.
    // A scenario's programs win over the models' whatever the order (see
    // SimProcesses). The Wi-Fi card lists its adapter before Wi-Fi Direct's
    // virtual one because it took its share of the adapters first. WLAN
    // comes after the card: it gives the card's adapter its name and lease.
    // A new model is one line here, after the models it fills.
    const std::vector<SimModel*> models_{&clock_,        &wifiCard_,    &wifiDirect_, &bluetooth_,
                                         &wlan_,         &registry_,    &files_,      &processes_,
                                         &devices_,      &loader_,      &firewall_,   &debugOutput_,
                                         &fileContents_, &systemFacts_, &ble_,        &faults_};
};

}  // namespace connectkit::sim
