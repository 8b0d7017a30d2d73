#include "support/RadioWorld.h"

namespace connectkit::test {

sim::Scenario BluetoothWorld(Controller::Radio radio, sim::SimBleConfig ble) {
    sim::Scenario world;
    world.ble = std::move(ble);
    Controller controller;
    controller.radio = radio;
    world.bluetooth.controllers.push_back(controller);
    world.bluetooth.wifi.present = false;
    return world;
}

sim::SimBlePhone BlePhone(uint64_t address, std::vector<platform::BleDataSection> sections,
                          int16_t rssi) {
    sim::SimBlePhone phone;
    phone.name = std::to_string(address);
    phone.address = address;
    phone.rssi = rssi;
    phone.advertisement = std::move(sections);
    return phone;
}

std::wstring ControllerKey(const sim::Scenario& world, size_t controller) {
    return L"SYSTEM\\CurrentControlSet\\Enum\\" +
           world.bluetooth.controllers[controller].instanceId + L"\\Device Parameters";
}

void SetControllerValue(sim::Scenario& world, const std::wstring& name, platform::RegistryData data,
                        size_t controller) {
    world.registry.push_back({platform::RegistryHive::LocalMachine,
                              ControllerKey(world, controller), name, std::move(data)});
}

}  // namespace connectkit::test
