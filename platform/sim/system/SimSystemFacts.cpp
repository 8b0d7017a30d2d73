#include "platform/sim/system/SimSystemFacts.h"

#include "platform/sim/core/Scenario.h"

namespace connectkit::sim {

bool SimSystemFacts::ReadOsVersion(platform::OsVersion& version) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (config_.os.major == 0) {
        return false;
    }
    version = config_.os;
    return true;
}

std::wstring SimSystemFacts::BiosVersion() {
    std::lock_guard<std::mutex> lock(mutex_);
    return config_.biosVersion;
}

std::wstring SimSystemFacts::SystemModel() {
    std::lock_guard<std::mutex> lock(mutex_);
    return config_.model;
}

std::wstring SimSystemFacts::DeviceId() {
    std::lock_guard<std::mutex> lock(mutex_);
    return config_.deviceId;
}

uint32_t SimSystemFacts::DisplayDpi() {
    std::lock_guard<std::mutex> lock(mutex_);
    return config_.dpi;
}

void SimSystemFacts::Apply(const Scenario& scenario) {
    Configure(scenario.system);
}

void SimSystemFacts::Configure(const SimSystemConfig& config) {
    std::lock_guard<std::mutex> lock(mutex_);
    config_ = config;
}

}  // namespace connectkit::sim
