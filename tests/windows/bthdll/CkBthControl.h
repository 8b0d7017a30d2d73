#pragma once
// The one entry the bthprops double exports beyond the system library's
// (and kernel32's DeviceIoControl and CloseHandle, which it answers for the
// handles it hands out): tests reach it with GetProcAddress to set up the
// radios and the device the double pretends to see, and to read back what
// it was asked. Plain C layouts, so nothing of either side's C++ runtime
// crosses over.

#include <cstdint>

inline constexpr char kCkBthConfigureName[] = "CkBthConfigure";

struct CkBthRadio {
    uint64_t address;   // handed out as is, upper bytes included
    wchar_t name[248];  // need not be terminated
    uint32_t classOfDevice;
    uint16_t lmpSubversion;
    uint16_t manufacturer;
    uint32_t infoError;  // BluetoothGetRadioInfo's answer when nonzero
};

struct CkBthSetup {
    uint32_t radioCount;  // at most 4
    CkBthRadio radios[4];
    uint32_t deviceFound;
    struct {
        uint64_t address;
        wchar_t name[248];
        uint32_t classOfDevice;
        uint32_t connected, remembered, authenticated;
    } device;
    uint32_t controlError;  // DeviceIoControl's error when nonzero
};

struct CkBthReport {
    // Radio handles and searches handed out and not yet closed.
    uint32_t openHandles;
    // Closes of handles never handed out, closed already or of another kind.
    uint32_t badCloses;
    // Structures whose dwSize was not the system's.
    uint32_t badSizes;
    uint32_t controlCalls;
    uint32_t controlCode;
    uint32_t controlOutputSize;
    uint32_t deviceSearches;
    struct {
        uint32_t returnAuthenticated, returnRemembered, returnUnknown, returnConnected;
        uint32_t issueInquiry;
        uint32_t timeoutMultiplier;
        uint32_t radioGiven;
    } lastSearch;
};

// Applies `setup` when given (starting a fresh record), then fills `report`
// when given. 0 on success, 1 for a setup the double cannot represent.
using CkBthConfigureFunction = int (*)(const CkBthSetup* setup, CkBthReport* report);
