#include "channel/wifi_intel.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <cwctype>

#include "SDK/Util/LogTool/LogTool.h"
#include "foundation/DebugTrace.h"
#include "platform/Platform.h"
#include "platform/ports/Errors.h"

namespace ConnectKit {
namespace {

namespace platform = connectkit::platform;

std::atomic<int> g_discovery{WifiIntelAPI::kNotYet};

constexpr wchar_t kPlatformIntegrationId[] = L"SWC\\VID_8086&PID_PIE&SID_0001";
constexpr wchar_t kDefaultLibraryPath[] = L"C:\\Program Files\\Intel\\WiFi\\bin\\MurocApi.dll";
// The PROSet value is read into a buffer of this many bytes.
constexpr size_t kProSetBufferBytes = 1024;
// An adapter list claiming more entries than this is not believed.
constexpr uint32_t kMostAdapters = 64;

constexpr uint32_t kAdapterListSize = 25124;
constexpr uint32_t kPreferredSettingSize = 16;
constexpr uint32_t kSetPreferredSize = 532;
constexpr uint32_t kDiscoveryFilterSize = 1160;
constexpr uint32_t kScanFilterSize = 44;

_INTEL_REQUEST_HEADER Header(uint32_t size) {
    return {kIntelRequestMagic, size};
}

bool SameId(const std::wstring& a, const std::wstring& b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](wchar_t x, wchar_t y) {
               return std::towupper(static_cast<wint_t>(x)) ==
                      std::towupper(static_cast<wint_t>(y));
           });
}

template <class Function>
Function Resolve(platform::LoadedLibrary& module, const char* name) {
    return reinterpret_cast<Function>(module.FindSymbol(name));
}

}  // namespace

WifiIntelAPI::DiscoveryMode WifiIntelAPI::Discovery() {
    return static_cast<DiscoveryMode>(g_discovery.load());
}

WifiIntelAPI::WifiIntelAPI() {
    mAdapter = LoadDriver();
}

WifiIntelAPI::~WifiIntelAPI() = default;

bool WifiIntelAPI::FindPlatformIntegrationPath(std::wstring& directory) {
    auto& devices = platform::Current().devices();
    std::vector<std::wstring> instances;
    platform::DeviceListCall failedCall{};
    uint32_t result = devices.PresentDevices(instances, failedCall);
    if (result != platform::kCrSuccess) {
        if (failedCall == platform::DeviceListCall::Size) {
            LogWarnFun("GetAllDeviceList CM_Get_Device_ID_List_Size return Value of %lu",
                       static_cast<unsigned long>(result));
        } else {
            LogWarnFun("GetAllDeviceList CM_Get_Device_ID_List return Value of %lu",
                       static_cast<unsigned long>(result));
        }
        return false;
    }
    for (const auto& instance : instances) {
        std::vector<std::wstring> hardwareIds;
        result = devices.HardwareIds(instance, hardwareIds);
        if (result != platform::kCrSuccess) {
            LogWarnFun("FindDeviceInstance CM_Locate_DevNode return Value of %lu ",
                       static_cast<unsigned long>(result));
            return false;
        }
        bool found = std::any_of(hardwareIds.begin(), hardwareIds.end(),
                                 [](const auto& id) { return SameId(id, kPlatformIntegrationId); });
        if (!found) {
            continue;
        }
        LogWarnFun("FindDeviceInstance the device was found!");
        std::wstring fullPath;
        if (devices.ReadDeviceValue(instance, L"PiePathHint", fullPath) != platform::kCrSuccess ||
            fullPath.empty()) {
            return false;
        }
        LogWarnFun("GetPiePathFromRegistry dllFullPathNumCharacters  = %lu",
                   static_cast<unsigned long>(fullPath.size()));
        // The hint names the library itself; its folder is what we load from.
        size_t slash = fullPath.find_last_of(L"\\/");
        directory = slash == std::wstring::npos ? L"" : fullPath.substr(0, slash + 1);
        return !directory.empty();
    }
    return false;
}

