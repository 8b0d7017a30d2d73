#pragma once
// Firewall rules on Windows are not built yet: removing the DHCP rules answers
// ERROR_CALL_NOT_IMPLEMENTED and says so in the log once.

#include "platform/ports/Firewall.h"

namespace connectkit::win {

class WinFirewall final : public platform::Firewall {
public:
    uint32_t RemoveDhcpRules() override;
};

}  // namespace connectkit::win
