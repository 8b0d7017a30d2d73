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

// SetupDiGetClassDevsW flags.
inline constexpr uint32_t kDigcfPresent = 0x02;
inline constexpr uint32_t kDigcfProfile = 0x08;
inline constexpr uint32_t kDigcfDeviceInterface = 0x10;

// One member of a SetupAPI device information set.
struct SetupDevice {
    // As SetupDiGetDeviceInstanceIdW hands it out, whatever its length: the
    // caller applies its own buffer's bound.
    std::wstring instanceId;
    // The device's class GUID in registry form ("{E0CBF06C-...}"), as
    // StringFromCLSID writes it.
    std::wstring classGuid;
};

// Device properties read through SetupDiGetDevicePropertyW.
enum class SetupProperty {
    HardwareIds,  // DEVPKEY_Device_HardwareIds: REG_MULTI_SZ, UTF-16LE
    ProblemCode,  // DEVPKEY_Device_ProblemCode: 32-bit, little-endian
};

// SP_PROPCHANGE_PARAMS for DIF_PROPERTYCHANGE.
inline constexpr uint32_t kDicsEnable = 1;
inline constexpr uint32_t kDicsDisable = 2;
inline constexpr uint32_t kDicsFlagGlobal = 1;
struct PropertyChange {
    uint32_t stateChange = kDicsEnable;
    uint32_t scope = kDicsFlagGlobal;
    uint32_t hardwareProfile = 0;
};

// The two SetupAPI calls of a class installer's property change.
enum class InstallerCall { SetParams, CallInstaller };

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

    // SetupAPI, with Win32 error codes as results.
    // SetupDiGetClassDevsW for a setup class (`classGuid` in registry form)
    // and SetupDiEnumDeviceInfo over it, in the set's order. An error stands
    // for the invalid handle.
    virtual uint32_t ClassDevices(const std::wstring& classGuid, uint32_t flags,
                                  std::vector<SetupDevice>& devices) = 0;
    // SetupDiClassNameFromGuidW.
    virtual uint32_t ClassName(const std::wstring& classGuid, std::wstring& name) = 0;
    // SetupDiGetDevicePropertyW: the property's raw bytes, whatever their
    // size; the caller applies its own buffer's bound.
    virtual uint32_t ReadProperty(const std::wstring& instanceId, SetupProperty property,
                                  std::vector<uint8_t>& value) = 0;
    // SetupDiSetClassInstallParamsW, then, if that worked,
    // SetupDiCallClassInstaller(DIF_PROPERTYCHANGE). On failure `failedCall`
    // says which of the two failed.
    virtual uint32_t ChangeProperty(const std::wstring& instanceId, const PropertyChange& change,
                                    InstallerCall& failedCall) = 0;
};

}  // namespace connectkit::platform
