#include "platform/windows/wlan/WinWlan.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/wlan/WlanClient.h"
#include "platform/windows/wlan/WlanStructures.h"

namespace connectkit::win {

// An optional SSID as wlanapi takes it: null when there is none.
class SsidArgument {
public:
    // False for an SSID that DOT11_SSID cannot hold.
    bool Set(const std::optional<platform::Dot11Ssid>& ssid) {
        if (ssid && !ToWin(*ssid, storage_)) {
            LogErrorFun("[WLAN] an SSID of %lu bytes does not fit DOT11_SSID",
                        static_cast<unsigned long>(ssid->length));
            return false;
        }
        pointer_ = ssid ? &storage_ : nullptr;
        return true;
    }
    DOT11_SSID* Get() { return pointer_; }

private:
    DOT11_SSID storage_{};
    DOT11_SSID* pointer_ = nullptr;
};

uint32_t WinWlan::Arguments(platform::WlanHandle handle,
                            const std::optional<platform::Dot11Ssid>& ssid,
                            std::shared_ptr<WlanClient>& client, SsidArgument& argument) {
    client = Client(handle);
    if (!client) {
        return ERROR_INVALID_HANDLE;
    }
    return argument.Set(ssid) ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

std::shared_ptr<WlanClient> WinWlan::Client(platform::WlanHandle handle) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = clients_.find(handle);
    return found == clients_.end() ? nullptr : found->second;
}

uint32_t WinWlan::OpenHandle(uint32_t clientVersion, uint32_t& negotiatedVersion,
                             platform::WlanHandle& handle) {
    negotiatedVersion = 0;
    handle = nullptr;
    uint32_t error = 0;
    std::shared_ptr<const WlanEntries> entries = entries_.Get(error);
    if (!entries) {
        return error;
    }
    DWORD negotiated = 0;
    HANDLE opened = nullptr;
    const DWORD result = entries->openHandle(clientVersion, nullptr, &negotiated, &opened);
    if (result != ERROR_SUCCESS) {
        return result;
    }
    auto client = std::make_shared<WlanClient>(std::move(entries), opened);
    std::lock_guard<std::mutex> lock(mutex_);
    handle = client.get();
    clients_.emplace(handle, std::move(client));
    negotiatedVersion = negotiated;
    return ERROR_SUCCESS;
}

uint32_t WinWlan::CloseHandle(platform::WlanHandle handle) {
    std::shared_ptr<WlanClient> client;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = clients_.find(handle);
        if (found == clients_.end()) {
            return ERROR_INVALID_HANDLE;
        }
        client = std::move(found->second);
        clients_.erase(found);
    }
    return client->Close();
}

uint32_t WinWlan::EnumInterfaces(platform::WlanHandle handle,
                                 std::vector<platform::WlanInterfaceInfo>& interfaces) {
    interfaces.clear();
    auto client = Client(handle);
    if (!client) {
        return ERROR_INVALID_HANDLE;
    }
    WlanMemory<WLAN_INTERFACE_INFO_LIST> list(client->entries());
    const DWORD result = client->entries().enumInterfaces(client->handle(), nullptr, list.Put());
    if (result == ERROR_SUCCESS && list.Get()) {
        interfaces = ReadInterfaces(*list.Get());
    }
    return result;
}

uint32_t WinWlan::Scan(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                       const std::optional<platform::Dot11Ssid>& ssid,
                       const std::vector<uint8_t>& ieData) {
    std::shared_ptr<WlanClient> client;
    SsidArgument ssidArgument;
    if (const uint32_t error = Arguments(handle, ssid, client, ssidArgument)) {
        return error;
    }
    const GUID guid = ToWin(interfaceGuid);
    std::vector<uint64_t> raw;
    if (!ieData.empty()) {
        raw = RawData(ieData);
    }
    return client->entries().scan(
        client->handle(), &guid, ssidArgument.Get(),
        raw.empty() ? nullptr : reinterpret_cast<WLAN_RAW_DATA*>(raw.data()), nullptr);
}

