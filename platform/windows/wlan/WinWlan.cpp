#include "platform/windows/wlan/WinWlan.h"

#include "platform/ports/Errors.h"

namespace connectkit::win {

using platform::kErrorNotSupported;

uint32_t WinWlan::OpenHandle(uint32_t, uint32_t& negotiatedVersion, platform::WlanHandle& handle) {
    negotiatedVersion = 0;
    handle = nullptr;
    return kErrorNotSupported;
}

uint32_t WinWlan::CloseHandle(platform::WlanHandle) {
    return kErrorNotSupported;
}

uint32_t WinWlan::EnumInterfaces(platform::WlanHandle,
                                 std::vector<platform::WlanInterfaceInfo>& interfaces) {
    interfaces.clear();
    return kErrorNotSupported;
}

uint32_t WinWlan::Scan(platform::WlanHandle, const platform::Guid&,
                       const std::optional<platform::Dot11Ssid>&, const std::vector<uint8_t>&) {
    return kErrorNotSupported;
}

uint32_t WinWlan::GetNetworkBssList(platform::WlanHandle, const platform::Guid&,
                                    const std::optional<platform::Dot11Ssid>&,
                                    platform::Dot11BssType, bool,
                                    std::vector<platform::WlanBssEntry>& entries) {
    entries.clear();
    return kErrorNotSupported;
}

uint32_t WinWlan::QueryInterface(platform::WlanHandle, const platform::Guid&,
                                 platform::WlanIntfOpcode, platform::WlanInterfaceAnswer&) {
    return kErrorNotSupported;
}

uint32_t WinWlan::Connect(platform::WlanHandle, const platform::Guid&,
                          const platform::WlanConnectionParameters&) {
    return kErrorNotSupported;
}

uint32_t WinWlan::Disconnect(platform::WlanHandle, const platform::Guid&) {
    return kErrorNotSupported;
}

uint32_t WinWlan::RegisterNotification(platform::WlanHandle, uint32_t, bool,
                                       platform::WlanNotificationCallback, void*, uint32_t*) {
    return kErrorNotSupported;
}

}  // namespace connectkit::win
