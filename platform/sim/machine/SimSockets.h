#pragma once

#include <mutex>

#include "platform/ports/Sockets.h"

namespace connectkit::sim {

// Winsock's start-up count; the simulated network needs nothing else of it.
class SimSockets final : public platform::Sockets {
public:
    int Startup(uint16_t version) override;
    int Cleanup() override;
    int Startups() const;
    // Clean-ups Winsock refused because nothing was started.
    int RefusedCleanups() const;

private:
    mutable std::mutex mutex_;
    int startups_ = 0;
    int refusedCleanups_ = 0;
};

}  // namespace connectkit::sim
