#pragma once
// Windows Firewall rules, as far as the hotspot needs them: the inbound rules
// opened for the group owner's DHCP service are removed when it stops.
#include <cstdint>

namespace connectkit::platform {

class Firewall {
public:
    virtual ~Firewall() = default;
    // Win32 error code; removing rules that are not there is a success.
    virtual uint32_t RemoveDhcpRules() = 0;
};

}  // namespace connectkit::platform
