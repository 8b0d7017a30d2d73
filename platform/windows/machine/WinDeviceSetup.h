#pragma once
// Device nodes through Configuration Manager (cfgmgr32); disabling and
// enabling goes through SetupAPI's class installer, whose Win32 failures are
// turned into CONFIGRET codes so that every answer of the Configuration
// Manager calls is one:
//   - the instance id names no device (or is empty)  -> CR_NO_SUCH_DEVNODE
//   - the caller may not change the device           -> CR_ACCESS_DENIED
//   - the device cannot be disabled                  -> CR_NOT_DISABLEABLE
//   - any other SetupAPI failure                     -> CR_FAILURE
// An empty instance id is refused up front: Configuration Manager would
// take it for the root of the device tree. The SetupAPI calls of the port
// answer SetupAPI's own Win32 codes.

#include "platform/ports/DeviceSetup.h"

namespace connectkit::win {

class WinDeviceSetup final : public platform::DeviceSetup {
public:
    uint32_t PresentDevices(std::vector<std::wstring>& instanceIds,
                            platform::DeviceListCall& failedCall) override;
    uint32_t HardwareIds(const std::wstring& instanceId,
                         std::vector<std::wstring>& hardwareIds) override;
    // Reads from the device's hardware key ("Device Parameters").
    uint32_t ReadDeviceValue(const std::wstring& instanceId, const std::wstring& name,
                             std::wstring& value) override;
    uint32_t State(const std::wstring& instanceId, platform::DeviceState& state) override;
    uint32_t SetEnabled(const std::wstring& instanceId, bool enabled) override;
    // SetupAPI answers Win32 codes; an instance id or GUID text that names
    // nothing gets ERROR_NO_SUCH_DEVINST or ERROR_INVALID_PARAMETER before
    // SetupAPI is asked.
    uint32_t ClassDevices(const std::wstring& classGuid, uint32_t flags,
                          std::vector<platform::SetupDevice>& devices) override;
    uint32_t ClassName(const std::wstring& classGuid, std::wstring& name) override;
    uint32_t ReadProperty(const std::wstring& instanceId, platform::SetupProperty property,
                          std::vector<uint8_t>& value) override;
    uint32_t ChangeProperty(const std::wstring& instanceId, const platform::PropertyChange& change,
                            platform::InstallerCall& failedCall) override;
};

}  // namespace connectkit::win
