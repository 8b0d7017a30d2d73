#include "platform/windows/machine/WinDeviceSetup.h"

// clang-format off
#include <windows.h>
#include <initguid.h>
#include <cfgmgr32.h>
#include <devpkey.h>
#include <objbase.h>
#include <setupapi.h>
// clang-format on

#include "platform/windows/core/UniqueHandle.h"
#include "platform/windows/machine/GrowingBuffer.h"
#include "platform/windows/machine/MultiSz.h"

namespace connectkit::win {
namespace {

CONFIGRET Locate(const std::wstring& instanceId, DEVINST& node) {
    if (instanceId.empty()) {
        return CR_NO_SUCH_DEVNODE;
    }
    return CM_Locate_DevNodeW(&node, const_cast<DEVINSTID_W>(instanceId.c_str()),
                              CM_LOCATE_DEVNODE_NORMAL);
}

uint32_t ConfigRetFromSetupError(DWORD error) {
    switch (error) {
        case ERROR_NO_SUCH_DEVINST:
        case ERROR_INVALID_DEVINST_NAME:
            return CR_NO_SUCH_DEVNODE;
        case ERROR_ACCESS_DENIED:
            return CR_ACCESS_DENIED;
        case ERROR_NOT_DISABLEABLE:
            return CR_NOT_DISABLEABLE;
        default:
            return CR_FAILURE;
    }
}

struct DestroyDeviceInfoSet {
    void operator()(HDEVINFO set) const { SetupDiDestroyDeviceInfoList(set); }
};
using DeviceInfoSet = UniqueHandle<HDEVINFO, DestroyDeviceInfoSet, NoHandle::InvalidHandleValue>;

struct FreeTaskMemory {
    void operator()(LPOLESTR text) const { CoTaskMemFree(text); }
};
using TaskMemoryText = UniqueHandle<LPOLESTR, FreeTaskMemory>;

// A set holding the one device `instanceId` names; the Win32 error when
// there is none.
DWORD OpenDevice(const std::wstring& instanceId, DeviceInfoSet& set, SP_DEVINFO_DATA& device) {
    if (instanceId.empty()) {
        return ERROR_NO_SUCH_DEVINST;
    }
    set = DeviceInfoSet(SetupDiCreateDeviceInfoList(nullptr, nullptr));
    if (!set) {
        return GetLastError();
    }
    device = SP_DEVINFO_DATA{};
    device.cbSize = sizeof(device);
    if (!SetupDiOpenDeviceInfoW(set.Get(), instanceId.c_str(), nullptr, 0, &device)) {
        return GetLastError();
    }
    return ERROR_SUCCESS;
}

// `classGuid` in registry form; false when it is no GUID.
bool ParseGuid(const std::wstring& classGuid, GUID& guid) {
    return SUCCEEDED(CLSIDFromString(classGuid.c_str(), &guid));
}

// A text SetupAPI hands out, of whatever length: a path-sized buffer fits
// the usual ones.
template <typename Read>
DWORD ReadSetupText(const Read& read, std::wstring& text) {
    text.clear();
    std::vector<wchar_t> buffer(MAX_PATH, L'\0');
    DWORD required = 0;
    DWORD error = ReadGrowing(buffer, required, read);
    if (error == ERROR_SUCCESS) {
        text.assign(buffer.data(), wcsnlen(buffer.data(), buffer.size()));
    }
    return error;
}

}  // namespace

uint32_t WinDeviceSetup::PresentDevices(std::vector<std::wstring>& instanceIds,
                                        platform::DeviceListCall& failedCall) {
    instanceIds.clear();
    CONFIGRET result = CR_BUFFER_SMALL;
    std::vector<wchar_t> buffer;
    for (int attempt = 0; attempt < kMaxGrowAttempts && result == CR_BUFFER_SMALL; ++attempt) {
        ULONG length = 0;
        failedCall = platform::DeviceListCall::Size;
        result = CM_Get_Device_ID_List_SizeW(&length, nullptr, CM_GETIDLIST_FILTER_PRESENT);
        if (result != CR_SUCCESS) {
            return result;
        }
        if (length > kMaxGrowBytes / sizeof(wchar_t)) {
            LogErrorFun("[SetupApi] device list of %lu characters refused", length);
            return CR_FAILURE;
        }
        failedCall = platform::DeviceListCall::List;
        // One more character keeps an empty list terminated twice.
        buffer.assign(length + 1, L'\0');
        result = CM_Get_Device_ID_ListW(nullptr, buffer.data(), static_cast<ULONG>(buffer.size()),
                                        CM_GETIDLIST_FILTER_PRESENT);
    }
    if (result != CR_SUCCESS) {
        return result;
    }
    instanceIds = SplitMultiSz(buffer.data(), buffer.size());
    return CR_SUCCESS;
}

uint32_t WinDeviceSetup::HardwareIds(const std::wstring& instanceId,
                                     std::vector<std::wstring>& hardwareIds) {
    hardwareIds.clear();
    DEVINST node = 0;
    CONFIGRET result = Locate(instanceId, node);
    if (result != CR_SUCCESS) {
        return result;
    }
    std::vector<uint64_t> buffer;
    ULONG written = 0;
    result = GrowingFill<ULONG>(buffer, CR_BUFFER_SMALL, [&](void* data, ULONG& bytes) {
        ULONG type = 0;
        const CONFIGRET answer =
            CM_Get_DevNode_Registry_PropertyW(node, CM_DRP_HARDWAREID, &type, data, &bytes, 0);
        written = bytes;
        return answer;
    });
    if (result != CR_SUCCESS) {
        return result;
    }
    const size_t held = buffer.size() * sizeof(uint64_t);
    hardwareIds = SplitMultiSz(reinterpret_cast<const wchar_t*>(buffer.data()),
                               (written < held ? written : held) / sizeof(wchar_t));
    return CR_SUCCESS;
}

uint32_t WinDeviceSetup::ReadDeviceValue(const std::wstring& instanceId, const std::wstring& name,
                                         std::wstring& value) {
    value.clear();
    DEVINST node = 0;
    CONFIGRET result = Locate(instanceId, node);
    if (result != CR_SUCCESS) {
        return result;
    }
    RegistryKey key;
    result = CM_Open_DevNode_Key(node, KEY_QUERY_VALUE, 0, RegDisposition_OpenExisting, key.Put(),
                                 CM_REGISTRY_HARDWARE);
    if (result != CR_SUCCESS) {
        return result;
    }
    DWORD type = 0;
    DWORD bytes = 0;
    LSTATUS status = RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type, nullptr, &bytes);
    std::vector<wchar_t> buffer;
    if (status == ERROR_SUCCESS && type == REG_SZ) {
        buffer.assign(bytes / sizeof(wchar_t) + 1, L'\0');
        status = RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type,
                                  reinterpret_cast<BYTE*>(buffer.data()), &bytes);
    }
    if (status != ERROR_SUCCESS || type != REG_SZ) {
        return CR_NO_SUCH_VALUE;
    }
    // The stored string may or may not carry its terminator.
    value.assign(buffer.data(), bytes / sizeof(wchar_t));
    while (!value.empty() && value.back() == L'\0') {
        value.pop_back();
    }
    return CR_SUCCESS;
}

