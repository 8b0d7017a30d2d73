#pragma once

#include <mutex>
#include <vector>

#include "platform/ports/NetworkAdapters.h"

namespace connectkit::platform {
class Clock;
}

namespace connectkit::sim {

class FaultInjector;

class SimNetworkAdapters final : public platform::NetworkAdapters {
public:
    SimNetworkAdapters(platform::Clock& clock, FaultInjector& faults)
        : clock_(clock), faults_(faults) {}

    uint32_t List(std::vector<platform::NetworkAdapterInfo>& adapters) override;

    void Set(std::vector<platform::NetworkAdapterInfo> adapters);

private:
    platform::Clock& clock_;
    FaultInjector& faults_;
    std::mutex mutex_;
    std::vector<platform::NetworkAdapterInfo> adapters_;
};

}  // namespace connectkit::sim
