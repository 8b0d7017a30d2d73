#pragma once
// Placeholder for the Windows backend's Native Wi-Fi: a PC without a Wi-Fi
// client service. Every call answers ERROR_NOT_SUPPORTED until the wlanapi layer
// (with its notification callback and WlanFreeMemory) replaces this file.

#include "platform/ports/Wlan.h"

namespace connectkit::win {

class WinWlan final : public platform::Wlan {
public:
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
};

}  // namespace connectkit::win
