#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/ports/DeviceSetup.h"

namespace connectkit::platform {
class Clock;
}

namespace connectkit::sim {

class FaultInjector;

// The simulated PC's device nodes: instance id, hardware ids and the string
// values of each device's registry key.
class SimDevices final : public platform::DeviceSetup {
public:
    struct Device {
        std::wstring instanceId;
        std::vector<std::wstring> hardwareIds;
        std::map<std::wstring, std::wstring> values;
    };

    SimDevices(platform::Clock& clock, FaultInjector& faults) : clock_(clock), faults_(faults) {}

    uint32_t PresentDevices(std::vector<std::wstring>& instanceIds) override;
    uint32_t HardwareIds(const std::wstring& instanceId,
                         std::vector<std::wstring>& hardwareIds) override;
    uint32_t ReadDeviceValue(const std::wstring& instanceId, const std::wstring& name,
                             std::wstring& value) override;

    void Add(Device device);
    void Clear();

private:
    platform::Clock& clock_;
    FaultInjector& faults_;
    std::mutex mutex_;
    std::vector<Device> devices_;
};

}  // namespace connectkit::sim
