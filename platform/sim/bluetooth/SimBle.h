#pragma once
// The simulated PC's Bluetooth LE: the air around it, the advertisement
// watcher that listens to it, the controller's vendor multi-advertising
// feature and the process's token privileges, seen through the BluetoothLE
// and Privileges ports and through the controllers' control codes.
//
// - The air: phones, each with an address, a signal strength, an interval
//   (virtual time), an advertisement type and its sections as the platform
//   parses them (type and bytes, any length, malformed ones included), and
//   an optional scan response. Every instance the controller has enabled is
//   on the air too, as an advertiser with the controller's address, the
//   advertising type and interval of its parameters and its data parsed into
//   sections (cut where an AD structure overruns its bytes).
// - The watcher: Start reports Started, or, with `abortOnStart` or while the
//   Bluetooth radio is not on, Aborted with a Stopped event (RadioNotAvailable
//   when the radio is off, else `abortError`). While started, each advertiser
//   delivers every interval to every started watcher an event for its
//   advertisement, and in active scanning mode, when it is scannable or
//   connectable and has one, a second event of type ScanResponse with its scan
//   response. Filters apply to each event: the in-range threshold
//   (rawSignalStrength >= threshold) and the byte patterns (none set, or any
//   one found in a section of its type at its offset). Timestamps are the
//   virtual clock's, as DateTime. Stop moves to Stopped and reports Stopped
//   with Success; when the radio goes off, a started watcher moves to Aborted
//   and reports Stopped with RadioNotAvailable, or nothing at all with
//   `silentOnRadioOff` (the fault some drivers show). Handlers removed are not
//   called again; a watcher that is let go stops.
// - The controllers' control codes: IOCTL_BTH_GET_LOCAL_INFO answers the
//   controller's address, name, class, manufacturer, subversion and
//   `lmpVersion`; IOCTL_BTH_HCI_VENDOR_COMMAND needs SeLoadDriverPrivilege
//   enabled in the process (else ERROR_PRIVILEGE_NOT_HELD, 1314) and is
//   answered by the vendor controller (SimHciController.h), its latency and
//   the stack's wait taken in virtual time. The controller is powered while
//   the Bluetooth radio is on: switched off, it answers nothing and its
//   instances leave the air.
// - The Realtek Bluetooth library (SimRealtekBluetooth.h) lies in System32
//   when `realtekLibrary.present` says so (by default, when the Wi-Fi card is
//   Realtek's); what it sends reaches the same controller while the
//   Bluetooth radio is on, so its advertisements go on the air too.
// - Privileges: enabling a privilege answers 0 in an elevated process and
//   ERROR_NOT_ALL_ASSIGNED otherwise.
//
// Events run on the clock's dispatcher threads, never with the model's lock
// held. Advertisers only keep the clock busy while a watcher is started.
//
// Fault points: "ble.newWatcher" (NewWatcher answers null), "privileges.enable".

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ports/BluetoothLE.h"
#include "platform/ports/Privileges.h"
#include "platform/sim/bluetooth/SimHciController.h"
#include "platform/sim/bluetooth/SimRealtekBluetooth.h"
#include "platform/sim/core/SimModel.h"

namespace connectkit::sim {

class FaultInjector;
class SimBluetooth;
class SimFileSystem;
class VirtualClock;
namespace ble {
struct World;
}

// One advertiser on the air.
struct SimBlePhone {
    std::string name = "phone";
    uint64_t address = 0x5C0A1B2C3D4E;
    int16_t rssi = -60;
    uint32_t intervalMs = 100;
    platform::BleAdvertisementType type = platform::BleAdvertisementType::NonConnectableUndirected;
    std::vector<platform::BleDataSection> advertisement;
    std::vector<platform::BleDataSection> scanResponse;
    bool onAir = true;
};

struct SimBleConfig {
    // Whether the process runs elevated (holds SeLoadDriverPrivilege).
    bool elevated = true;
    // The controllers' LMP version (9: Bluetooth 5.0).
    uint8_t lmpVersion = 9;
    SimHciSettings controller;
    std::vector<SimBlePhone> phones;
    // The signal strength at which this PC's own advertisements are heard.
    int16_t ownRssi = -40;

    struct RealtekLibrary {
        // Unset: present when the Wi-Fi card is Realtek's.
        std::optional<bool> present;
        SimRealtekBluetoothSettings settings;
    } realtekLibrary;

    struct Watcher {
        bool abortOnStart = false;
        platform::BluetoothError abortError = platform::BluetoothError::OtherError;
        bool silentOnRadioOff = false;
        // The in-range threshold is refused as Windows refuses a call: it throws.
        bool refuseThreshold = false;
    } watcher;
};

class SimBle final : public platform::BluetoothLE, public platform::Privileges, public SimModel {
public:
    SimBle(VirtualClock& clock, FaultInjector& faults, SimBluetooth& bluetooth,
           SimFileSystem& files);
    ~SimBle() override;

    std::shared_ptr<platform::BleAdvertisementWatcher> NewWatcher() override;
    uint32_t Enable(const std::wstring& name) override;

    void Reset() override;
    // Installs the scenario's "ble".
    void Apply(const Scenario& scenario) override;
    void Count(SimCensus& census) const override;

    // C++ control for tests and the tool, all thread-safe.
    // Puts a phone on the air (replacing one of the same name) or takes it
    // off.
    void PutOnAir(const SimBlePhone& phone);
    void TakeOffAir(const std::string& name);
    // What is on the air now: the phones on it and this PC's enabled
    // instances (named "instance N").
    std::vector<SimBlePhone> Air() const;
    // The vendor controller, for its instances and the commands it saw.
    SimHciController& Controller();

private:
    SimBluetooth& bluetooth_;
    SimFileSystem& files_;
    std::shared_ptr<ble::World> world_;
};

}  // namespace connectkit::sim
