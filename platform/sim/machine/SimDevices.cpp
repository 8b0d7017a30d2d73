#include "platform/sim/machine/SimDevices.h"

#include <algorithm>

#include "platform/ports/Clock.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/SimText.h"

namespace connectkit::sim {

SimDevices::Device* SimDevices::Find(const std::wstring& instanceId) {
    for (auto& device : devices_) {
        if (Lower(device.instanceId) == Lower(instanceId)) {
            return &device;
        }
    }
    return nullptr;
}

uint32_t SimDevices::PresentDevices(std::vector<std::wstring>& instanceIds,
                                    platform::DeviceListCall& failedCall) {
    instanceIds.clear();
    failedCall = platform::DeviceListCall::Size;
    if (auto error =
            FaultedCall(faults_, clock_, "devices.listSize", platform::kCrCallNotImplemented)) {
        return *error;
    }
    failedCall = platform::DeviceListCall::List;
    if (auto error =
            FaultedCall(faults_, clock_, "devices.list", platform::kCrCallNotImplemented)) {
        return *error;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& device : devices_) {
        instanceIds.push_back(device.instanceId);
    }
    return platform::kCrSuccess;
}

uint32_t SimDevices::HardwareIds(const std::wstring& instanceId,
                                 std::vector<std::wstring>& hardwareIds) {
    hardwareIds.clear();
    if (auto error = FaultedCall(faults_, clock_, "devices.locate", platform::kCrNoSuchDevnode)) {
        return *error;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    const Device* device = Find(instanceId);
    if (!device) {
        return platform::kCrNoSuchDevnode;
    }
    hardwareIds = device->hardwareIds;
    return platform::kCrSuccess;
}

uint32_t SimDevices::ReadDeviceValue(const std::wstring& instanceId, const std::wstring& name,
                                     std::wstring& value) {
    value.clear();
    if (auto error = FaultedCall(faults_, clock_, "devices.readValue", platform::kCrNoSuchValue)) {
        return *error;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    const Device* device = Find(instanceId);
    if (!device) {
        return platform::kCrNoSuchDevnode;
    }
    for (const auto& [key, text] : device->values) {
        if (Lower(key) == Lower(name)) {
            value = text;
            return platform::kCrSuccess;
        }
    }
    return platform::kCrNoSuchValue;
}

uint32_t SimDevices::State(const std::wstring& instanceId, platform::DeviceState& state) {
    state = platform::DeviceState{};
    if (auto error = FaultedCall(faults_, clock_, "devices.state", platform::kCrNoSuchDevnode)) {
        return *error;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    const Device* device = Find(instanceId);
    if (!device) {
        return platform::kCrNoSuchDevnode;
    }
    state.started = device->enabled;
    state.problem = device->enabled ? 0 : platform::kProblemDisabled;
    return platform::kCrSuccess;
}

uint32_t SimDevices::SetEnabled(const std::wstring& instanceId, bool enabled) {
    if (auto error =
            FaultedCall(faults_, clock_, "devices.setEnabled", platform::kCrNoSuchDevnode)) {
        return *error;
    }
    uint32_t latencyMs = 0;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const Device* device = Find(instanceId);
        if (!device) {
            return platform::kCrNoSuchDevnode;
        }
        latencyMs = device->toggleLatencyMs;
    }
    // The class installer returns only once the driver stopped or started.
    clock_.Sleep(latencyMs);
    std::function<void(bool)> changed;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        Device* device = Find(instanceId);
        if (!device) {
            return platform::kCrNoSuchDevnode;
        }
        device->enabled = enabled;
        changed = device->enabledChanged;
    }
    if (changed) {
        changed(enabled);
    }
    return platform::kCrSuccess;
}

void SimDevices::Add(Device device) {
    std::lock_guard<std::mutex> lock(mutex_);
    devices_.push_back(std::move(device));
}

void SimDevices::Remove(const std::wstring& instanceId) {
    std::lock_guard<std::mutex> lock(mutex_);
    std::erase_if(devices_, [&](const Device& device) {
        return Lower(device.instanceId) == Lower(instanceId);
    });
}

void SimDevices::Reset() {
    std::lock_guard<std::mutex> lock(mutex_);
    devices_.clear();
}

}  // namespace connectkit::sim