uint32_t WinWlan::GetNetworkBssList(platform::WlanHandle handle,
                                    const platform::Guid& interfaceGuid,
                                    const std::optional<platform::Dot11Ssid>& ssid,
                                    platform::Dot11BssType bssType, bool securityEnabled,
                                    std::vector<platform::WlanBssEntry>& entries) {
    entries.clear();
    std::shared_ptr<WlanClient> client;
    SsidArgument ssidArgument;
    if (const uint32_t error = Arguments(handle, ssid, client, ssidArgument)) {
        return error;
    }
    const GUID guid = ToWin(interfaceGuid);
    WlanMemory<WLAN_BSS_LIST> list(client->entries());
    const DWORD result = client->entries().getNetworkBssList(
        client->handle(), &guid, ssidArgument.Get(), static_cast<DOT11_BSS_TYPE>(bssType),
        securityEnabled ? TRUE : FALSE, nullptr, list.Put());
    if (result == ERROR_SUCCESS && list.Get()) {
        entries = ReadBssList(*list.Get());
    }
    return result;
}

uint32_t WinWlan::QueryInterface(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                                 platform::WlanIntfOpcode opcode,
                                 platform::WlanInterfaceAnswer& answer) {
    answer = {};
    auto client = Client(handle);
    if (!client) {
        return ERROR_INVALID_HANDLE;
    }
    const GUID guid = ToWin(interfaceGuid);
    DWORD size = 0;
    WlanMemory<void> data(client->entries());
    const DWORD result = client->entries().queryInterface(client->handle(), &guid,
                                                          static_cast<WLAN_INTF_OPCODE>(opcode),
                                                          nullptr, &size, data.Put(), nullptr);
    if (result != ERROR_SUCCESS) {
        return result;
    }
    if (!data.Get() || !ReadInterfaceAnswer(opcode, data.Get(), size, answer)) {
        LogErrorFun("[WLAN] WlanQueryInterface answered %lu bytes for opcode 0x%lx",
                    static_cast<unsigned long>(size), static_cast<unsigned long>(opcode));
        answer = {};
        return ERROR_INVALID_DATA;
    }
    return ERROR_SUCCESS;
}

uint32_t WinWlan::Connect(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                          const platform::WlanConnectionParameters& parameters) {
    std::shared_ptr<WlanClient> client;
    SsidArgument ssidArgument;
    if (const uint32_t error = Arguments(handle, parameters.ssid, client, ssidArgument)) {
        return error;
    }
    std::optional<BssidListBuffer> bssids;
    if (parameters.desiredBssids) {
        bssids = BssidListBuffer::From(*parameters.desiredBssids);
        if (!bssids) {
            LogErrorFun("[WLAN] a desired-BSSID list counts more entries than it holds");
            return ERROR_INVALID_PARAMETER;
        }
    }
    WLAN_CONNECTION_PARAMETERS native{};
    native.wlanConnectionMode = static_cast<WLAN_CONNECTION_MODE>(parameters.mode);
    native.strProfile = parameters.profile.c_str();
    native.pDot11Ssid = ssidArgument.Get();
    native.pDesiredBssidList = bssids ? bssids->Get() : nullptr;
    native.dot11BssType = static_cast<DOT11_BSS_TYPE>(parameters.bssType);
    native.dwFlags = parameters.flags;
    const GUID guid = ToWin(interfaceGuid);
    return client->entries().connect(client->handle(), &guid, &native, nullptr);
}

uint32_t WinWlan::Disconnect(platform::WlanHandle handle, const platform::Guid& interfaceGuid) {
    auto client = Client(handle);
    if (!client) {
        return ERROR_INVALID_HANDLE;
    }
    const GUID guid = ToWin(interfaceGuid);
    return client->entries().disconnect(client->handle(), &guid, nullptr);
}

uint32_t WinWlan::RegisterNotification(platform::WlanHandle handle, uint32_t sources,
                                       bool ignoreDuplicate,
                                       platform::WlanNotificationCallback callback, void* context,
                                       uint32_t* previousSources) {
    auto client = Client(handle);
    if (!client) {
        return ERROR_INVALID_HANDLE;
    }
    return client->Register(sources, ignoreDuplicate, callback, context, previousSources);
}

}  // namespace connectkit::win
