#pragma once
// The PC's network adapters through IP Helper (GetAdaptersAddresses, IPv4).
// A PC without any adapter (ERROR_NO_DATA) gives an empty list, not an error.

#include "platform/ports/NetworkAdapters.h"

namespace connectkit::win {

class WinNetworkAdapters final : public platform::NetworkAdapters {
public:
    uint32_t List(std::vector<platform::NetworkAdapterInfo>& adapters) override;
};

}  // namespace connectkit::win
