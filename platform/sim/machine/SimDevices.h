#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/ports/DeviceSetup.h"
#include "platform/sim/core/SimModel.h"

namespace connectkit::platform {
class Clock;
}

namespace connectkit::sim {

class FaultInjector;

// The simulated PC's device nodes: instance id, hardware ids, the string
// values of each device's registry key, and whether the device is enabled.
class SimDevices final : public platform::DeviceSetup, public SimModel {
public:
    struct Device {
        std::wstring instanceId;
        std::vector<std::wstring> hardwareIds;
        std::map<std::wstring, std::wstring> values;
        bool enabled = true;
        // Virtual ms that disabling or enabling takes before it is done.
        uint32_t toggleLatencyMs = 0;
        // The model behind the device hears of every completed disable or
        // enable (on the caller's thread, with no lock held).
        std::function<void(bool enabled)> enabledChanged;
    };

    SimDevices(platform::Clock& clock, FaultInjector& faults) : clock_(clock), faults_(faults) {}

    uint32_t PresentDevices(std::vector<std::wstring>& instanceIds,
                            platform::DeviceListCall& failedCall) override;
    uint32_t HardwareIds(const std::wstring& instanceId,
                         std::vector<std::wstring>& hardwareIds) override;
    uint32_t ReadDeviceValue(const std::wstring& instanceId, const std::wstring& name,
                             std::wstring& value) override;
    uint32_t State(const std::wstring& instanceId, platform::DeviceState& state) override;
    uint32_t SetEnabled(const std::wstring& instanceId, bool enabled) override;
    // Placeholders until the Bluetooth setup class is modelled: every call
    // answers ERROR_CALL_NOT_IMPLEMENTED.
    uint32_t ClassDevices(const std::wstring&, uint32_t,
                          std::vector<platform::SetupDevice>&) override {
        return 120;
    }
    uint32_t ClassName(const std::wstring&, std::wstring&) override { return 120; }
    uint32_t ReadProperty(const std::wstring&, platform::SetupProperty,
                          std::vector<uint8_t>&) override {
        return 120;
    }
    uint32_t ChangeProperty(const std::wstring&, const platform::PropertyChange&,
                            platform::InstallerCall&) override {
        return 120;
    }

    void Add(Device device);
    void Remove(const std::wstring& instanceId);
    void Reset() override;

private:
    // Needs mutex_ held.
    Device* Find(const std::wstring& instanceId);

    platform::Clock& clock_;
    FaultInjector& faults_;
    std::mutex mutex_;
    std::vector<Device> devices_;
};

}  // namespace connectkit::sim
