#include "platform/windows/bluetooth/BluetoothEntries.h"

#include "platform/windows/core/SystemLibrary.h"

namespace connectkit::win {
namespace {

struct LoadedEntries final : BluetoothEntries {
    LoadedModule bluetooth;
    LoadedModule deviceIo;
};

}  // namespace

std::shared_ptr<const BluetoothEntries> LoadBluetoothEntries(const BluetoothLibraries& libraries,
                                                             uint32_t& error) {
    auto entries = std::make_shared<LoadedEntries>();
    const SystemLibraryLoader loader(L"[Bluetooth]", error);
    if (!loader.Load(libraries.bluetooth, libraries.searchFlags, entries->bluetooth) ||
        !loader.Load(libraries.deviceIo, libraries.searchFlags, entries->deviceIo)) {
        return nullptr;
    }
    HMODULE bluetooth = entries->bluetooth.Get();
    HMODULE deviceIo = entries->deviceIo.Get();
    bool found = loader.Resolve(bluetooth, "BluetoothFindFirstRadio", entries->findFirstRadio) &&
                 loader.Resolve(bluetooth, "BluetoothFindNextRadio", entries->findNextRadio) &&
                 loader.Resolve(bluetooth, "BluetoothFindRadioClose", entries->findRadioClose) &&
                 loader.Resolve(bluetooth, "BluetoothGetRadioInfo", entries->getRadioInfo) &&
                 loader.Resolve(bluetooth, "BluetoothFindFirstDevice", entries->findFirstDevice) &&
                 loader.Resolve(bluetooth, "BluetoothFindDeviceClose", entries->findDeviceClose) &&
                 loader.Resolve(deviceIo, "DeviceIoControl", entries->deviceIoControl) &&
                 loader.Resolve(deviceIo, "CloseHandle", entries->closeHandle);
    return found ? entries : nullptr;
}

}  // namespace connectkit::win
