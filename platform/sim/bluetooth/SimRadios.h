#pragma once
// Placeholder until the Bluetooth controller and the radios are modelled: no
// radio and no classic Bluetooth radio.

#include "platform/ports/BluetoothClassic.h"
#include "platform/ports/Radios.h"

namespace connectkit::sim {

class SimRadios final : public platform::Radios {
public:
    void GetRadiosAsync(ListCompletion completed) override {
        completed(platform::AsyncStatus::Completed, {});
    }
};

class SimBluetoothClassic final : public platform::BluetoothClassic {
public:
    std::unique_ptr<platform::BluetoothRadioSearch> FindFirstRadio(
        std::unique_ptr<platform::BluetoothRadio>& first, uint32_t& error) override {
        first.reset();
        error = platform::kErrorNoMoreItems;
        return nullptr;
    }
    uint32_t FindFirstDevice(const platform::BluetoothDeviceSearch&,
                             platform::BluetoothDeviceInfo&) override {
        return platform::kErrorNoMoreItems;
    }
};

}  // namespace connectkit::sim
