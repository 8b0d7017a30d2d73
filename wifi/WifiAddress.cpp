// The address side of the WLAN network service: the Wi-Fi adapter among the
// IPv4 adapters, its lease released and renewed, and the wait for a usable
// DHCP address.
//
// The friendly name for "ipconfig /renew" is read with friendly names
// included: were it skipped, an empty name would renew every adapter of the
// PC and cut the user's other connections. A name that still comes back empty
// is passed on as it is.
#include <algorithm>
#include <array>

#include "SDK/Util/LogTool/LogTool.h"
#include "connectkit/WifiNetworkService.h"
#include "foundation/FunctionName.h"
#include "foundation/Guarded.h"
#include "platform/Platform.h"
#include "platform/ports/Errors.h"
#include "platform/ports/NetworkAdapters.h"
#include "platform/suite/DEString.h"

namespace WifiConnectManage {

namespace platform = connectkit::platform;

namespace {

constexpr char kNoAddress[] = "0.0.0.0";
constexpr char kAutomaticPrivate[] = "169.254.";
constexpr char kPhoneHotspot[] = "192.168.137.";
constexpr char kWiFiDirectVirtualAdapter[] = "Microsoft Wi-Fi Direct Virtual Adapter";
constexpr int kAddressPasses = 50;
constexpr int kRenewEvery = 16;
constexpr uint32_t kAddressPassMs = 100;
constexpr size_t kCommandChars = 512;
// GetInterfaceInfo's table: a count, then one 260-byte entry per adapter,
// into a first buffer of 264 bytes.
constexpr uint32_t kInterfaceTableFirstBytes = 264;
constexpr uint32_t kInterfaceEntryBytes = 260;

// The Wi-Fi chips the suite ships with; no other adapter is taken for the
// Wi-Fi adapter.
constexpr std::array<const char*, 3> kWifiDescriptions{
    "Broadcom 802.11ac Wireless PCIE Full Dongle Adapter",
    "Intel(R) Dual Band Wireless-AC",
    "Intel(R) Wireless-AC",
};

std::string Narrow(const std::wstring& text) {
    return DE::UnicodeToUTF8(text);
}

bool IsWifiAdapter(const platform::NetworkAdapterInfo& adapter) {
    const std::string description = Narrow(adapter.description);
    for (const char* known : kWifiDescriptions) {
        if (description.find(known) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// The first adapter with one of those chips; null when there is none.
const platform::NetworkAdapterInfo* FindWifiAdapter(
    const std::vector<platform::NetworkAdapterInfo>& list) {
    const auto found = std::find_if(list.begin(), list.end(), IsWifiAdapter);
    return found == list.end() ? nullptr : &*found;
}

std::string FirstAddress(const platform::NetworkAdapterInfo& adapter) {
    return adapter.ipv4.empty() ? kNoAddress : adapter.ipv4.front();
}

bool Contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// The adapter name as one argument: quoted, with its quotes and the
// backslashes before them escaped, when it holds blanks or quotes.
std::wstring CommandArgument(const std::wstring& name) {
    if (name.find_first_of(L" \t\"") == std::wstring::npos) {
        return name;
    }
    std::wstring quoted = L"\"";
    size_t backslashes = 0;
    for (wchar_t c : name) {
        if (c == L'\\') {
            ++backslashes;
            continue;
        }
        quoted.append(c == L'"' ? backslashes * 2 + 1 : backslashes, L'\\');
        backslashes = 0;
        quoted.push_back(c);
    }
    quoted.append(backslashes * 2, L'\\');
    quoted.push_back(L'"');
    return quoted;
}

// "ipconfig /renew NAME" into the command buffer; false when it does not fit.
bool RenewCommand(const std::wstring& friendlyName, std::vector<wchar_t>& command) {
    const std::wstring text = L"ipconfig /renew " + CommandArgument(friendlyName);
    if (text.size() + 1 > kCommandChars) {
        return false;
    }
    command.assign(text.begin(), text.end());
    command.push_back(L'\0');
    return true;
}

}  // namespace

unsigned long WifiNetworkService::getAdapt(std::vector<platform::NetworkAdapterInfo>& list) const {
    const uint32_t result = platform::Current().adapters().ListInfo(list);
    if (result != platform::kErrorSuccess) {
        list.clear();
    }
    return result;
}

int WifiNetworkService::GetCurrentIP() {
    currentIp_ = kNoAddress;
    std::vector<platform::NetworkAdapterInfo> list;
    if (getAdapt(list) != platform::kErrorSuccess) {
        return -1;
    }
    if (const auto* wifi = FindWifiAdapter(list)) {
        currentIp_ = FirstAddress(*wifi);
    }
    return 0;
}

int WifiNetworkService::GetIndex() {
    std::vector<platform::NetworkAdapterInfo> list;
    if (getAdapt(list) != platform::kErrorSuccess) {
        return -1;
    }
    const auto* wifi = FindWifiAdapter(list);
    return wifi != nullptr ? static_cast<int>(wifi->index) : 0;
}

std::wstring WifiNetworkService::GetFriendlyName() {
    std::vector<platform::NetworkAdapterInfo> list;
    getAdapt(list);
    const auto* wifi = FindWifiAdapter(list);
    const std::string name = wifi != nullptr ? wifi->name : std::string();
    std::vector<platform::NetworkAdapterInfo> addresses;
    if (platform::Current().adapters().List(addresses) != platform::kErrorSuccess) {
        return {};
    }
    for (const auto& adapter : addresses) {
        if (adapter.name == name) {
            return adapter.friendlyName;
        }
    }
    return {};
}

void WifiNetworkService::IPhandle(bool renew) {
    auto& adapters = platform::Current().adapters();
    std::vector<platform::InterfaceIndexEntry> table;
    const uint32_t result = adapters.InterfaceTable(table);
    const auto needed =
        static_cast<uint32_t>(4 + kInterfaceEntryBytes * static_cast<uint32_t>(table.size()));
    if (needed > kInterfaceTableFirstBytes) {
        LogWarnFun("WifiNetworkService::IPhandle interfacesize %d, outlen %d\n",
                   static_cast<int>(kInterfaceTableFirstBytes), static_cast<int>(needed));
    }
    if (result == platform::kErrorSuccess) {
        LogWarnFun("\tWifiNetworkService::IPhandle Num Adapters: %ld\n",
                   static_cast<long>(table.size()));
        for (const auto& entry : table) {
            LogWarnFun(L"\tWifiNetworkService::IPhandle Adapter Name: %ls\n", entry.name.c_str());
            LogWarnFun("\tWifiNetworkService::IPhandle Adapter Index: %ld\n",
                       static_cast<long>(entry.index));
        }
    } else if (result == platform::kErrorNoData) {
        LogWarnFun(
            "WifiNetworkService::IPhandle There are no network adapters with IPv4 enabled\n");
        return;
    } else {
        LogWarnFun("WifiNetworkService::IPhandle GetInterfaceInfo failed.\n");
        LogWarnFun("\tWifiNetworkService::IPhandle Error: %s",
                   ("error " + std::to_string(result)).c_str());
        return;
    }
    const int index = GetIndex();
    LogWarnFun("WifiNetworkService::IPhandle GetIndex %d.\n", index);
    for (const auto& entry : table) {
        if (static_cast<int>(entry.index) != index) {
            continue;
        }
        const char* action = renew ? "renew" : "release";
        const uint32_t code = renew ? adapters.RenewAddress(entry) : adapters.ReleaseAddress(entry);
        if (code == platform::kErrorSuccess) {
            LogWarnFun("WifiNetworkService::IPhandle IP %s succeeded.\n", action);
        } else {
            LogWarnFun("WifiNetworkService::IPhandle IP %s failed: %ld\n", action,
                       static_cast<long>(code));
        }
        return;
    }
}

int WifiNetworkService::GetDynamicIP(std::string& ip) {
    const char* function = CK_FUNCTION;
    try {
        ip = kNoAddress;
        GetCurrentIP();
        if (Contains(currentIp_, kPhoneHotspot)) {
            ip = currentIp_;
            return 0;
        }
        auto release = [this, function] {
            LogWarnFun("%s: ipconfig /release sync", function);
            IPhandle(false);
        };
        // Starts "ipconfig /renew" without waiting; false when the command
        // does not fit its buffer.
        auto renew = [this, function](const char* step) {
            std::vector<wchar_t> command;
            if (!RenewCommand(GetFriendlyName(), command)) {
                return false;
            }
            LogWarnFun("%s: ipconfig /%s", function, step);
            exec(command.data(), 1);
            return true;
        };
        if (currentIp_ != kNoAddress) {
            release();
        }
        if (!renew("renew1")) {
            LogErrorFun("%s swprintf_s error, return now", function);
            return -1;
        }

        int pass = 0;
        std::vector<platform::NetworkAdapterInfo> list;
        while ((ip.empty() || ip == kNoAddress) && pass < kAddressPasses) {
            platform::Current().clock().Sleep(kAddressPassMs);
            if (getAdapt(list) != platform::kErrorSuccess) {
                return -1;
            }
            for (const auto& adapter : list) {
                if (!IsWifiAdapter(adapter)) {
                    continue;
                }
                ip = FirstAddress(adapter);
                if (ip != kNoAddress && !Contains(ip, kAutomaticPrivate)) {
                    break;
                }
                // DHCP gave up and Windows picked an automatic private
                // address: start over at once.
                if (Contains(ip, kAutomaticPrivate)) {
                    release();
                    if (!renew("renew2")) {
                        LogErrorFun("%s swprintf_s error, return now", function);
                        return -1;
                    }
                    ip = kNoAddress;
                }
                if (ip == kNoAddress && pass > 0 && pass % kRenewEvery == 0) {
                    // 0 here, unlike the two failures above: the suite has
                    // always treated this one as "go on".
                    if (!renew("renew3")) {
                        LogWarnFun("%s: swprintf_s failed, err = %d\n", function, -1);
                        return 0;
                    }
                }
            }
            ++pass;
        }
        return (ip.empty() || ip == kNoAddress || pass >= kAddressPasses) ? -1 : 0;
    } catch (const std::exception& error) {
        LogErrorFun("%s catch exception: %.200s", function, error.what());
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", function);
    }
    return -1;
}

bool WifiNetworkService::VerifyDynamicIP(std::string& ip) {
    if (ip.empty() || ip == "0" || ip == kNoAddress || Contains(ip, kAutomaticPrivate)) {
        return false;
    }
    if (currentIp_.empty() || currentIp_ == "0" || currentIp_ == kNoAddress) {
        return true;
    }
    return ip != currentIp_;
}

int WifiNetworkService::Getadapter() const {
    const char* function = CK_FUNCTION;
    return Guarded(function, 0, [this, function] {
        std::vector<platform::NetworkAdapterInfo> list;
        if (getAdapt(list) != platform::kErrorSuccess) {
            return 0;
        }
        for (const auto& adapter : list) {
            const std::string description = Narrow(adapter.description);
            LogWarnFun("%s: Description %s", function, description.c_str());
            if (description.find(kWiFiDirectVirtualAdapter) == std::string::npos) {
                continue;
            }
            for (const auto& address : adapter.ipv4) {
                if (address != kNoAddress) {
                    return 1;
                }
            }
        }
        return 0;
    });
}

}  // namespace WifiConnectManage
