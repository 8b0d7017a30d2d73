#pragma once
// Device nodes, as Configuration Manager and SetupAPI show them. Results are
// CONFIGRET codes (0 = CR_SUCCESS).

#include <cstdint>
#include <string>
#include <vector>

namespace connectkit::platform {

inline constexpr uint32_t kCrSuccess = 0;
inline constexpr uint32_t kCrNoSuchDevnode = 0x0D;
inline constexpr uint32_t kCrFailure = 0x13;
inline constexpr uint32_t kCrNoSuchValue = 0x25;
inline constexpr uint32_t kCrCallNotImplemented = 0x34;
// CM_PROB_DISABLED: the device node exists but was disabled.
inline constexpr uint32_t kProblemDisabled = 0x16;

// CM_Get_DevNode_Status, reduced: whether the driver runs, and the problem
// code when it does not (0 for none).
struct DeviceState {
    bool started = false;
    uint32_t problem = 0;
};

// Listing the present devices takes two Configuration Manager calls: the
// list's size (CM_Get_Device_ID_List_Size), then the list.
enum class DeviceListCall { Size, List };

class DeviceSetup {
public:
    virtual ~DeviceSetup() = default;
    // Instance identifiers of every present device; on failure, `failedCall`
    // says which of the two calls failed.
    virtual uint32_t PresentDevices(std::vector<std::wstring>& instanceIds,
                                    DeviceListCall& failedCall) = 0;
    virtual uint32_t HardwareIds(const std::wstring& instanceId,
                                 std::vector<std::wstring>& hardwareIds) = 0;
    // A string value of the device's own registry key.
    virtual uint32_t ReadDeviceValue(const std::wstring& instanceId, const std::wstring& name,
                                     std::wstring& value) = 0;
    virtual uint32_t State(const std::wstring& instanceId, DeviceState& state) = 0;
    // Disables or enables the device through its class installer
    // (DIF_PROPERTYCHANGE with DICS_DISABLE / DICS_ENABLE).
    virtual uint32_t SetEnabled(const std::wstring& instanceId, bool enabled) = 0;
};

}  // namespace connectkit::platform
