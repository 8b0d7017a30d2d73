#include "channel/CommonAPI.h"

#include <algorithm>
#include <cstring>
#include <cwctype>
#include <vector>

#include "SDK/Util/LogTool/LogTool.h"
#include "foundation/FunctionName.h"
#include "platform/Platform.h"

namespace {

using connectkit::platform::NetworkAdapterInfo;

constexpr uint32_t kRestartWaitMs = 5000;
constexpr uint32_t kRestartPollMs = 100;
constexpr uint32_t kNetshWaitMs = 10000;

std::vector<NetworkAdapterInfo> ListAdapters(const char* caller) {
    std::vector<NetworkAdapterInfo> adapters;
    uint32_t error = connectkit::platform::Current().adapters().List(adapters);
    if (error != 0) {
        LogErrorFun("%s GetAdaptersInfo failed, error %u", caller, error);
        adapters.clear();
    }
    return adapters;
}

const NetworkAdapterInfo* FindVirtualAdapter(const std::vector<NetworkAdapterInfo>& adapters,
                                             bool mustBeUp) {
    for (const auto& adapter : adapters) {
        if (adapter.kind == NetworkAdapterInfo::Kind::WiFiDirectVirtual &&
            (adapter.up || !mustBeUp)) {
            return &adapter;
        }
    }
    return nullptr;
}

std::wstring Lower(const std::wstring& text) {
    std::wstring lower;
    for (wchar_t c : text) {
        lower.push_back(static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c))));
    }
    return lower;
}

// Instance ids of every Wi-Fi Direct virtual adapter; false when the device
// list cannot be read.
bool FindVirtualAdapterDevices(std::vector<std::wstring>& found, const char* caller) {
    auto& devices = connectkit::platform::Current().devices();
    std::vector<std::wstring> present;
    connectkit::platform::DeviceListCall failedCall{};
    uint32_t result = devices.PresentDevices(present, failedCall);
    if (result != connectkit::platform::kCrSuccess) {
        LogErrorFun("%s device list failed, CONFIGRET 0x%x", caller, result);
        return false;
    }
    const std::wstring wanted = Lower(kWiFiDirectVirtualAdapterHardwareId);
    for (const auto& instanceId : present) {
        std::vector<std::wstring> hardwareIds;
        if (devices.HardwareIds(instanceId, hardwareIds) != connectkit::platform::kCrSuccess) {
            continue;
        }
        if (std::any_of(hardwareIds.begin(), hardwareIds.end(),
                        [&wanted](const std::wstring& id) { return Lower(id) == wanted; })) {
            found.push_back(instanceId);
        }
    }
    return true;
}

bool WaitUntilStarted(const std::wstring& instanceId) {
    auto& clock = connectkit::platform::Current().clock();
    auto& devices = connectkit::platform::Current().devices();
    for (uint32_t waited = 0;; waited += kRestartPollMs) {
        connectkit::platform::DeviceState state;
        if (devices.State(instanceId, state) == connectkit::platform::kCrSuccess && state.started) {
            return true;
        }
        if (waited >= kRestartWaitMs) {
            return false;
        }
        clock.Sleep(kRestartPollMs);
    }
}

}  // namespace

int CommonAPI::GetSoftapAdapterIndex(unsigned char mac[6]) {
    auto adapters = ListAdapters(CK_FUNCTION);
    const auto* adapter = FindVirtualAdapter(adapters, true);
    if (!adapter) {
        return 0;
    }
    std::memcpy(mac, adapter->mac.data(), adapter->mac.size());
    return static_cast<int>(adapter->index);
}

bool CommonAPI::GetMacAddress(unsigned char mac[6]) {
    auto adapters = ListAdapters(CK_FUNCTION);
    const auto* adapter = FindVirtualAdapter(adapters, true);
    if (!adapter) {
        return false;
    }
    std::memcpy(mac, adapter->mac.data(), adapter->mac.size());
    return true;
}

