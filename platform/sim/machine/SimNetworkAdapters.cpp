#include "platform/sim/machine/SimNetworkAdapters.h"

#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"

namespace connectkit::sim {

uint32_t SimNetworkAdapters::List(std::vector<platform::NetworkAdapterInfo>& adapters) {
    adapters.clear();
    if (auto error = FaultedCall(faults_, clock_, "adapters.list", platform::kErrorNotSupported)) {
        return *error;
    }
    Source dynamic;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        adapters = adapters_;
        dynamic = dynamic_;
    }
    if (dynamic) {
        dynamic(adapters);
    }
    return platform::kErrorSuccess;
}

void SimNetworkAdapters::Set(std::vector<platform::NetworkAdapterInfo> adapters) {
    std::lock_guard<std::mutex> lock(mutex_);
    adapters_ = std::move(adapters);
}

void SimNetworkAdapters::SetDynamic(Source source) {
    std::lock_guard<std::mutex> lock(mutex_);
    dynamic_ = std::move(source);
}

}  // namespace connectkit::sim
