// Connecting to the phone's access point: the handle, the scan wait, the
// temporary profile, the connection, and the observers.
#include "connectkit/WifiNetworkService.h"

#include <algorithm>
#include <exception>

#include "SDK/Util/LogTool/LogTool.h"
#include "connectkit/WifiAPI.h"
#include "connectkit/WifiDriverTypes.h"
#include "foundation/DebugTrace.h"
#include "foundation/FunctionName.h"
#include "foundation/Guarded.h"
#include "platform/ModuleLifetime.h"
#include "platform/Platform.h"
#include "platform/ports/Errors.h"
#include "platform/ports/Wlan.h"
#include "platform/suite/DEString.h"
#include "platform/suite/UrlsManager.h"
#include "wifi/WlanProfile.h"

namespace WifiConnectManage {

namespace platform = connectkit::platform;

namespace {

constexpr int kScanPasses = 50;
constexpr int kScanEvery = 20;
constexpr int kFilterResetPass = 8;
constexpr uint32_t kScanPassMs = 100;

platform::Wlan& Wlan() {
    return platform::Current().wlan();
}

// The namespace the URL configuration service gives for `key`, widened; an
// empty one when the service has none, which leaves the profile without it.
std::wstring ProfileNamespace(const char* key) {
    std::string value;
    if (!UrlsManager::Instance()->GetUrl("SynergyService", "china", key, value)) {
        LogWarnFun("%s no url for %s, the profile goes without its namespace",
                   "WifiConnectManage::WifiNetworkService::CreateProfile", key);
    }
    return DE::ANSIToUnicode(value);
}

// The desired-BSSID list Connect hands over: one entry allocated, none
// counted, so that it never restricts the connection. A BSSID shorter than
// six bytes is padded with zeros rather than read past its end.
platform::Dot11BssidList DesiredBssids(const std::vector<char>& bssid) {
    platform::Dot11BssidList list;
    list.headerType = 0x80;
    list.headerRevision = 1;
    list.headerSize = 4;
    list.numberOfEntries = 0;
    list.totalNumberOfEntries = 1;
    platform::MacAddress first{};
    std::copy_n(bssid.begin(), std::min(bssid.size(), first.size()), first.begin());
    list.entries.push_back(first);
    return list;
}

}  // namespace

WifiNetworkService* WifiNetworkService::wifiNetworkService = nullptr;

WifiNetworkService::WifiNetworkService() = default;

WifiNetworkService* WifiNetworkService::GetInstance() {
    // A function-level static makes the first call safe from any thread; the
    // exported pointer is what the suite reads.
    static WifiNetworkService* const instance = wifiNetworkService = new WifiNetworkService();
    return instance;
}

void WifiNetworkService::InstanceHandle() {
    std::lock_guard<std::mutex> lock(handleMutex_);
    if (handle_.load() != nullptr) {
        return;
    }
    uint32_t version = 0;
    platform::WlanHandle handle = nullptr;
    Wlan().OpenHandle(platform::kWlanClientVersion, version, handle);
    if (handle == nullptr) {
        return;
    }
    handle_ = handle;
    LogWarnFun("%s RegisterNotificationCallback\n", CK_FUNCTION);
    // Native Wi-Fi calls back into this module for as long as the process
    // lives: the handle is never closed.
    platform::KeepModuleLoaded();
    RegisterNotificationCallback(handle, &WifiNetworkService::OnNotificationReceived);
}

bool WifiNetworkService::RegisterNotificationCallback(void* handle,
                                                      void (*callback)(platform::WlanNotification*,
                                                                       void*)) {
    uint32_t result = Wlan().RegisterNotification(handle, platform::kWlanSourceAll, false, callback,
                                                  this, nullptr);
    LogWarnFun("%s WlanRegisterNotification ret=%u\n", CK_FUNCTION, result);
    return result == platform::kErrorSuccess;
}

bool WifiNetworkService::UnregisterNotificationCallback(
    void* handle, void (*callback)(platform::WlanNotification*, void*)) {
    uint32_t result = Wlan().RegisterNotification(handle, platform::kWlanSourceNone, false,
                                                  callback, this, nullptr);
    LogWarnFun("%s WlanRegisterNotification ret=%u\n", CK_FUNCTION, result);
    return result == platform::kErrorSuccess;
}

bool WifiNetworkService::Connect(std::wstring ssid, std::wstring key, bool waitForScan, int channel,
                                 std::vector<char> bssid, bool useScanFilter) {
    const char* function = CK_FUNCTION;
    try {
        currentIp_ = "0.0.0.0";
        InstanceHandle();
        if (waitForScan) {
            const std::string narrowSsid = DE::UnicodeToUTF8(ssid);
            if (useScanFilter && bssid.size() == 6) {
                setfilter(narrowSsid, channel, "",
                          reinterpret_cast<const unsigned char*>(bssid.data()), "", "");
            }
            bool found = false;
            // The wait's outcome is not checked: a network that never shows
            // is joined all the same, as a hidden one may still answer.
            for (int pass = 0; pass < kScanPasses && !found; ++pass) {
                if (pass == kFilterResetPass && useScanFilter) {
                    ConnectKit::WifiAPI::GetInstance()->ResetLegacyGoScanFilter();
                }
                if (pass % kScanEvery == 0) {
                    Scan();
                }
                NotifyWifiStateChanged(ssid, WifiConnecting);
                scanResults_ = getScanResults();
                if (pass > 0) {
                    platform::Current().clock().Sleep(kScanPassMs);
                }
                LogWarnFun("%s:scan count %d\n", function, pass);
                found = std::find(scanResults_.begin(), scanResults_.end(), narrowSsid) !=
                        scanResults_.end();
            }
        }

        const ApInfo info{ssid, key, L"WPA2PSK", L"AES"};
        platform::WlanConnectionParameters parameters;
        parameters.mode = platform::WlanConnectionMode::TemporaryProfile;
        parameters.profile = CreateProfile(info);
        parameters.desiredBssids = DesiredBssids(bssid);
        parameters.bssType = platform::Dot11BssType::Any;
        parameters.flags = 0;

        std::vector<platform::WlanInterfaceInfo> interfaces;
        uint32_t result = Wlan().EnumInterfaces(handle_, interfaces);
        if (result != platform::kErrorSuccess || interfaces.empty()) {
            LogErrorFun("%s - step 2.2, WlanEnumInterfaces failed\n", function);
            DebugTrace("%s - step 2.2, WlanEnumInterfaces failed\n", function);
            return false;
        }
        platform::Guid guid = interfaces[0].guid;
        bool found = false;
        if (IsConnected(handle_, ssid, guid, found, false)) {
            NotifyWifiStateChanged(ssid, WifiConnected);
            return true;
        }
        platform::WlanInterfaceAnswer answer;
        result = Wlan().QueryInterface(handle_, guid, platform::WlanIntfOpcode::CurrentConnection,
                                       answer);
        LogWarnFun("%s - step 6, WlanQueryInterface result=%u ERROR_SUCCESS=%u\n", function, result,
                   platform::kErrorSuccess);
        // Whether the association works out comes later, as notifications.
        result = Wlan().Connect(handle_, guid, parameters);
        LogWarnFun("%s - step 7, WlanConnect result=%u ERROR_SUCCESS=%u\n", function, result,
                   platform::kErrorSuccess);
        return true;
    } catch (const std::exception& error) {
        LogErrorFun("%s catch exception: %.200s", function, error.what());
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", function);
    }
    return false;
}

bool WifiNetworkService::IsConnected(void* handle, std::wstring profileName,
                                     platform::Guid& interfaceGuid, bool& interfaceFound,
                                     bool disconnectOther) {
    const char* function = CK_FUNCTION;
    std::vector<platform::WlanInterfaceInfo> interfaces;
    uint32_t result = Wlan().EnumInterfaces(handle, interfaces);
    if (result != platform::kErrorSuccess || interfaces.empty()) {
        LogWarnFun("%s failed - step 2.1\n", function);
        interfaceFound = false;
        return false;
    }
    interfaceFound = true;
    interfaceGuid = interfaces[0].guid;
    platform::WlanInterfaceAnswer answer;
    result = Wlan().QueryInterface(handle, interfaceGuid,
                                   platform::WlanIntfOpcode::CurrentConnection, answer);
    if (result != platform::kErrorSuccess) {
        LogWarnFun("%s failed ret=%d - step 6\n", function, static_cast<int>(result));
    } else {
        const auto& connection = answer.connection;
        const bool connected = connection.state == platform::WlanInterfaceState::Connected;
        if (connection.profileName == profileName) {
            if (connected) {
                return true;
            }
        } else if (connected && disconnectOther) {
            LogWarnFun(L"%s failed ret=%d - step 4.1, before WlanDisconnect\n",
                       DE::UTF8ToUnicode(function).c_str(), static_cast<int>(result));
            result = Wlan().Disconnect(handle, interfaceGuid);
            LogWarnFun(L"%s failed ret=%d - step 4.2, after WlanDisconnect\n",
                       DE::UTF8ToUnicode(function).c_str(), static_cast<int>(result));
        }
    }
    LogWarnFun("%s failed - step 7\n", function);
    return false;
}

bool WifiNetworkService::DisConnnect() {
    const char* function = CK_FUNCTION;
    return Guarded(function, false, [this, function] {
        LogWarnFun("####WifiNetworkService::DisConnnect!!!####\n");
        InstanceHandle();
        std::vector<platform::WlanInterfaceInfo> interfaces;
        uint32_t result = Wlan().EnumInterfaces(handle_, interfaces);
        if (result != platform::kErrorSuccess || interfaces.empty()) {
            LogWarnFun("%s WlanEnumInterfaces failed\n", function);
            return false;
        }
        // The ACM notification that follows tells the observers.
        if (Wlan().Disconnect(handle_, interfaces[0].guid) != platform::kErrorSuccess) {
            LogWarnFun("%s WlanDisconnect failed\n", function);
            state_ = WifiConnectFailed;
            return false;
        }
        LogWarnFun("%s WlanDisconnect success\n", function);
        state_ = WifiDisConnected;
        return true;
    });
}

bool WifiNetworkService::Scan() {
    return Guarded(CK_FUNCTION, false, [this] {
        scanResults_.clear();
        InstanceHandle();
        std::vector<platform::WlanInterfaceInfo> interfaces;
        if (Wlan().EnumInterfaces(handle_, interfaces) != platform::kErrorSuccess ||
            interfaces.empty()) {
            return false;
        }
        Wlan().Scan(handle_, interfaces[0].guid, std::nullopt, {});
        return true;
    });
}

std::list<std::string> WifiNetworkService::getScanResults() {
    const char* function = CK_FUNCTION;
    return Guarded(function, std::list<std::string>(), [this, function] {
        std::list<std::string> results;
        std::vector<platform::WlanInterfaceInfo> interfaces;
        if (Wlan().EnumInterfaces(handle_, interfaces) != platform::kErrorSuccess ||
            interfaces.empty()) {
            return results;
        }
        const platform::Guid guid = interfaces[0].guid;
        platform::WlanInterfaceAnswer answer;
        uint32_t result = Wlan().QueryInterface(
            handle_, guid, platform::WlanIntfOpcode::CurrentConnection, answer);
        LogWarnFun("%s: WlanQueryInterface Ret:%d\n", function, static_cast<int>(result));
        std::vector<platform::WlanBssEntry> entries;
        if (Wlan().GetNetworkBssList(handle_, guid, std::nullopt, platform::Dot11BssType::Any, true,
                                     entries) != platform::kErrorSuccess) {
            return results;
        }
        for (const auto& entry : entries) {
            const size_t length = std::min<size_t>(entry.ssid.length, entry.ssid.bytes.size());
            results.emplace_back(reinterpret_cast<const char*>(entry.ssid.bytes.data()), length);
        }
        return results;
    });
}

void WifiNetworkService::setfilter(std::string ssid, int channel, std::string,
                                   const unsigned char* bssid, std::string, std::string) {
    _WIFI_LEGACY_GO_SCAN_FILTER filter{};
    if (!ssid.empty()) {
        filter.filterFlag = static_cast<uint8_t>(channel);
    }
    if (bssid != nullptr) {
        std::copy_n(bssid, sizeof(filter.bssid), filter.bssid);
    }
    filter.ssidLength = static_cast<uint32_t>(std::min(ssid.size(), sizeof(filter.ssid)));
    std::copy_n(ssid.begin(), filter.ssidLength, filter.ssid);
    auto* driver = ConnectKit::WifiAPI::GetInstance();
    driver->ResetLegacyGoScanFilter();
    driver->SetWifiLegacyGoScanFilter(&filter);
}

std::wstring WifiNetworkService::CreateProfile(const ApInfo& info) {
    const char* function = CK_FUNCTION;
    const std::wstring profileNamespace = ProfileNamespace("config_WLAN_Profile");
    const std::wstring randomizationNamespace = ProfileNamespace("config_Mac_Randomization");
    const std::wstring hex = GetHexString(info.ssid);
    LogWarnFun(L"%ls hexString: %ls\n", DE::UTF8ToUnicode(function).c_str(), hex.c_str());
    bool formatFailed = false;
    std::wstring profile = connectkit::wifi::BuildProfile(info, hex, profileNamespace,
                                                          randomizationNamespace, formatFailed);
    if (formatFailed) {
        LogErrorFun("%s swprintf_s failed, the profile does not fit", function);
    }
    return profile;
}

std::wstring WifiNetworkService::GetHexString(std::wstring text) {
    return connectkit::wifi::HexString(text);
}

bool WifiNetworkService::exec(wchar_t* commandLine, int) {
    const char* function = CK_FUNCTION;
    try {
        if (commandLine == nullptr ||
            platform::Current().processes().Run(commandLine, 0).error != platform::kErrorSuccess) {
            LogWarnFun("%s failed!!!\n", function);
            return false;
        }
        return true;
    } catch (...) {
        LogWarnFun("%s exception!!!\n", function);
        return false;
    }
}

bool WifiNetworkService::RegistObserver(IWifiNetworkServiceObserver* observer) {
    if (observer == nullptr) {
        return false;
    }
    return Guarded(CK_FUNCTION, false, [this, observer] {
        std::lock_guard<std::recursive_mutex> lock(observerMutex_);
        if (std::find(observers_.begin(), observers_.end(), observer) == observers_.end()) {
            observers_.push_back(observer);
        }
        return true;
    });
}

bool WifiNetworkService::UnregistObserver(IWifiNetworkServiceObserver* observer) {
    if (observer == nullptr) {
        return false;
    }
    return Guarded(CK_FUNCTION, false, [this, observer] {
        std::lock_guard<std::recursive_mutex> lock(observerMutex_);
        observers_.remove(observer);
        return true;
    });
}

void WifiNetworkService::NotifyWifiStateChanged(std::wstring ssid, WifiConnectState state) {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        std::lock_guard<std::recursive_mutex> lock(observerMutex_);
        const auto observers = observers_;
        for (auto* observer : observers) {
            if (observer == nullptr) {
                continue;
            }
            try {
                observer->OnWifiStateChanged(ssid, state);
            } catch (const std::exception& error) {
                LogErrorFun("%s observer threw: %.200s", function, error.what());
            } catch (...) {
                LogErrorFun("%s observer threw an unknown exception", function);
            }
        }
    });
}

void WifiNetworkService::WifiStateChangeCallback(std::wstring ssid, WifiConnectState state) {
    GetInstance()->NotifyWifiStateChanged(std::move(ssid), state);
}

WifiConnectState WifiNetworkService::GetCurentWifiState() {
    return state_;
}

std::wstring WifiNetworkService::StateToString(WifiConnectState state) {
    // The suite matches these texts. The second test of 5 can never be
    // reached; it stays as the receivers have always had it.
    if (state == WifiConnected) {
        return L"WifiConnected";
    } else if (state == WifiConnectFailed) {
        return L"WifiConnectFailed";
    } else if (state == WifiDisConnected) {
        return L"WifiDisConnected";
    } else if (state == WifiConnectFailed) {
        return L"DisConnectFailed";
    } else if (state == WifiConnecting) {
        return L"WifiConnecting";
    }
    return L"unknow";
}

}  // namespace WifiConnectManage