uint32_t WinDeviceSetup::State(const std::wstring& instanceId, platform::DeviceState& state) {
    state = platform::DeviceState{};
    DEVINST node = 0;
    CONFIGRET result = Locate(instanceId, node);
    if (result != CR_SUCCESS) {
        return result;
    }
    ULONG status = 0;
    ULONG problem = 0;
    result = CM_Get_DevNode_Status(&status, &problem, node, 0);
    if (result != CR_SUCCESS) {
        return result;
    }
    state.started = (status & DN_STARTED) != 0;
    state.problem = (status & DN_HAS_PROBLEM) != 0 ? problem : 0;
    return CR_SUCCESS;
}

uint32_t WinDeviceSetup::SetEnabled(const std::wstring& instanceId, bool enabled) {
    // SetupAPI resolves the instance id itself; locating the node first
    // would only add a second answer for an unknown device.
    platform::PropertyChange change;
    change.stateChange = enabled ? DICS_ENABLE : DICS_DISABLE;
    platform::InstallerCall failedCall = platform::InstallerCall::SetParams;
    DWORD error = ChangeProperty(instanceId, change, failedCall);
    return error == ERROR_SUCCESS ? CR_SUCCESS : ConfigRetFromSetupError(error);
}

uint32_t WinDeviceSetup::ClassDevices(const std::wstring& classGuid, uint32_t flags,
                                      std::vector<platform::SetupDevice>& devices) {
    devices.clear();
    GUID guid;
    if (!ParseGuid(classGuid, guid)) {
        return ERROR_INVALID_PARAMETER;
    }
    DeviceInfoSet set(SetupDiGetClassDevsW(&guid, nullptr, nullptr, flags));
    if (!set) {
        return GetLastError();
    }
    for (DWORD index = 0;; ++index) {
        SP_DEVINFO_DATA device{};
        device.cbSize = sizeof(device);
        if (!SetupDiEnumDeviceInfo(set.Get(), index, &device)) {
            DWORD error = GetLastError();
            return error == ERROR_NO_MORE_ITEMS ? ERROR_SUCCESS : error;
        }
        platform::SetupDevice entry;
        DWORD error = ReadSetupText(
            [&](wchar_t* buffer, DWORD size, DWORD* required) {
                return SetupDiGetDeviceInstanceIdW(set.Get(), &device, buffer, size, required);
            },
            entry.instanceId);
        if (error != ERROR_SUCCESS) {
            return error;
        }
        TaskMemoryText text;
        HRESULT result = StringFromCLSID(device.ClassGuid, text.Put());
        if (FAILED(result)) {
            return static_cast<uint32_t>(result);
        }
        entry.classGuid = text.Get();
        devices.push_back(std::move(entry));
    }
}

