#include "platform/sim/machine/SimFirewall.h"

#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"

namespace connectkit::sim {

uint32_t SimFirewall::RemoveDhcpRules() {
    ++removeCalls_;
    if (auto error = FaultedCall(faults_, clock_, "firewall.removeDhcpRules",
                                 platform::kErrorAccessDenied)) {
        return *error;
    }
    return platform::kErrorSuccess;
}

}  // namespace connectkit::sim
