#pragma once
// The Win32 calls behind classic Bluetooth, resolved at run time
// (SystemLibrary.h says why): a PC whose system lacks bthprops.cpl must
// still load connectkit.dll. DeviceIoControl and CloseHandle on the
// radio handles are in the table too, so that the double also sees the
// control codes and the closing of the handles it handed out.

// clang-format off
#include <windows.h>
#include <bluetoothapis.h>
// clang-format on

#include <cstdint>
#include <memory>
#include <string>

namespace connectkit::win {

struct BluetoothEntries {
    decltype(&::BluetoothFindFirstRadio) findFirstRadio = nullptr;
    decltype(&::BluetoothFindNextRadio) findNextRadio = nullptr;
    decltype(&::BluetoothFindRadioClose) findRadioClose = nullptr;
    decltype(&::BluetoothGetRadioInfo) getRadioInfo = nullptr;
    decltype(&::BluetoothFindFirstDevice) findFirstDevice = nullptr;
    decltype(&::BluetoothFindDeviceClose) findDeviceClose = nullptr;
    decltype(&::DeviceIoControl) deviceIoControl = nullptr;
    decltype(&::CloseHandle) closeHandle = nullptr;
};

// Where the entries come from: the system's libraries unless a test names
// its doubles; one search rule for both (SystemLibrary.h).
struct BluetoothLibraries {
    std::wstring bluetooth = L"bthprops.cpl";
    std::wstring deviceIo = L"kernel32.dll";
    DWORD searchFlags = LOAD_LIBRARY_SEARCH_SYSTEM32;
};

// Every entry, with the libraries kept loaded while the table is held; null
// with the Win32 error of the failed load or lookup in `error` (logged).
std::shared_ptr<const BluetoothEntries> LoadBluetoothEntries(const BluetoothLibraries& libraries,
                                                             uint32_t& error);

}  // namespace connectkit::win
