#pragma once
// Fault injection for the simulated PC's port calls. Every simulated port
// operation asks the injector before it does its work; a matching rule makes
// the call fail with an error code, time out (block for a virtual delay, then
// fail), or throw a PlatformError.

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sim/core/SimModel.h"

namespace connectkit::platform {
class Clock;
}

namespace connectkit::sim {

enum class FaultAction { None, Fail, TimeOut, Throw };

struct FaultRule {
    // A fault point such as "registry.read"; see KnownFaultPoints().
    std::string call;
    FaultAction action = FaultAction::Fail;
    // Calls to let through before the rule applies.
    uint32_t after = 0;
    // How many calls it applies to; empty means every later call.
    std::optional<uint32_t> times;
    // Win32 error code the failing call reports; 0 picks the call's usual one.
    uint32_t error = 0;
    // Virtual milliseconds a timed-out call blocks.
    uint32_t delayMs = 30000;
};

struct Fault {
    FaultAction action = FaultAction::None;
    uint32_t error = 0;
    uint32_t delayMs = 0;
    explicit operator bool() const { return action != FaultAction::None; }
};

class FaultInjector final : public SimModel {
public:
    // False when the rule names an unknown fault point.
    bool Add(const FaultRule& rule);
    void Reset() override;
    // Adds the scenario's "faults".
    void Apply(const Scenario& scenario) override;
    // Counts the call and says what to do with it.
    Fault Check(std::string_view call);
    uint64_t Calls(std::string_view call) const;

    static const std::vector<std::string_view>& KnownFaultPoints();
    static bool IsKnown(std::string_view call);
    static std::optional<FaultAction> ParseAction(std::string_view text);

private:
    struct ActiveRule {
        FaultRule rule;
        uint32_t seen = 0;
        uint32_t applied = 0;
    };
    mutable std::mutex mutex_;
    std::vector<ActiveRule> rules_;
    std::map<std::string, uint64_t, std::less<>> calls_;
};

// Applies a fault to a call that reports a Win32 error code: nullopt lets the
// call run; otherwise the code to report (after a virtual delay for a
// time-out). Throws for a "throw" fault.
std::optional<uint32_t> FaultedCall(FaultInjector& faults, platform::Clock& clock,
                                    std::string_view call, uint32_t usualError);

// Throws the PlatformError that an injected "throw" fault stands for.
[[noreturn]] void ThrowInjectedFault(std::string_view call);

}  // namespace connectkit::sim
