#pragma once
// Placeholder until bthprops is reached: no radio, as Wine answers.

#include "platform/ports/BluetoothClassic.h"
#include "platform/ports/Errors.h"

namespace connectkit::win {

class WinBluetoothClassic final : public platform::BluetoothClassic {
public:
    std::unique_ptr<platform::BluetoothRadioSearch> FindFirstRadio(
        std::unique_ptr<platform::BluetoothRadio>& first, uint32_t& error) override {
        first.reset();
        error = platform::kErrorCallNotImplemented;
        return nullptr;
    }
    uint32_t FindFirstDevice(const platform::BluetoothDeviceSearch&,
                             platform::BluetoothDeviceInfo&) override {
        return platform::kErrorCallNotImplemented;
    }
};

}  // namespace connectkit::win
