#pragma once
// Starting a process (CreateProcessW) and waiting a bounded time for it.

#include <cstdint>
#include <string>

namespace connectkit::platform {

struct ProcessOutcome {
    // 0 when the process started; a Win32 error code otherwise.
    uint32_t error = 0;
    // True when it ended within the wait.
    bool finished = false;
    uint32_t exitCode = 0;
};

class Processes {
public:
    virtual ~Processes() = default;
    // Runs the command line without a window; waits at most waitMs for it.
    virtual ProcessOutcome Run(const std::wstring& commandLine, uint32_t waitMs) = 0;
};

}  // namespace connectkit::platform
