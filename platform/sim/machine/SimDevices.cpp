#include "platform/sim/machine/SimDevices.h"

#include <algorithm>
#include <utility>

#include "platform/ports/Clock.h"
#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/SimText.h"

namespace connectkit::sim {
namespace {

// SetupAPI's own error codes.
constexpr uint32_t kErrorInvalidClass = 0xE0000209;
constexpr uint32_t kErrorNoSuchDevinst = 0xE000020B;
constexpr uint32_t kErrorInvalidParameter = 87;
constexpr uint32_t kErrorNotFound = 1168;

// The setup classes whose names SetupDiClassNameFromGuidW knows here.
constexpr std::pair<const wchar_t*, const wchar_t*> kClassNames[] = {
    {L"{e0cbf06c-cd8b-4647-bb8a-263b43f0f974}", L"Bluetooth"},
    {L"{4d36e972-e325-11ce-bfc1-08002be10318}", L"Net"},
};

uint32_t ProblemOf(const SimDevices::Device& device) {
    return device.enabled ? device.problem : platform::kProblemDisabled;
}

void AppendLittleEndian(std::vector<uint8_t>& bytes, uint32_t value, size_t size) {
    for (size_t i = 0; i < size; ++i) {
        bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
    }
}

// REG_MULTI_SZ in UTF-16LE: each string and its NUL, then the closing NUL.
std::vector<uint8_t> MultiString(const std::vector<std::wstring>& strings) {
    std::vector<uint8_t> bytes;
    for (const auto& text : strings) {
        for (wchar_t c : text) {
            AppendLittleEndian(bytes, static_cast<uint16_t>(c), 2);
        }
        AppendLittleEndian(bytes, 0, 2);
    }
    AppendLittleEndian(bytes, 0, 2);
    return bytes;
}

}  // namespace

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
        if (device.present) {
            instanceIds.push_back(device.instanceId);
        }
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
    state.problem = ProblemOf(*device);
    state.started = device->present && state.problem == 0;
    return platform::kCrSuccess;
}

uint32_t SimDevices::SetEnabled(const std::wstring& instanceId, bool enabled) {
    if (auto error =
            FaultedCall(faults_, clock_, "devices.setEnabled", platform::kCrNoSuchDevnode)) {
        return *error;
    }
    return Toggle(instanceId, enabled, platform::kCrNoSuchDevnode);
}

uint32_t SimDevices::Toggle(const std::wstring& instanceId, bool enabled, uint32_t missingDevice) {
    uint32_t latencyMs = 0;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const Device* device = Find(instanceId);
        if (!device) {
            return missingDevice;
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
            return missingDevice;
        }
        device->enabled = enabled;
        changed = device->enabledChanged;
    }
    if (changed) {
        changed(enabled);
    }
    return platform::kErrorSuccess;
}

uint32_t SimDevices::ClassDevices(const std::wstring& classGuid, uint32_t flags,
                                  std::vector<platform::SetupDevice>& devices) {
    devices.clear();
    if (auto error = FaultedCall(faults_, clock_, "devices.classList", kErrorInvalidParameter)) {
        return *error;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& device : devices_) {
        bool wanted = !(flags & platform::kDigcfPresent) || device.present;
        if (wanted && !device.classGuid.empty() && Lower(device.classGuid) == Lower(classGuid)) {
            devices.push_back({device.instanceId, device.classGuid});
        }
    }
    return platform::kErrorSuccess;
}

uint32_t SimDevices::ClassName(const std::wstring& classGuid, std::wstring& name) {
    name.clear();
    if (auto error = FaultedCall(faults_, clock_, "devices.className", kErrorInvalidClass)) {
        return *error;
    }
    for (const auto& [guid, className] : kClassNames) {
        if (Lower(classGuid) == guid) {
            name = className;
            return platform::kErrorSuccess;
        }
    }
    return kErrorInvalidClass;
}

uint32_t SimDevices::ReadProperty(const std::wstring& instanceId, platform::SetupProperty property,
                                  std::vector<uint8_t>& value) {
    value.clear();
    if (auto error = FaultedCall(faults_, clock_, "devices.property", kErrorNotFound)) {
        return *error;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    const Device* device = Find(instanceId);
    if (!device) {
        return kErrorNoSuchDevinst;
    }
    switch (property) {
        case platform::SetupProperty::HardwareIds:
            if (device->hardwareIds.empty()) {
                return kErrorNotFound;
            }
            value = MultiString(device->hardwareIds);
            break;
        case platform::SetupProperty::ProblemCode:
            AppendLittleEndian(value, ProblemOf(*device), 4);
            break;
    }
    return platform::kErrorSuccess;
}

uint32_t SimDevices::ChangeProperty(const std::wstring& instanceId,
                                    const platform::PropertyChange& change,
                                    platform::InstallerCall& failedCall) {
    failedCall = platform::InstallerCall::SetParams;
    if (auto error = FaultedCall(faults_, clock_, "devices.setParams", kErrorInvalidParameter)) {
        return *error;
    }
    if (change.stateChange != platform::kDicsEnable &&
        change.stateChange != platform::kDicsDisable) {
        return kErrorInvalidParameter;
    }
    failedCall = platform::InstallerCall::CallInstaller;
    if (auto error = FaultedCall(faults_, clock_, "devices.callInstaller", kErrorNoSuchDevinst)) {
        return *error;
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const Device* device = Find(instanceId);
        if (!device || !device->present) {
            return kErrorNoSuchDevinst;
        }
    }
    return Toggle(instanceId, change.stateChange == platform::kDicsEnable, kErrorNoSuchDevinst);
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
