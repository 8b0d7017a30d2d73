#pragma once

#include "platform/ports/Processes.h"

namespace connectkit::win {

class WinProcesses final : public platform::Processes {
public:
    platform::ProcessOutcome Run(const std::wstring& commandLine, uint32_t waitMs) override;
};

}  // namespace connectkit::win
