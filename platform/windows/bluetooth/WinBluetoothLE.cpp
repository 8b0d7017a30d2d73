#include "platform/windows/bluetooth/WinBluetoothLE.h"

#include "platform/windows/bluetooth/WinRtAdvertisementWatcher.h"
#include "platform/windows/winrt/Activate.h"

namespace connectkit::win {

std::shared_ptr<platform::BleAdvertisementWatcher> WinBluetoothLE::NewWatcher() {
    auto watcher =
        Activate<abi::IBluetoothLEAdvertisementWatcher>(*runtime_, abi::kAdvertisementWatcherClass);
    return watcher ? std::make_shared<WinRtAdvertisementWatcher>(runtime_, std::move(watcher))
                   : nullptr;
}

}  // namespace connectkit::win
