#include "platform/windows/bluetooth/BluetoothEntries.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/core/UniqueHandle.h"

namespace connectkit::win {
namespace {

struct LoadedEntries final : BluetoothEntries {
    LoadedModule bluetooth;
    LoadedModule deviceIo;
};

bool Load(const std::wstring& name, DWORD searchFlags, LoadedModule& module, uint32_t& error) {
    module.Reset(LoadLibraryExW(name.c_str(), nullptr, searchFlags));
    if (!module) {
        error = GetLastError();
        LogErrorFun(L"[Bluetooth] loading %ls failed, error %lu", name.c_str(),
                    static_cast<unsigned long>(error));
        return false;
    }
    return true;
}

template <typename Function>
bool Resolve(HMODULE module, const char* name, Function& function, uint32_t& error) {
    // GetProcAddress answers one generic function type; the entry's own
    // type is the one its header declares.
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    if (!function) {
        error = GetLastError();
        LogErrorFun("[Bluetooth] entry %s not found, error %lu", name,
                    static_cast<unsigned long>(error));
        return false;
    }
    return true;
}

}  // namespace

std::shared_ptr<const BluetoothEntries> LoadBluetoothEntries(const BluetoothLibraries& libraries,
                                                             uint32_t& error) {
    auto entries = std::make_shared<LoadedEntries>();
    if (!Load(libraries.bluetooth, libraries.searchFlags, entries->bluetooth, error) ||
        !Load(libraries.deviceIo, libraries.searchFlags, entries->deviceIo, error)) {
        return nullptr;
    }
    HMODULE bluetooth = entries->bluetooth.Get();
    HMODULE deviceIo = entries->deviceIo.Get();
    bool found = Resolve(bluetooth, "BluetoothFindFirstRadio", entries->findFirstRadio, error) &&
                 Resolve(bluetooth, "BluetoothFindNextRadio", entries->findNextRadio, error) &&
                 Resolve(bluetooth, "BluetoothFindRadioClose", entries->findRadioClose, error) &&
                 Resolve(bluetooth, "BluetoothGetRadioInfo", entries->getRadioInfo, error) &&
                 Resolve(bluetooth, "BluetoothFindFirstDevice", entries->findFirstDevice, error) &&
                 Resolve(bluetooth, "BluetoothFindDeviceClose", entries->findDeviceClose, error) &&
                 Resolve(deviceIo, "DeviceIoControl", entries->deviceIoControl, error) &&
                 Resolve(deviceIo, "CloseHandle", entries->closeHandle, error);
    return found ? entries : nullptr;
}

}  // namespace connectkit::win
