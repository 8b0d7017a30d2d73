#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/ports/Processes.h"
#include "platform/sim/core/SimModel.h"

namespace connectkit::sim {

class FaultInjector;
class VirtualClock;

// Programs the simulated PC can run. Each takes virtual time and ends with an
// exit code; its effect on the simulated world (a renewed lease, say) happens
// when it ends, even if the caller stopped waiting earlier.
//
// A command line is answered by the first of:
// - a program installed whole (a scenario's "programs", a test's stand-in):
//   it takes every command line of its name;
// - the models' handlers for that name, in the order the models added them:
//   the first whose `takes` accepts the arguments answers (Wi-Fi Direct's
//   "netsh interface ipv4 ...", the WLAN model's "ipconfig /renew").
class SimProcesses final : public platform::Processes, public SimModel {
public:
    struct Program {
        uint32_t exitCode = 0;
        uint32_t durationMs = 0;
        // Runs when the program ends; returns the exit code.
        std::function<uint32_t(const std::wstring& commandLine)> effect;
    };
    // The arguments after the executable, lower case, split at blanks.
    using Arguments = std::vector<std::wstring>;
    struct Started {
        std::wstring commandLine;
        uint64_t tick = 0;
    };

    SimProcesses(VirtualClock& clock, FaultInjector& faults) : clock_(clock), faults_(faults) {}

    platform::ProcessOutcome Run(const std::wstring& commandLine, uint32_t waitMs) override;

    // `name` is the executable's file name without ".exe", any case. What is
    // installed goes with Reset; handlers stay for the model's lifetime.
    void Install(const std::wstring& name, Program program);
    void AddHandler(const std::wstring& name, std::function<bool(const Arguments&)> takes,
                    Program program);
    void Reset() override;
    // Installs the scenario's "programs".
    void Apply(const Scenario& scenario) override;
    std::vector<Started> History() const;

    // The executable's name as Install takes it: "C:\x\IpConfig.exe /all" -> "ipconfig".
    static std::wstring ProgramName(const std::wstring& commandLine);
    static Arguments ArgumentsOf(const std::wstring& commandLine);

private:
    struct Handler {
        std::function<bool(const Arguments&)> takes;
        Program program;
    };

    const Program* Find(const std::wstring& commandLine) const;

    VirtualClock& clock_;
    FaultInjector& faults_;
    mutable std::mutex mutex_;
    std::map<std::wstring, Program> installed_;
    std::multimap<std::wstring, Handler> handlers_;
    std::vector<Started> history_;
};

}  // namespace connectkit::sim
