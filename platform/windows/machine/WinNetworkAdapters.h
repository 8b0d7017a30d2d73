#pragma once
// The PC's network adapters through IP Helper: GetAdaptersAddresses (IPv4)
// and GetAdaptersInfo, the interface table, and the DHCP lease of one
// interface. A PC without any adapter (ERROR_NO_DATA) gives an empty List,
// not an error; ListInfo and InterfaceTable answer ERROR_NO_DATA as IP
// Helper does.

#include "platform/ports/NetworkAdapters.h"

namespace connectkit::win {

class WinNetworkAdapters final : public platform::NetworkAdapters {
public:
    uint32_t List(std::vector<platform::NetworkAdapterInfo>& adapters) override;
    uint32_t ListInfo(std::vector<platform::NetworkAdapterInfo>& adapters) override;
    uint32_t InterfaceTable(std::vector<platform::InterfaceIndexEntry>& interfaces) override;
    uint32_t ReleaseAddress(const platform::InterfaceIndexEntry& entry) override;
    uint32_t RenewAddress(const platform::InterfaceIndexEntry& entry) override;
};

}  // namespace connectkit::win