bool WifiIntelAPI::FindDriverDirectory(std::wstring& directory) {
    if (FindPlatformIntegrationPath(directory)) {
        g_discovery = kPlatformIntegration;
        LogErrorFun("[WifiIntelAPI][error]get pie path success");
        return true;
    }
    platform::RegistryData value;
    long read = platform::Current().registry().Read(
        platform::RegistryHive::LocalMachine, L"SOFTWARE\\Intel\\Wireless", L"PROSetBinDir", value);
    if (read == 0 && value.bytes.size() <= kProSetBufferBytes && value.ToString(directory)) {
        g_discovery = kProSet;
        return true;
    }
    LogErrorFun("[WifiIntelAPI][error]get proset path error");
    mStatus = kNoDirectory;
    if (platform::Current().files().Exists(kDefaultLibraryPath)) {
        LogErrorFun("[WifiIntelAPI][error]MurocApi.dll exist, registry error");
        mStatus = kDirectoryMissingButLibraryPresent;
    } else {
        LogErrorFun("[WifiIntelAPI][error]MurocApi.dll do not exist");
        mStatus = kNoDirectory;
    }
    return false;
}

int WifiIntelAPI::TakeAdapterHandle() {
    auto getList = Resolve<IntelGetAdapterList>(*mModule, "WifiGetAdapterList");
    if (!getList) {
        return -1;
    }
    auto header = Header(kAdapterListSize);
    void* list = nullptr;
    if (getList(&header, &list) != 0 || !list) {
        return -1;
    }
    const auto* bytes = static_cast<const uint8_t*>(list);
    uint32_t count = 0;
    std::memcpy(&count, bytes, sizeof(count));
    if (count > kMostAdapters) {
        LogErrorFun("[WifiIntelAPI][error]adapter list claims %u adapters; reading %u", count,
                    kMostAdapters);
        count = kMostAdapters;
    }
    int handle = -1;
    if (Discovery() == kProSet) {
        for (uint32_t i = 0; i < count; ++i) {
            const uint8_t* entry = bytes + size_t{kIntelAdapterStride} * i;
            uint32_t inUse = 0;
            std::memcpy(&inUse, entry + kIntelAdapterInUseOffset, sizeof(inUse));
            if (inUse != 0) {
                std::memcpy(&handle, entry + kIntelAdapterHandleOffset, sizeof(handle));
            }
        }
        platform::Current().loader().FreeVendorBuffer(list);
    } else if (count > 0) {
        std::memcpy(&handle, bytes + kIntelAdapterHandleOffset, sizeof(handle));
    }
    return handle;
}

void WifiIntelAPI::ResolveEntryPoints() {
    auto& module = *mModule;
    mQuerySupportedChannels = Resolve<IntelQuery>(module, "WifiPanQuerySupportedChannels");
    if (mQuerySupportedChannels) {
        LogWarnFun("[WifiIntelAPI][error]get WifiPanQuerySupportedChannels success");
    } else {
        LogErrorFun("[WifiIntelAPI][error]get WifiPanQuerySupportedChannels error");
    }
    mSetPreferredChannelSettings =
        Resolve<IntelSetPreferred>(module, "WifiPanSetPreferredChannelSettings");
    if (!mSetPreferredChannelSettings) {
        LogErrorFun("[WifiIntelAPI][error]get WifiPanSetPreferredChannelSettings error");
    }
    mQueryPreferredChannelSetting =
        Resolve<IntelQuery>(module, "WifiPanQueryPreferredChannelSetting");
    if (!mQueryPreferredChannelSetting) {
        LogErrorFun("[WifiIntelAPI][error]get WifiPanQueryPreferredChannelSetting error");
        mStatus = kNoPreferredQuery;
    }
    mSetDiscoveryFilter = Resolve<IntelSetWithFlag>(module, "WifiPanSetDiscoveryFilter");
    if (!mSetDiscoveryFilter) {
        LogErrorFun("[WifiIntelAPI][error]get WifiPanSetDiscoveryFilter error");
    }
    mResetPreferredChannelSettings =
        Resolve<IntelReset>(module, "WifiPanResetPreferredChannelSettings");
    if (!mResetPreferredChannelSettings) {
        LogErrorFun("[WifiIntelAPI][error]get WifiPanResetPreferredChannelSettings error");
    }
    mResetDiscoveryFilter = Resolve<IntelReset>(module, "WifiPanReSetDiscoveryFilter");
    if (!mResetDiscoveryFilter) {
        LogErrorFun("[WifiIntelAPI][error]get WifiPanReSetDiscoveryFilter error");
    }
    mSetLegacyGoScanFilter = Resolve<IntelSetWithFlag>(module, "WifiLegacyGoSetScanFilter");
    if (mSetLegacyGoScanFilter) {
        DebugTrace("[WifiIntelAPI][debug]get WifiLegacyGoSetScanFilter success");
    } else {
        LogErrorFun("[WifiIntelAPI][error]get WifiLegacyGoSetScanFilter error");
    }
    mResetLegacyGoScanFilter = Resolve<IntelReset>(module, "WifiPanReSetLegacyGoScanFilter");
    if (!mResetLegacyGoScanFilter) {
        LogErrorFun("get WifiPanReSetLegacyGoScanFilter error");
    }
}

