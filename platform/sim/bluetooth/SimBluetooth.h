#pragma once
// The simulated PC's radios: its Bluetooth controllers and its Wi-Fi radio,
// seen through four ports.
//
// - Device setup: each controller is a USB device node of the Bluetooth
//   setup class (kBluetoothClassGuid) with its hardware ids and problem code;
//   its software-enumerated "BTH\MS..." children belong to the same class.
//   Disabling a controller through its class installer stops it at once;
//   enabling it starts it `restartLatencyMs` later, and the registry's
//   "RadioState" at that moment decides the radio's state: 2 on, anything
//   else (or no such DWORD) switched off hard, that is, not listed at all.
// - Registry: applying a controller writes "RadioState" (DWORD, 2 while on,
//   4 otherwise), "DeviceAddressCache" (the address as hex text, most
//   significant byte first) and "Local Name" (UTF-8, REG_BINARY) under
//   HKLM SYSTEM\CurrentControlSet\Enum\<instance id>\Device Parameters. The
//   scenario's own "registry" section is applied later and wins, so a world
//   may hold values of the wrong type or length. Switching the radio through
//   the platform writes "RadioState" as Windows does.
// - Classic Bluetooth: one Win32 radio per running controller (present,
//   enabled, no problem), with address, name, class, manufacturer and LMP
//   subversion. Control code 0x411008 reloads the name from "Local Name" (at
//   most 247 characters, as BLUETOOTH_RADIO_INFO holds them). A handle whose
//   controller stopped answers ERROR_DEVICE_NOT_CONNECTED. An inquiry takes
//   its 1.28 s units of virtual time and finds no device.
// - Radios: the listing completes `listing.latencyMs` later on a dispatcher
//   thread with the next entry of `listing.outcomes` (consumed; once empty,
//   Completed), built when it completes: the Wi-Fi radio when present, then
//   one Bluetooth radio per running controller that is not switched off
//   hard, then `nullEntries` null entries. Every listing hands out new
//   objects. SetStateAsync switches after `latencyMs` and raises
//   StateChanged on every object of that radio (twice with
//   `stateChangedTwice`); a request for the state the radio already has, or
//   for a disabled radio, changes nothing. A radio whose controller stopped
//   reports Off.
//
// - An extension (the LE model, SimBle.h) answers the control codes the
//   radios model does not know itself, and hears of every change of a
//   Bluetooth radio's state.
//
// Events run on the clock's dispatcher threads, never with the model's lock
// held. Objects keep the model's state alive; the model knows them weakly.
//
// Fault points: "radios.list" (GetRadiosAsync throws), "bluetooth.findRadio",
// "bluetooth.radioInfo", "bluetooth.control", "bluetooth.findDevice".

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ports/BluetoothClassic.h"
#include "platform/ports/Radios.h"
#include "platform/sim/core/SimModel.h"

namespace connectkit::sim {

class FaultInjector;
class SimDevices;
class SimRegistry;
class VirtualClock;
namespace radios {
struct World;
}

inline constexpr wchar_t kBluetoothClassGuid[] = L"{E0CBF06C-CD8B-4647-BB8A-263B43F0F974}";

// How one platform radio answers SetStateAsync and State.
struct SimRadioBehaviour {
    // Busy: SetStateAsync throws 0x800700AA (ERROR_BUSY as an HRESULT), as
    // the runtime does while another switch is under way.
    enum class Access { Allowed, DeniedByUser, DeniedBySystem, Busy };
    Access access = Access::Allowed;
    uint32_t latencyMs = 200;
    bool stateChangedTwice = false;
    // State throws RPC_E_DISCONNECTED.
    bool stateThrows = false;
};

struct SimBluetoothConfig {
    struct Controller {
        enum class Radio { On, Off, HardOff, Disabled };
        std::wstring instanceId = L"USB\\VID_8087&PID_0026\\5&2A1B3C4D&0&10";
        std::vector<std::wstring> hardwareIds{L"USB\\VID_8087&PID_0026&REV_0002",
                                              L"USB\\VID_8087&PID_0026"};
        std::vector<std::wstring> softwareNodes{L"BTH\\MS_BTHBRB\\7&1F2E3D4C&0&1",
                                                L"BTH\\MS_RFCOMM\\7&1F2E3D4C&0&0"};
        bool present = true;
        uint32_t problemCode = 0;
        Radio radio = Radio::On;
        uint64_t address = 0xA1B2C3D4E5F6;
        std::wstring name = L"LAPTOP-SIM";
        uint32_t classOfDevice = 0x2A010C;
        uint16_t manufacturer = 2;
        uint16_t lmpSubversion = 0x100;
        uint32_t restartLatencyMs = 1000;
        SimRadioBehaviour behaviour;
    };
    // None by default: a PC without Bluetooth.
    std::vector<Controller> controllers;
    // Whether the "BTH\MS..." nodes enumerate after the controllers rather
    // than before them.
    bool softwareNodesLast = false;

