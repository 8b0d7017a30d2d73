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

// The simulated PC's device nodes: instance id, hardware ids, setup class,
// problem code, the string values of each device's registry key, and whether
// the device is present and enabled. A disabled device reports problem 22
// (CM_PROB_DISABLED) over its own. Configuration Manager calls answer CR_*
// codes, SetupAPI calls Win32 ones.
//
// Fault points of the SetupAPI calls: "devices.classList" (the set cannot be
// opened), "devices.className" (the class GUID is not known),
// "devices.property", and "devices.setParams" / "devices.callInstaller" for
// the two calls of a property change.
class SimDevices final : public platform::DeviceSetup, public SimModel {
public:
    struct Device {
        std::wstring instanceId;
        std::vector<std::wstring> hardwareIds;
        // Setup class in registry form; empty for a device of no class the
        // simulated PC models.
        std::wstring classGuid;
        uint32_t problem = 0;
        bool present = true;
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
    uint32_t ClassDevices(const std::wstring& classGuid, uint32_t flags,
                          std::vector<platform::SetupDevice>& devices) override;
    uint32_t ClassName(const std::wstring& classGuid, std::wstring& name) override;
    uint32_t ReadProperty(const std::wstring& instanceId, platform::SetupProperty property,
                          std::vector<uint8_t>& value) override;
    uint32_t ChangeProperty(const std::wstring& instanceId, const platform::PropertyChange& change,
                            platform::InstallerCall& failedCall) override;

    void Add(Device device);
    void Remove(const std::wstring& instanceId);
    void Reset() override;

private:
    // Needs mutex_ held.
    Device* Find(const std::wstring& instanceId);
    uint32_t Toggle(const std::wstring& instanceId, bool enabled, uint32_t missingDevice);

    platform::Clock& clock_;
    FaultInjector& faults_;
    std::mutex mutex_;
    std::vector<Device> devices_;
};

}  // namespace connectkit::sim
