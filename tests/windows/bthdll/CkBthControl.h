#pragma once
// The one entry the bthprops double exports beyond the system library's
// (and kernel32's DeviceIoControl and CloseHandle, which it answers for the
// handles it hands out): tests reach it with GetProcAddress to set up the
// radios and the device the double pretends to see, and to read back what
// it was asked, in the system library's own structures. Plain C layouts, so
// nothing of either side's C++ runtime crosses over.

// clang-format off
#include <windows.h>
#include <bluetoothapis.h>
// clang-format on

#include <cstdint>

inline constexpr char kCkBthConfigureName[] = "CkBthConfigure";

struct CkBthRadio {
    BLUETOOTH_RADIO_INFO info;  // handed out as is, but for its dwSize
    uint32_t infoError;         // BluetoothGetRadioInfo's answer when nonzero
};

struct CkBthSetup {
    uint32_t radioCount;  // at most 4
    CkBthRadio radios[4];
    uint32_t deviceFound;
    BLUETOOTH_DEVICE_INFO device;  // handed out as is, but for its dwSize
    uint32_t controlError;         // DeviceIoControl's error when nonzero
};

struct CkBthReport {
    // Radio handles and searches handed out and not yet closed.
    uint32_t openHandles;
    // Closes of handles never handed out, closed already or of another kind.
    uint32_t badCloses;
    // Structures whose dwSize was not the system's.
    uint32_t badSizes;
    uint32_t controlCode;
    uint32_t controlOutputSize;
    BLUETOOTH_DEVICE_SEARCH_PARAMS lastSearch;
};

// Applies `setup` when given (starting a fresh record), then fills `report`
// when given. 0 on success, 1 for a setup the double cannot represent.
using CkBthConfigureFunction = int (*)(const CkBthSetup* setup, CkBthReport* report);
