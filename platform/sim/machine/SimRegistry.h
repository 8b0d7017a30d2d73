#pragma once

#include <map>
#include <mutex>
#include <string>

#include "platform/ports/Registry.h"
#include "platform/sim/core/SimModel.h"

namespace connectkit::platform {
class Clock;
}

namespace connectkit::sim {

class FaultInjector;

// The simulated PC's registry: keys and values in memory, names compared
// without regard to case as Windows does.
class SimRegistry final : public platform::Registry, public SimModel {
public:
    SimRegistry(platform::Clock& clock, FaultInjector& faults) : clock_(clock), faults_(faults) {}

    long Read(platform::RegistryHive hive, const std::wstring& key, const std::wstring& name,
              platform::RegistryData& value) override;
    long Write(platform::RegistryHive hive, const std::wstring& key, const std::wstring& name,
               const platform::RegistryData& value) override;
    long WriteExisting(platform::RegistryHive hive, const std::wstring& key,
                       const std::wstring& name, const platform::RegistryData& value) override;
    long DeleteValue(platform::RegistryHive hive, const std::wstring& key,
                     const std::wstring& name) override;
    long DeleteKey(platform::RegistryHive hive, const std::wstring& key) override;

    void Reset() override;
    // Writes the scenario's "registry" values.
    void Apply(const Scenario& scenario) override;

private:
    using Values = std::map<std::wstring, platform::RegistryData>;
    static std::wstring KeyPath(platform::RegistryHive hive, const std::wstring& key);

    platform::Clock& clock_;
    FaultInjector& faults_;
    std::mutex mutex_;
    std::map<std::wstring, Values> keys_;
};

}  // namespace connectkit::sim
