#pragma once

#include <mutex>

#include "platform/ports/SystemFacts.h"
#include "platform/sim/core/SimModel.h"

namespace connectkit::sim {

// The scenario's "system" section. Unset fields keep these defaults, a
// plausible current laptop; an empty text or 0 stands for a missing source.
struct SimSystemConfig {
    platform::OsVersion os{10, 0, 22631, 2861, L"23H2"};
    std::wstring biosVersion = L"BKL14.1.07";
    std::wstring model = L"Brisklane Book 14";
    std::wstring deviceId = L"6F1D3A52-8C44-4E0B-9A7E-2B5C1D0E4F38";
    uint32_t dpi = 144;
};

class SimSystemFacts final : public platform::SystemFacts, public SimModel {
public:
    bool ReadOsVersion(platform::OsVersion& version) override;
    std::wstring BiosVersion() override;
    std::wstring SystemModel() override;
    std::wstring DeviceId() override;
    uint32_t DisplayDpi() override;

    void Reset() override { Configure(SimSystemConfig{}); }
    void Apply(const Scenario& scenario) override;
    void Configure(const SimSystemConfig& config);

private:
    std::mutex mutex_;
    SimSystemConfig config_;
};

}  // namespace connectkit::sim
