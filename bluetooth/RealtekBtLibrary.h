#pragma once
// RealtekBTVeltra.dll for the whole process: loaded through the loader port
// on the first open and kept for the rest of the process, with the one
// device handle its open hands out (all ones while closed).
//
// Busy answers (kRtkBusy) are repeated at most kBusyRepeats more times,
// kBusyPauseMs apart through the clock port, so a library that stays busy
// ends in a failure rather than a hang. A missing entry point answers
// kMissingEntry (ERROR_PROC_NOT_FOUND). Calls are serialised by a lock of
// the clock port, which a wait inside them may hold.

#include <cstdint>

#include "platform/ports/VendorBluetooth.h"

namespace connectkit::bluetooth::realtek {

inline constexpr int kBusyRepeats = 3;
inline constexpr uint32_t kBusyPauseMs = 10;
inline constexpr int kMissingEntry = 127;

// The handle, opening the device when it is not open; invalid when the
// library or its open fails (logged).
platform::rtk::Device Open();
// RtkApplCloseDevice on an open handle, which then is invalid again.
void Close();
int SetParameters(const platform::rtk::MultiAdvParam& parameters);
int SendAdv(uint8_t instance, const uint8_t* data, uint8_t length, const uint8_t* response,
            uint8_t responseLength);
int CloseAdv(uint8_t instance);

}  // namespace connectkit::bluetooth::realtek
