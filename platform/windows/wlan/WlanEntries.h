#pragma once
// The wlanapi calls, resolved at run time (LoadLibraryExW and GetProcAddress)
// rather than imported, as classic Bluetooth reaches bthprops.cpl: the DLL
// must load in a host on a Windows edition without the WLAN service's
// library (Server without the wireless feature), and the tests run the same
// code in one process against Wine's own wlanapi and against a double that
// checks the structures it is handed. A DLL override
// (WINEDLLOVERRIDES=wlanapi=n) would swap the library for the whole process
// and could not do both.

// clang-format off
#include <windows.h>
#include <wlanapi.h>
// clang-format on

#include <cstdint>
#include <memory>
#include <string>

namespace connectkit::win {

struct WlanEntries {
    decltype(&::WlanOpenHandle) openHandle = nullptr;
    decltype(&::WlanCloseHandle) closeHandle = nullptr;
    decltype(&::WlanEnumInterfaces) enumInterfaces = nullptr;
    decltype(&::WlanScan) scan = nullptr;
    decltype(&::WlanGetNetworkBssList) getNetworkBssList = nullptr;
    decltype(&::WlanQueryInterface) queryInterface = nullptr;
    decltype(&::WlanConnect) connect = nullptr;
    decltype(&::WlanDisconnect) disconnect = nullptr;
    decltype(&::WlanRegisterNotification) registerNotification = nullptr;
    decltype(&::WlanFreeMemory) freeMemory = nullptr;
};

// Every entry, with the library kept loaded while the table is held; null
// with the Win32 error of the failed load or look-up in `error` (logged).
// The system's own wlanapi.dll is taken from the system folder only, as the
// Bluetooth libraries are, so a wlanapi.dll planted beside the host is never
// loaded; any other name (a test double) is looked for the usual way.
std::shared_ptr<const WlanEntries> LoadWlanEntries(const std::wstring& library, uint32_t& error);

}  // namespace connectkit::win
