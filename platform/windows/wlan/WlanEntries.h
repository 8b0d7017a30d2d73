#pragma once
// The wlanapi calls, resolved at run time (SystemLibrary.h says why): a
// Windows edition without the WLAN service's library (Server without the
// wireless feature) must still load connectkit.dll, and the tests run the
// same code in one process against Wine's own wlanapi and against a double
// that checks the structures it is handed.

// clang-format off
#include <windows.h>
#include <wlanapi.h>
// clang-format on

#include <cstdint>
#include <memory>

#include "platform/windows/core/SystemLibrary.h"

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

inline const LibrarySource kSystemWlanLibrary{L"wlanapi.dll"};

// Every entry, with the library kept loaded while the table is held; null
// with the Win32 error of the failed load or look-up in `error` (logged).
std::shared_ptr<const WlanEntries> LoadWlanEntries(const LibrarySource& library, uint32_t& error);

}  // namespace connectkit::win
