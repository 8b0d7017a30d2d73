#include "platform/sim/core/FaultInjector.h"

#include <algorithm>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/ports/Clock.h"
#include "platform/ports/Errors.h"
#include "platform/sim/core/Scenario.h"

namespace connectkit::sim {

const std::vector<std::string_view>& FaultInjector::KnownFaultPoints() {
    static const std::vector<std::string_view> points = {
        "clock.newSemaphore", "clock.newEvent",       "semaphore.wait",
        "event.wait",         "registry.read",        "registry.write",
        "registry.delete",    "loader.load",          "loader.symbol",
        "loader.ordinal",     "files.exists",         "files.mainModuleDirectory",
        "process.run",        "devices.list",         "devices.locate",
        "devices.readValue",  "adapters.list",        "devices.state",
        "devices.setEnabled", "wifidirect.activate",  "wifidirect.start",
        "wifidirect.stop",    "wifidirect.fromId",    "firewall.removeDhcpRules",
        "devices.listSize",   "files.read",           "devices.classList",
        "devices.property",   "devices.setParams",    "devices.callInstaller",
        "radios.list",        "bluetooth.findRadio",  "bluetooth.radioInfo",
        "bluetooth.control",  "bluetooth.findDevice", "ble.newWatcher",
        "privileges.enable",  "devices.className",    "wlan.open",
        "wlan.enum",          "wlan.bssList",         "wlan.query",
        "wlan.connect",
    };
    return points;
}

bool FaultInjector::IsKnown(std::string_view call) {
    const auto& points = KnownFaultPoints();
    return std::find(points.begin(), points.end(), call) != points.end();
}

std::optional<FaultAction> FaultInjector::ParseAction(std::string_view text) {
    if (text == "fail")
        return FaultAction::Fail;
    if (text == "timeout")
        return FaultAction::TimeOut;
    if (text == "throw")
        return FaultAction::Throw;
    return std::nullopt;
}

bool FaultInjector::Add(const FaultRule& rule) {
    if (!IsKnown(rule.call) || rule.action == FaultAction::None) {
        return false;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    rules_.push_back(ActiveRule{rule});
    return true;
}

void FaultInjector::Apply(const Scenario& scenario) {
    for (const auto& rule : scenario.faults) {
        Add(rule);
    }
}

void FaultInjector::Reset() {
    std::lock_guard<std::mutex> lock(mutex_);
    rules_.clear();
    calls_.clear();
}

Fault FaultInjector::Check(std::string_view call) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto counted = calls_.find(call);
    if (counted == calls_.end()) {
        counted = calls_.emplace(std::string(call), 0).first;
    }
    ++counted->second;
    Fault fault;
    for (auto& active : rules_) {
        if (active.rule.call != call) {
            continue;
        }
        if (active.seen++ < active.rule.after) {
            continue;
        }
        if (active.rule.times && active.applied >= *active.rule.times) {
            continue;
        }
        ++active.applied;
        if (!fault) {
            fault = Fault{active.rule.action, active.rule.error, active.rule.delayMs};
            static constexpr const char* kActions[] = {"none", "fail", "timeout", "throw"};
            LogWarnFun("[SimulatedPc] fault injected at %.*s: %s (call %llu)",
                       static_cast<int>(call.size()), call.data(),
                       kActions[static_cast<int>(fault.action)],
                       static_cast<unsigned long long>(counted->second));
        }
    }
    return fault;
}

uint64_t FaultInjector::Calls(std::string_view call) const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto counted = calls_.find(call);
    return counted == calls_.end() ? 0 : counted->second;
}

std::optional<uint32_t> FaultedCall(FaultInjector& faults, platform::Clock& clock,
                                    std::string_view call, uint32_t usualError) {
    Fault fault = faults.Check(call);
    switch (fault.action) {
        case FaultAction::None:
            return std::nullopt;
        case FaultAction::Fail:
            return fault.error ? fault.error : usualError;
        case FaultAction::TimeOut:
            clock.Sleep(fault.delayMs);
            return fault.error ? fault.error : platform::kErrorTimeout;
        case FaultAction::Throw:
            ThrowInjectedFault(call);
    }
    return std::nullopt;
}

void ThrowInjectedFault(std::string_view call) {
    constexpr int32_t kEFail = static_cast<int32_t>(0x80004005u);
    throw platform::PlatformError(kEFail, "injected fault at " + std::string(call));
}

}  // namespace connectkit::sim
