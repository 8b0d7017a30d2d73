#pragma once
// Native Wi-Fi through wlanapi, reached through a table of entries resolved
// on first use (WlanEntries.h says why). A library or entry that cannot be
// found makes every call answer that Win32 error. The handle the library
// gets is a client of ours (WlanClient.h) that owns wlanapi's handle; one
// this backend never handed out, or closed already, is ERROR_INVALID_HANDLE.

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/ports/Wlan.h"
#include "platform/windows/wlan/WlanEntries.h"

namespace connectkit::win {

class WlanClient;
class SsidArgument;

class WinWlan final : public platform::Wlan {
public:
    explicit WinWlan(LibrarySource library = kSystemWlanLibrary)
        : entries_(std::move(library), LoadWlanEntries) {}

    uint32_t OpenHandle(uint32_t clientVersion, uint32_t& negotiatedVersion,
                        platform::WlanHandle& handle) override;
    uint32_t CloseHandle(platform::WlanHandle handle) override;
    uint32_t EnumInterfaces(platform::WlanHandle handle,
                            std::vector<platform::WlanInterfaceInfo>& interfaces) override;
    uint32_t Scan(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                  const std::optional<platform::Dot11Ssid>& ssid,
                  const std::vector<uint8_t>& ieData) override;
    uint32_t GetNetworkBssList(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                               const std::optional<platform::Dot11Ssid>& ssid,
                               platform::Dot11BssType bssType, bool securityEnabled,
                               std::vector<platform::WlanBssEntry>& entries) override;
    uint32_t QueryInterface(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                            platform::WlanIntfOpcode opcode,
                            platform::WlanInterfaceAnswer& answer) override;
    uint32_t Connect(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                     const platform::WlanConnectionParameters& parameters) override;
    uint32_t Disconnect(platform::WlanHandle handle, const platform::Guid& interfaceGuid) override;
    uint32_t RegisterNotification(platform::WlanHandle handle, uint32_t sources,
                                  bool ignoreDuplicate, platform::WlanNotificationCallback callback,
                                  void* context, uint32_t* previousSources) override;

private:
    std::shared_ptr<WlanClient> Client(platform::WlanHandle handle);
    // The client behind `handle` and the SSID as wlanapi takes it, or the
    // error that either gives.
    uint32_t Arguments(platform::WlanHandle handle, const std::optional<platform::Dot11Ssid>& ssid,
                       std::shared_ptr<WlanClient>& client, SsidArgument& argument);

    EntriesOnce<WlanEntries> entries_;
    std::mutex mutex_;
    std::map<platform::WlanHandle, std::shared_ptr<WlanClient>> clients_;
};

}  // namespace connectkit::win
