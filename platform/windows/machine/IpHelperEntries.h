#pragma once
// The IP Helper calls, resolved at run time (SystemLibrary.h says why): the
// tests run the same code in one process against Wine's own iphlpapi and
// against a double whose adapter list grows, shrinks or never fits between
// the size query and the fill, which Wine's cannot do.

// clang-format off
#include <winsock2.h>
#include <ws2tcpip.h>
#include <iphlpapi.h>
// clang-format on

#include <cstdint>
#include <memory>

#include "platform/windows/core/SystemLibrary.h"

namespace connectkit::win {

struct IpHelperEntries {
    decltype(&::GetAdaptersAddresses) getAdaptersAddresses = nullptr;
    decltype(&::GetAdaptersInfo) getAdaptersInfo = nullptr;
    decltype(&::GetInterfaceInfo) getInterfaceInfo = nullptr;
    decltype(&::IpReleaseAddress) ipReleaseAddress = nullptr;
    decltype(&::IpRenewAddress) ipRenewAddress = nullptr;
};

inline const LibrarySource kSystemIpHelperLibrary{L"iphlpapi.dll"};

// Every entry, with the library kept loaded while the table is held; null
// with the Win32 error of the failed load or look-up in `error` (logged).
std::shared_ptr<const IpHelperEntries> LoadIpHelperEntries(const LibrarySource& library,
                                                           uint32_t& error);

}  // namespace connectkit::win
