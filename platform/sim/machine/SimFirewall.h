#pragma once
// The simulated PC's firewall: only counts how often the group owner's DHCP
// rules were removed, so tests can check the library tidies up.

#include <atomic>
#include <cstdint>

#include "platform/ports/Firewall.h"
#include "platform/sim/core/SimModel.h"

namespace connectkit::platform {
class Clock;
}

namespace connectkit::sim {

class FaultInjector;

class SimFirewall final : public platform::Firewall, public SimModel {
public:
    SimFirewall(platform::Clock& clock, FaultInjector& faults) : clock_(clock), faults_(faults) {}

    uint32_t RemoveDhcpRules() override;

    // Calls of RemoveDhcpRules since the last Reset, failed ones included.
    uint32_t RemoveDhcpRulesCalls() const { return removeCalls_; }
    void Reset() override { removeCalls_ = 0; }

private:
    platform::Clock& clock_;
    FaultInjector& faults_;
    std::atomic<uint32_t> removeCalls_{0};
};

}  // namespace connectkit::sim
