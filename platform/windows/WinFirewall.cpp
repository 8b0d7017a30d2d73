#include "platform/windows/WinFirewall.h"

#include "platform/ports/Errors.h"
#include "platform/windows/NotAvailable.h"

namespace connectkit::win {

uint32_t WinFirewall::RemoveDhcpRules() {
    SayNotAvailable("firewall");
    return platform::kErrorCallNotImplemented;
}

}  // namespace connectkit::win
