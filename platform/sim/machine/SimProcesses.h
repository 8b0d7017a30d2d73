#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/ports/Processes.h"

namespace connectkit::sim {

class FaultInjector;
class VirtualClock;

// Programs the simulated PC can run. Each takes virtual time and ends with an
// exit code; its effect on the simulated world (a renewed lease, say) happens
// when it ends, even if the caller stopped waiting earlier.
class SimProcesses final : public platform::Processes {
public:
    struct Program {
        uint32_t exitCode = 0;
        uint32_t durationMs = 0;
        // Runs when the program ends; returns the exit code.
        std::function<uint32_t(const std::wstring& commandLine)> effect;
    };
    struct Started {
        std::wstring commandLine;
        uint64_t tick = 0;
    };

    SimProcesses(VirtualClock& clock, FaultInjector& faults) : clock_(clock), faults_(faults) {}

    platform::ProcessOutcome Run(const std::wstring& commandLine, uint32_t waitMs) override;

    // `name` is the executable's file name without ".exe", any case.
    void Install(const std::wstring& name, Program program);
    void Clear();
    std::vector<Started> History() const;

    // The executable's name as Install takes it: "C:\x\IpConfig.exe /all" -> "ipconfig".
    static std::wstring ProgramName(const std::wstring& commandLine);

private:
    VirtualClock& clock_;
    FaultInjector& faults_;
    mutable std::mutex mutex_;
    std::map<std::wstring, Program> programs_;
    std::vector<Started> history_;
};

}  // namespace connectkit::sim
