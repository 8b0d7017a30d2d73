#pragma once
// Device setup and network adapters on Windows are not built yet: they answer
// "not implemented" and say so in the log once per port.

#include "platform/ports/DeviceSetup.h"
#include "platform/ports/NetworkAdapters.h"

namespace connectkit::win {

class WinDeviceSetup final : public platform::DeviceSetup {
public:
    uint32_t PresentDevices(std::vector<std::wstring>& instanceIds) override;
    uint32_t HardwareIds(const std::wstring& instanceId,
                         std::vector<std::wstring>& hardwareIds) override;
    uint32_t ReadDeviceValue(const std::wstring& instanceId, const std::wstring& name,
                             std::wstring& value) override;
    uint32_t State(const std::wstring& instanceId, platform::DeviceState& state) override;
    uint32_t SetEnabled(const std::wstring& instanceId, bool enabled) override;
};

class WinNetworkAdapters final : public platform::NetworkAdapters {
public:
    uint32_t List(std::vector<platform::NetworkAdapterInfo>& adapters) override;
};

}  // namespace connectkit::win
