#pragma once
// Bluetooth LE advertisements through the Windows Runtime, over
// hand-declared ABI interfaces (winrt/abi/BluetoothAdvertisement.h). The
// watcher and everything it is given come from a RuntimeActivation: the
// system's by default, a test's fakes otherwise. A watcher the runtime
// cannot activate (not registered, as under Wine) makes NewWatcher answer
// null with a log line naming the class and the HRESULT.

#include <memory>

#include "platform/ports/BluetoothLE.h"
#include "platform/windows/winrt/RuntimeActivation.h"

namespace connectkit::win {

class WinBluetoothLE final : public platform::BluetoothLE {
public:
    explicit WinBluetoothLE(std::shared_ptr<RuntimeActivation> runtime = SystemActivation())
        : runtime_(std::move(runtime)) {}

    std::shared_ptr<platform::BleAdvertisementWatcher> NewWatcher() override;

private:
    std::shared_ptr<RuntimeActivation> runtime_;
};

}  // namespace connectkit::win
