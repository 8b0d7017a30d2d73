#pragma once

#include <functional>
#include <mutex>
#include <vector>

#include "platform/ports/NetworkAdapters.h"

namespace connectkit::platform {
class Clock;
}

namespace connectkit::sim {

class FaultInjector;

// The adapters IP Helper would list: a fixed set (the Wi-Fi card's), followed
// by what a model that changes over time adds at the moment of each listing.
class SimNetworkAdapters final : public platform::NetworkAdapters {
public:
    using Source = std::function<void(std::vector<platform::NetworkAdapterInfo>& adapters)>;

    SimNetworkAdapters(platform::Clock& clock, FaultInjector& faults)
        : clock_(clock), faults_(faults) {}

    uint32_t List(std::vector<platform::NetworkAdapterInfo>& adapters) override;

    void Set(std::vector<platform::NetworkAdapterInfo> adapters);
    // Replaces the dynamic source; it is called with no lock of this class
    // held, so it may take its own model's lock.
    void SetDynamic(Source source);

private:
    platform::Clock& clock_;
    FaultInjector& faults_;
    std::mutex mutex_;
    std::vector<platform::NetworkAdapterInfo> adapters_;
    Source dynamic_;
};

}  // namespace connectkit::sim
