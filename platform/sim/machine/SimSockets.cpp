#include "platform/sim/machine/SimSockets.h"

namespace connectkit::sim {
namespace {

constexpr int kWsaVersionNotSupported = 10092;

}  // namespace

int SimSockets::Startup(uint16_t version) {
    // Winsock 1.1 and later start; what a caller asks below that is refused.
    if ((version & 0xFF) < 1) {
        return kWsaVersionNotSupported;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    ++startups_;
    return 0;
}

int SimSockets::Cleanup() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (startups_ == 0) {
        ++refusedCleanups_;
        return platform::kWsaNotInitialised;
    }
    --startups_;
    return 0;
}

int SimSockets::Startups() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return startups_;
}

int SimSockets::RefusedCleanups() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return refusedCleanups_;
}

}  // namespace connectkit::sim
