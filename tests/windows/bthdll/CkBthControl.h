#pragma once
// The one entry the bthprops double exports beyond the system library's
// (and kernel32's DeviceIoControl and CloseHandle, which it answers for the
// handles it hands out): tests reach it with GetProcAddress to set up the
// radios and the device the double pretends to see, and to read back what
// it was asked, in the system library's own structures. The radios answer
// the vendor-command and local-information control codes through the
// simulated PC's controller model, compiled in; other codes echo their input. Plain C layouts, so
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
    uint8_t lmpVersion;         // IOCTL_BTH_GET_LOCAL_INFO's, beside info's fields
};

// A fault of the controller model behind the vendor commands
// (sim::SimHciFault): the sub-opcode it hits (0: any), its kind
// (sim::SimHciFault::Kind's value) and for how many commands (0: all).
struct CkHciFault {
    uint8_t subOpcode;
    uint32_t kind;
    uint32_t times;
};

struct CkBthSetup {
    uint32_t radioCount;  // at most 4
    CkBthRadio radios[4];
    uint32_t deviceFound;
    BLUETOOTH_DEVICE_INFO device;  // handed out as is, but for its dwSize
    uint32_t controlError;         // DeviceIoControl's error when nonzero
    uint32_t hciFaultCount;        // at most 4
    CkHciFault hciFaults[4];
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
    uint32_t hciCommands;  // vendor commands the controller model saw
    uint32_t hciEnabled;   // bit n set: the model's instance n advertises
};

// Applies `setup` when given (starting a fresh record), then fills `report`
// when given. 0 on success, 1 for a setup the double cannot represent.
extern "C" int CkBthConfigure(const CkBthSetup* setup, CkBthReport* report);
