#pragma once
// RealtekBTVeltra.dll for the whole process: loaded through the loader port
// on the first open and kept for the rest of the process, with the one
// device handle its open hands out (all ones while closed).
//
// The library is never freed, not even when our DLL unloads: freeing it
// from a static destructor would run its DLL_PROCESS_DETACH under the
// loader lock during ours, and the process-wide device handle it hands out
// may still be in use by another module of the suite. Its state is
// therefore held by a pointer that is never deleted.
//
// The parameter block (rtk::MultiAdvParam) is the vendor command's
// set-parameters block after its sub-opcode, filled the same way for both
// paths (bluetooth/VendorHciCommand.h: MultiAdvParameters).
//
// Busy answers (kRtkBusy) of every entry point, the device's open and
// close included, are repeated at most kBusyRepeats more times,
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
