#pragma once
// The PC's network adapters through IP Helper: GetAdaptersAddresses (IPv4)
// and GetAdaptersInfo, the interface table, and the DHCP lease of one
// interface, reached through a table of entries resolved on first use
// (IpHelperEntries.h says why; a library or entry that cannot be found makes
// every call answer that Win32 error). A PC without any adapter
// (ERROR_NO_DATA) gives an empty List, not an error; ListInfo and
// InterfaceTable answer ERROR_NO_DATA as IP Helper does.
//
// The three lists are read with a size query and then a fill, and an
// adapter may arrive in between. The retry policy: at most kMaxGrowAttempts
// calls in all (the query and three fills), each offering what the last
// answer asked for; a list that outgrows them answers ERROR_BUFFER_OVERFLOW
// (ERROR_INSUFFICIENT_BUFFER for the interface table) with a log line and
// no adapters, and the caller's own polling asks again later. A list that
// shrank is read as the fill left it, up to its last link.

#include "platform/ports/NetworkAdapters.h"
#include "platform/windows/machine/IpHelperEntries.h"

namespace connectkit::win {

class WinNetworkAdapters final : public platform::NetworkAdapters {
public:
    explicit WinNetworkAdapters(LibrarySource library = kSystemIpHelperLibrary)
        : entries_(std::move(library), LoadIpHelperEntries) {}

    uint32_t List(std::vector<platform::NetworkAdapterInfo>& adapters) override;
    uint32_t ListInfo(std::vector<platform::NetworkAdapterInfo>& adapters) override;
    uint32_t InterfaceTable(std::vector<platform::InterfaceIndexEntry>& interfaces) override;
    uint32_t ReleaseAddress(const platform::InterfaceIndexEntry& entry) override;
    uint32_t RenewAddress(const platform::InterfaceIndexEntry& entry) override;

private:
    // `body(entries)` with the table loaded on the first call, or the error
    // of that load.
    template <typename Body>
    uint32_t WithEntries(Body body);

    EntriesOnce<IpHelperEntries> entries_;
};

}  // namespace connectkit::win