uint32_t WinDeviceSetup::ClassName(const std::wstring& classGuid, std::wstring& name) {
    name.clear();
    GUID guid;
    if (!ParseGuid(classGuid, guid)) {
        return ERROR_INVALID_PARAMETER;
    }
    return ReadSetupText(
        [&guid](wchar_t* buffer, DWORD size, DWORD* required) {
            return SetupDiClassNameFromGuidW(&guid, buffer, size, required);
        },
        name);
}

uint32_t WinDeviceSetup::ReadProperty(const std::wstring& instanceId,
                                      platform::SetupProperty property,
                                      std::vector<uint8_t>& value) {
    value.clear();
    DeviceInfoSet set;
    SP_DEVINFO_DATA device{};
    if (DWORD error = OpenDevice(instanceId, set, device)) {
        return error;
    }
    const DEVPROPKEY& key = property == platform::SetupProperty::HardwareIds
                                ? DEVPKEY_Device_HardwareIds
                                : DEVPKEY_Device_ProblemCode;
    std::vector<uint8_t> buffer;
    DWORD required = 0;
    DWORD error = ReadGrowing(buffer, required, [&](uint8_t* data, DWORD size, DWORD* needed) {
        DEVPROPTYPE type = 0;
        return SetupDiGetDevicePropertyW(set.Get(), &device, &key, &type, data, size, needed, 0);
    });
    if (error == ERROR_SUCCESS) {
        buffer.resize(required < buffer.size() ? required : buffer.size());
        value = std::move(buffer);
    }
    return error;
}

uint32_t WinDeviceSetup::ChangeProperty(const std::wstring& instanceId,
                                        const platform::PropertyChange& change,
                                        platform::InstallerCall& failedCall) {
    // Opening the device counts as the first call: nothing was installed.
    failedCall = platform::InstallerCall::SetParams;
    DeviceInfoSet set;
    SP_DEVINFO_DATA device{};
    if (DWORD error = OpenDevice(instanceId, set, device)) {
        return error;
    }
    SP_PROPCHANGE_PARAMS parameters{};
    parameters.ClassInstallHeader.cbSize = sizeof(parameters.ClassInstallHeader);
    parameters.ClassInstallHeader.InstallFunction = DIF_PROPERTYCHANGE;
    parameters.StateChange = change.stateChange;
    parameters.Scope = change.scope;
    parameters.HwProfile = change.hardwareProfile;
    if (!SetupDiSetClassInstallParamsW(set.Get(), &device, &parameters.ClassInstallHeader,
                                       sizeof(parameters))) {
        return GetLastError();
    }
    failedCall = platform::InstallerCall::CallInstaller;
    if (!SetupDiCallClassInstaller(DIF_PROPERTYCHANGE, set.Get(), &device)) {
        return GetLastError();
    }
    return ERROR_SUCCESS;
}

}  // namespace connectkit::win
