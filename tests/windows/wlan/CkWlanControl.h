#pragma once
// The entries the wlanapi double exports beyond the system library's:
// tests reach them with GetProcAddress to set up the interfaces, networks
// and connection the double pretends to see, to read back what it was
// asked, and to send a notification. wlanapi's own structures, so nothing
// of either side's C++ runtime crosses over.

// clang-format off
#include <windows.h>
#include <wlanapi.h>
// clang-format on

#include <cstdint>

inline constexpr char kCkWlanConfigureName[] = "CkWlanConfigure";
inline constexpr char kCkWlanNotifyName[] = "CkWlanNotify";

struct CkWlanSetup {
    uint32_t interfaceCount;  // at most 2
    WLAN_INTERFACE_INFO interfaces[2];
    uint32_t bssCount;    // entries the BSS list holds, at most 4
    uint32_t bssClaimed;  // the count it claims, when nonzero
    WLAN_BSS_ENTRY bss[4];
    WLAN_CONNECTION_ATTRIBUTES connection;
    // The bytes WlanQueryInterface gives for the current connection, when
    // nonzero; the structure's size otherwise.
    uint32_t connectionBytes;
    ULONG channel;
    LONG rssi;
    uint32_t registerError;  // WlanRegisterNotification's answer when nonzero
};

struct CkWlanReport {
    uint32_t openHandles;
    // Calls with a handle never handed out or closed already.
    uint32_t badHandles;
    // Memory handed out and not given back to WlanFreeMemory, and frees of
    // memory the double never handed out.
    uint32_t outstandingAllocations;
    uint32_t badFrees;
    uint32_t scanSsidLength;  // 0xFFFFFFFF when the scan named no SSID
    uint32_t scanIeBytes;
    uint32_t disconnects;
    uint32_t connects;
    struct {
        WLAN_CONNECTION_MODE mode;
        wchar_t profile[2048];  // its first characters, terminated
        uint32_t ssidGiven;
        uint32_t bssidListGiven;
        DOT11_BSSID_LIST bssids;  // its counts and first address
    } lastConnect;
};

// Applies `setup` when given (starting a fresh record), then fills `report`
// when given. 0 on success, 1 for a setup the double cannot represent.
extern "C" int CkWlanConfigure(const CkWlanSetup* setup, CkWlanReport* report);
// Sends a notification of `size` bytes (copied into memory that ends where
// they end) to every registration whose sources include `source`, each on
// a thread of the double, and returns once they are delivered: the number
// of callbacks called.
using CkWlanNotifyFunction = int (*)(DWORD source, DWORD code, const void* data, DWORD size);
