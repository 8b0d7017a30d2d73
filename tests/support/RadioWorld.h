#pragma once
// Worlds with a Bluetooth controller and a Wi-Fi radio, and observers that
// record what they hear and on which thread.

#include <mutex>
#include <thread>
#include <vector>

#include "connectkit/BluetoothManage.h"
#include "connectkit/WifiManage.h"
#include "platform/ports/Radios.h"
#include "support/SimWorld.h"

namespace connectkit::test {

using Controller = sim::SimBluetoothConfig::Controller;

// One controller whose radio is in `radio` with `ble` on the air around it,
// and no Wi-Fi radio.
sim::Scenario BluetoothWorld(Controller::Radio radio, sim::SimBleConfig ble = {});
// A controller's "Device Parameters" key.
std::wstring ControllerKey(const sim::Scenario& world, size_t controller = 0);
// Puts a value under a controller's key, over what the controller wrote.
void SetControllerValue(sim::Scenario& world, const std::wstring& name, platform::RegistryData data,
                        size_t controller = 0);

// A phone on the air advertising `sections` every 100 ms, named after its
// address.
sim::SimBlePhone BlePhone(uint64_t address, std::vector<platform::BleDataSection> sections,
                          int16_t rssi = -50);

struct Heard {
    platform::RadioState state;
    std::thread::id thread;
};

class RadioRecorder
    : public ConnectKitBluetooth::BluetoothManage::IBluetoothStateChangeNotification,
      public ConnectKitWifi::WifiManage::IWifiStateChangeNotification {
public:
    void OnBluetoothStateChanged(platform::RadioState state) override { Record(state); }
    void OnWifiStateChanged(platform::RadioState state) override { Record(state); }
    std::vector<Heard> Calls() const {
        std::lock_guard<std::mutex> guard(mutex_);
        return calls_;
    }

private:
    void Record(platform::RadioState state) {
        std::lock_guard<std::mutex> guard(mutex_);
        calls_.push_back({state, std::this_thread::get_id()});
    }
    mutable std::mutex mutex_;
    std::vector<Heard> calls_;
};

// Throws from every call, as a careless host's observer might.
class Thrower : public ConnectKitBluetooth::BluetoothManage::IBluetoothStateChangeNotification,
                public ConnectKitWifi::WifiManage::IWifiStateChangeNotification {
public:
    void OnBluetoothStateChanged(platform::RadioState) override { throw 42; }
    void OnWifiStateChanged(platform::RadioState) override { throw 42; }
};

}  // namespace connectkit::test
