#include "platform/windows/machine/WinDeviceSetup.h"

// clang-format off
#include <windows.h>
#include <cfgmgr32.h>
#include <setupapi.h>
// clang-format on

#include "platform/windows/core/UniqueHandle.h"
#include "platform/windows/machine/MultiSz.h"

namespace connectkit::win {
namespace {

// Lists and properties may grow between the size query and the read.
constexpr int kMaxAttempts = 4;

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

}  // namespace

uint32_t WinDeviceSetup::PresentDevices(std::vector<std::wstring>& instanceIds,
                                        platform::DeviceListCall& failedCall) {
    instanceIds.clear();
    CONFIGRET result = CR_BUFFER_SMALL;
    std::vector<wchar_t> buffer;
    for (int attempt = 0; attempt < kMaxAttempts && result == CR_BUFFER_SMALL; ++attempt) {
        ULONG length = 0;
        failedCall = platform::DeviceListCall::Size;
        result = CM_Get_Device_ID_List_SizeW(&length, nullptr, CM_GETIDLIST_FILTER_PRESENT);
        if (result != CR_SUCCESS) {
            return result;
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
    std::vector<wchar_t> buffer;
    ULONG bytes = 0;
    result = CR_BUFFER_SMALL;
    for (int attempt = 0; attempt < kMaxAttempts && result == CR_BUFFER_SMALL; ++attempt) {
        buffer.assign(bytes / sizeof(wchar_t) + 1, L'\0');
        bytes = static_cast<ULONG>(buffer.size() * sizeof(wchar_t));
        ULONG type = 0;
        result = CM_Get_DevNode_Registry_PropertyW(node, CM_DRP_HARDWAREID, &type, buffer.data(),
                                                   &bytes, 0);
    }
    if (result != CR_SUCCESS) {
        return result;
    }
    hardwareIds = SplitMultiSz(buffer.data(), bytes / sizeof(wchar_t));
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
    if (instanceId.empty()) {
        return CR_NO_SUCH_DEVNODE;
    }
    DeviceInfoSet set(SetupDiCreateDeviceInfoList(nullptr, nullptr));
    if (!set) {
        return ConfigRetFromSetupError(GetLastError());
    }
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof(device);
    if (!SetupDiOpenDeviceInfoW(set.Get(), instanceId.c_str(), nullptr, 0, &device)) {
        return ConfigRetFromSetupError(GetLastError());
    }
    SP_PROPCHANGE_PARAMS change{};
    change.ClassInstallHeader.cbSize = sizeof(change.ClassInstallHeader);
    change.ClassInstallHeader.InstallFunction = DIF_PROPERTYCHANGE;
    change.StateChange = enabled ? DICS_ENABLE : DICS_DISABLE;
    change.Scope = DICS_FLAG_GLOBAL;
    if (!SetupDiSetClassInstallParamsW(set.Get(), &device, &change.ClassInstallHeader,
                                       sizeof(change)) ||
        !SetupDiCallClassInstaller(DIF_PROPERTYCHANGE, set.Get(), &device)) {
        return ConfigRetFromSetupError(GetLastError());
    }
    return CR_SUCCESS;
}

}  // namespace connectkit::win
