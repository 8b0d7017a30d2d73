#pragma once
// The entry the iphlpapi double exports beyond the system library's: tests
// reach it with GetProcAddress to script how many adapters each list call
// sees, so a list can grow, shrink or never fit between the size query and
// the fill, and to read back how many calls were made.

// clang-format off
#include <winsock2.h>
#include <iphlpapi.h>
// clang-format on

#include <cstdint>

inline constexpr char kCkIpHelperConfigureName[] = "CkIpHelperConfigure";

struct CkIpHelperSetup {
    // List calls (GetAdaptersAddresses, GetAdaptersInfo, GetInterfaceInfo)
    // see counts[0], counts[1], ... adapters in turn, the last one repeating.
    uint32_t steps;      // 1 to 8
    uint32_t counts[8];  // at most 128 each
    uint32_t neverFits;  // every list call asks for more than it was offered
};

struct CkIpHelperReport {
    uint32_t listCalls;
};

// Applies `setup` when given (starting a fresh record), then fills `report`
// when given. 0 on success, 1 for a setup the double cannot represent.
extern "C" int CkIpHelperConfigure(const CkIpHelperSetup* setup, CkIpHelperReport* report);
