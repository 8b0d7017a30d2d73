#pragma once
// Device nodes through Configuration Manager (cfgmgr32); disabling and
// enabling goes through SetupAPI's class installer, whose Win32 failures are
// turned into CONFIGRET codes so that every answer of this port is one:
//   - the instance id names no device (or is empty)  -> CR_NO_SUCH_DEVNODE
//   - the caller may not change the device           -> CR_ACCESS_DENIED
//   - the device cannot be disabled                  -> CR_NOT_DISABLEABLE
//   - any other SetupAPI failure                     -> CR_FAILURE
// An empty instance id is refused up front: Configuration Manager would
// take it for the root of the device tree.

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
};

}  // namespace connectkit::win
