#pragma once
// The Win32 calls behind classic Bluetooth, resolved at run time
// (LoadLibraryW and GetProcAddress) rather than imported, for two reasons.
// connectkit.dll must load in a host on a PC whose system lacks bthprops.cpl
// (an import would make the whole library fail to load there), and the tests
// run the real code against a double of the system library in the same
// process that also runs it against Wine's own: a DLL override would swap
// the library for the whole process. DeviceIoControl and CloseHandle on the
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

// Where the entries come from: the system's libraries, looked for in the
// system folder only (a bthprops.cpl planted beside the host must not be
// loaded), unless a test names its double and where to look for it
// (LoadLibraryExW's search flags; 0 for the ordinary search order).
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