int WifiIntelAPI::LoadDriver() {
    std::wstring directory;
    if (!FindDriverDirectory(directory)) {
        LogErrorFun("[WifiIntelAPI][error]get murocapi.dll error");
        return -1;
    }
    // The folder is used as it stands: it must end in a separator.
    std::wstring path = directory + L"murocapi.dll";
    uint32_t error = 0;
    mModule = platform::Current().loader().Load(path, error);
    if (!mModule) {
        LogErrorFun(L"[WifiIntelAPI][error]LoadLibrary from <%ls> failed - 1", path.c_str());
        mStatus = kLoadFailed;
        LogErrorFun("[WifiIntelAPI][error]get murocapi.dll error");
        return -1;
    }
    LogWarnFun(L"[WifiIntelAPI][error]LoadLibrary from <%ls> success - 1", path.c_str());
    int handle = TakeAdapterHandle();
    if (handle == -1) {
        LogErrorFun("[WifiIntelAPI][error]get adapter error, free library");
        mModule.reset();
        mStatus = kNoAdapter;
        return -1;
    }
    LogErrorFun("[WifiIntelAPI][error]get adapter handle %d", handle);
    ResolveEntryPoints();
    return handle;
}

void WifiIntelAPI::Reload() {
    LogErrorFun("[WifiIntelAPI][error]reload murocapi.dll");
    if (mModule) {
        mModule.reset();
        mQuerySupportedChannels = nullptr;
        mSetPreferredChannelSettings = nullptr;
        mQueryPreferredChannelSetting = nullptr;
        mSetDiscoveryFilter = nullptr;
        mResetPreferredChannelSettings = nullptr;
        mResetDiscoveryFilter = nullptr;
        mSetLegacyGoScanFilter = nullptr;
        mResetLegacyGoScanFilter = nullptr;
    }
    mAdapter = LoadDriver();
}

int WifiIntelAPI::GetSupportedChannels(_GO_SUPPORTTED_CHANNELS* channels) {
    if (!mModule) {
        Reload();
    }
    auto header = Header(Discovery() == kProSet ? 4 : sizeof(_GO_SUPPORTTED_CHANNELS));
    if (!mQuerySupportedChannels || !channels ||
        mQuerySupportedChannels(mAdapter, &header, channels) != 0) {
        LogErrorFun("[WifiIntelAPI][error]GetSupportedChannel error");
        return -1;
    }
    LogWarnFun("[WifiIntelAPI]GetSupportedChannel success");
    return 0;
}

