#include "platform/sim/SimDevices.h"

#include "platform/sim/FaultInjector.h"
#include "platform/sim/SimText.h"

namespace connectkit::sim {

uint32_t SimDevices::PresentDevices(std::vector<std::wstring>& instanceIds) {
    instanceIds.clear();
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
    for (const auto& device : devices_) {
        if (Lower(device.instanceId) == Lower(instanceId)) {
            hardwareIds = device.hardwareIds;
            return platform::kCrSuccess;
        }
    }
    return platform::kCrNoSuchDevnode;
}

uint32_t SimDevices::ReadDeviceValue(const std::wstring& instanceId, const std::wstring& name,
                                     std::wstring& value) {
    value.clear();
    if (auto error = FaultedCall(faults_, clock_, "devices.readValue", platform::kCrNoSuchValue)) {
        return *error;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& device : devices_) {
        if (Lower(device.instanceId) != Lower(instanceId)) {
            continue;
        }
        for (const auto& [key, text] : device.values) {
            if (Lower(key) == Lower(name)) {
                value = text;
                return platform::kCrSuccess;
            }
        }
        return platform::kCrNoSuchValue;
    }
    return platform::kCrNoSuchDevnode;
}

void SimDevices::Add(Device device) {
    std::lock_guard<std::mutex> lock(mutex_);
    devices_.push_back(std::move(device));
}

void SimDevices::Clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    devices_.clear();
}

}  // namespace connectkit::sim
