#pragma once
// The entry the Realtek Bluetooth library double exports beyond the five
// of the real library: tests set up its busy answers and the faults of the
// controller model it sends to, and read back the calls it took. Plain C layouts, as every
// double's; the entry works as every double's does (DoubleControl.h), closing the device with a new
// setup.

#include <cstdint>

#include "bthdll/CkBthControl.h"

inline constexpr char kCkRtkConfigureName[] = "CkRtkConfigure";

struct CkRtkSetup {
    // Busy answers before each entry works, in the order of
    // platform/ports/VendorBluetooth.h: open, close, set parameters, send,
    // close advertisement.
    uint32_t busy[5];
    uint32_t hciFaultCount;  // at most 4
    CkHciFault hciFaults[4];
};

struct CkRtkReport {
    // Every call since the last setup, busy answers included; only the
    // first 32 are listed.
    uint32_t callCount;
    char calls[32][32];
    uint32_t open;
    uint32_t hciCommands;
    uint32_t hciEnabled;
};