int WifiIntelAPI::GetPreferredChannelSetting(_GO_OPERATION_CHANNEL_SETTING* setting) {
    auto query = [&] {
        auto header = Header(kPreferredSettingSize);
        return mQueryPreferredChannelSetting && setting
                   ? mQueryPreferredChannelSetting(mAdapter, &header, setting)
                   : -1;
    };
    int result = query();
    if (result == 0) {
        mStatus = kUsable;
        LogWarnFun("[WifiIntelAPI]GetPreferredChannelSetting success");
        return 0;
    }
    LogErrorFun("[WifiIntelAPI][error]GetPreferredChannelSetting error retry again %d", result);
    if (query() != 0) {
        LogErrorFun("[WifiIntelAPI][error]GetPreferredChannel retry Setting error");
        if (mQueryPreferredChannelSetting) {
            mStatus = kPreferredQueryFailed;
        }
        return mStatus;
    }
    mStatus = kUsable;
    LogWarnFun("[WifiIntelAPI]GetPreferredChannel retry Setting success");
    return 0;
}

int WifiIntelAPI::SetPreferredChannelSettings(_INTEL_GO_PREFERRED_CHANNEL* channels) {
    auto header = Header(kSetPreferredSize);
    uint32_t driverResult = 0;
    if (!mSetPreferredChannelSettings || !channels ||
        mSetPreferredChannelSettings(mAdapter, &header, channels, &driverResult) != 0) {
        LogErrorFun("[WifiIntelAPI][error]SetPreferredChannelSettings error");
        return -1;
    }
    DebugTrace("[WifiIntelAPI]SetPreferredChannelSettings success");
    return 0;
}

int WifiIntelAPI::SetDiscoverFilter(_WIFI_DISCOVER_FILTER* filter) {
    auto header = Header(kDiscoveryFilterSize);
    if (!mSetDiscoveryFilter || !filter || mSetDiscoveryFilter(mAdapter, &header, filter, 0) != 0) {
        LogErrorFun("[WifiIntelAPI][error]SetDiscoverFilter error");
        return -1;
    }
    DebugTrace("[WifiIntelAPI]SetDiscoverFilter success");
    return 0;
}

int WifiIntelAPI::Simple(IntelReset entry, uint32_t size, const char* failure,
                         const char* success) {
    auto header = Header(size);
    if (!entry || entry(mAdapter, &header) != 0) {
        LogErrorFun("%s", failure);
        return -1;
    }
    DebugTrace("%s", success);
    return 0;
}

int WifiIntelAPI::ResetPreferredChannelSettings() {
    return Simple(mResetPreferredChannelSettings, 0,
                  "[WifiIntelAPI][error]ResetPreferredChannelSettings error\n",
                  "[WifiIntelAPI]ResetPreferredChannelSettings success\n");
}

int WifiIntelAPI::ResetDiscoverFilter() {
    return Simple(mResetDiscoveryFilter, 0, "[WifiIntelAPI][error]ResetDiscoverFilter error",
                  "[WifiIntelAPI]ResetDiscoverFilter success");
}

int WifiIntelAPI::ResetLegacyGoScanFilter() {
    return Simple(mResetLegacyGoScanFilter, kScanFilterSize,
                  "[WifiIntelAPI][error]ResetLegacyGoScanFilter error",
                  "[WifiIntelAPI]ResetLegacyGoScanFilter success");
}

int WifiIntelAPI::SetWifiLegacyGoScanFilter(_WIFI_LEGACY_GO_SCAN_FILTER* filter) {
    const char* self = "ConnectKit::WifiIntelAPI::SetWifiLegacyGoScanFilter";
    if (!mSetLegacyGoScanFilter) {
        LogErrorFun("%s GetProcAddress fail\n", self);
        return -1;
    }
    auto header = Header(kScanFilterSize);
    if (!filter || mSetLegacyGoScanFilter(mAdapter, &header, filter, 0) != 0) {
        LogErrorFun("%s WifiLegacyGoSetScanFilter fail\n", self);
        return -1;
    }
    LogWarnFun("%s SetWifiLegacyGoScanFilter success\n", self);
    return 0;
}

}  // namespace ConnectKit