std::string CommonAPI::GetLegacyAPIP() {
    auto adapters = ListAdapters(CK_FUNCTION);
    const auto* adapter = FindVirtualAdapter(adapters, true);
    if (adapter) {
        for (const auto& ip : adapter->ipv4) {
            if (!ip.empty() && ip != "0.0.0.0") {
                return ip;
            }
        }
    }
    return kDefaultLegacyAPIP;
}

bool CommonAPI::IsIPPresent(const std::string& ip) {
    auto adapters = ListAdapters(CK_FUNCTION);
    return std::any_of(adapters.begin(), adapters.end(), [&ip](const NetworkAdapterInfo& adapter) {
        return std::find(adapter.ipv4.begin(), adapter.ipv4.end(), ip) != adapter.ipv4.end();
    });
}

bool CommonAPI::RestartWiFiDirectVirtualAdapter(bool waitUntilStarted) {
    const char* function = CK_FUNCTION;
    std::vector<std::wstring> found;
    if (!FindVirtualAdapterDevices(found, function)) {
        return false;
    }
    if (found.empty()) {
        LogErrorFun("%s no Wi-Fi Direct virtual adapter", function);
        return false;
    }
    auto& devices = connectkit::platform::Current().devices();
    bool ok = true;
    for (const auto& instanceId : found) {
        uint32_t disabled = devices.SetEnabled(instanceId, false);
        uint32_t enabled = devices.SetEnabled(instanceId, true);
        LogWarnFun("%s %ls disable 0x%x enable 0x%x", function, instanceId.c_str(), disabled,
                   enabled);
        if (disabled != connectkit::platform::kCrSuccess ||
            enabled != connectkit::platform::kCrSuccess) {
            ok = false;
            continue;
        }
        if (waitUntilStarted && !WaitUntilStarted(instanceId)) {
            LogErrorFun("%s %ls did not start again", function, instanceId.c_str());
            ok = false;
        }
    }
    return ok;
}

bool CommonAPI::NetshInterfaceIp() {
    const char* function = CK_FUNCTION;
    auto adapters = ListAdapters(function);
    const auto* adapter = FindVirtualAdapter(adapters, false);
    if (!adapter) {
        LogErrorFun("%s no Wi-Fi Direct virtual adapter", function);
        return false;
    }
    std::string ip = kDefaultLegacyAPIP;
    if (!adapter->ipv4.empty() && !adapter->ipv4.front().empty()) {
        ip = adapter->ipv4.front();
    }
    std::wstring command = L"netsh interface ipv4 set address name=" +
                           std::to_wstring(adapter->index) + L" source=static address=" +
                           std::wstring(ip.begin(), ip.end()) + L" mask=255.255.255.0";
    auto outcome = connectkit::platform::Current().processes().Run(command, kNetshWaitMs);
    if (outcome.error != 0 || !outcome.finished || outcome.exitCode != 0) {
        LogErrorFun("%s \"%ls\" failed: error %u, finished %d, exit code %u", function,
                    command.c_str(), outcome.error, outcome.finished ? 1 : 0, outcome.exitCode);
        return false;
    }
    return true;
}

bool CommonAPI::CheckWiFiDirectVirtualAdapterStatus(bool& adapterMissing, bool& adapterDisabled) {
    const char* function = CK_FUNCTION;
    adapterMissing = false;
    adapterDisabled = false;
    std::vector<std::wstring> found;
    if (!FindVirtualAdapterDevices(found, function)) {
        return false;
    }
    if (found.empty()) {
        adapterMissing = true;
    } else {
        auto& devices = connectkit::platform::Current().devices();
        adapterDisabled = std::all_of(found.begin(), found.end(), [&devices](const auto& id) {
            connectkit::platform::DeviceState state;
            return devices.State(id, state) == connectkit::platform::kCrSuccess &&
                   state.problem == connectkit::platform::kProblemDisabled;
        });
    }
    LogWarnFun("%s adapters %zu, missing %d, disabled %d", function, found.size(),
               adapterMissing ? 1 : 0, adapterDisabled ? 1 : 0);
    return true;
}