    struct Listing {
        uint32_t latencyMs = 50;
        std::vector<platform::AsyncStatus> outcomes;
        uint32_t nullEntries = 0;
    } listing;

    struct Wifi {
        // Unset: present when the world has a Wi-Fi card.
        std::optional<bool> present;
        platform::RadioState state = platform::RadioState::On;
        std::wstring name = L"Wi-Fi";
        SimRadioBehaviour behaviour;
    } wifi;
};

// What another model adds to the controllers. Called without the radios'
// lock held.
class SimControllerExtension {
public:
    virtual ~SimControllerExtension() = default;
    // A control code other than the name reload, sent to a running
    // controller; `output` holds `outputSize` zero bytes.
    virtual uint32_t Control(const SimBluetoothConfig::Controller& controller, uint32_t code,
                             const std::vector<uint8_t>& input, std::vector<uint8_t>& output,
                             uint32_t outputSize) = 0;
    // A Bluetooth radio's state changed; on a dispatcher thread.
    virtual void BluetoothChanged() = 0;
};

// What the model was asked to do, for tests.
struct SimRadiosHistory {
    uint32_t listings = 0;
    uint32_t setStateCalls = 0;
    uint32_t controllerStarts = 0;
    uint32_t nameReloads = 0;
    uint32_t inquiries = 0;
};

class SimBluetooth final : public platform::Radios,
                           public platform::BluetoothClassic,
                           public SimModel {
public:
    SimBluetooth(VirtualClock& clock, FaultInjector& faults, SimRegistry& registry,
                 SimDevices& devices);
    ~SimBluetooth() override;

    void GetRadiosAsync(ListCompletion completed) override;
    std::unique_ptr<platform::BluetoothRadioSearch> FindFirstRadio(
        std::unique_ptr<platform::BluetoothRadio>& first, uint32_t& error) override;
    uint32_t FindFirstDevice(const platform::BluetoothDeviceSearch& search,
                             platform::BluetoothDeviceInfo& first) override;

    void Reset() override;
    // Installs the scenario's "bluetooth" and "radios": device nodes and
    // registry values of every controller, radios in their states.
    void Apply(const Scenario& scenario) override;
    void Count(SimCensus& census) const override;

    // C++ control for tests and the tool, all thread-safe.
    // The user switches a radio elsewhere (the first running controller's
    // for Bluetooth): StateChanged follows at once on a dispatcher thread.
    void SwitchRadio(platform::RadioKind kind, platform::RadioState state);
    SimRadiosHistory History() const;
    // Whether a running controller's radio is on.
    bool BluetoothOn() const;
    // Hands the control codes it does not know to `extension`, which the
    // model holds weakly.
    void Extend(std::weak_ptr<SimControllerExtension> extension);

private:
    void AddNodes(const SimBluetoothConfig& config);

    SimRegistry& registry_;
    SimDevices& devices_;
    std::shared_ptr<radios::World> world_;
};

}  // namespace connectkit::sim
