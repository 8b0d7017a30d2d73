#include "platform/sim/wlan/SimWlan.h"

#include "platform/ports/Errors.h"

namespace connectkit::sim {

using platform::kErrorNotSupported;

uint32_t SimWlan::OpenHandle(uint32_t, uint32_t& negotiatedVersion, platform::WlanHandle& handle) {
    negotiatedVersion = 0;
    handle = nullptr;
    return kErrorNotSupported;
}

uint32_t SimWlan::CloseHandle(platform::WlanHandle) {
    return kErrorNotSupported;
}

uint32_t SimWlan::EnumInterfaces(platform::WlanHandle,
                                 std::vector<platform::WlanInterfaceInfo>& interfaces) {
    interfaces.clear();
    return kErrorNotSupported;
}

uint32_t SimWlan::Scan(platform::WlanHandle, const platform::Guid&,
                       const std::optional<platform::Dot11Ssid>&, const std::vector<uint8_t>&) {
    return kErrorNotSupported;
}

uint32_t SimWlan::GetNetworkBssList(platform::WlanHandle, const platform::Guid&,
                                    const std::optional<platform::Dot11Ssid>&,
                                    platform::Dot11BssType, bool,
                                    std::vector<platform::WlanBssEntry>& entries) {
    entries.clear();
    return kErrorNotSupported;
}

uint32_t SimWlan::QueryInterface(platform::WlanHandle, const platform::Guid&,
                                 platform::WlanIntfOpcode, platform::WlanInterfaceAnswer&) {
    return kErrorNotSupported;
}

uint32_t SimWlan::Connect(platform::WlanHandle, const platform::Guid&,
                          const platform::WlanConnectionParameters&) {
    return kErrorNotSupported;
}

uint32_t SimWlan::Disconnect(platform::WlanHandle, const platform::Guid&) {
    return kErrorNotSupported;
}

uint32_t SimWlan::RegisterNotification(platform::WlanHandle, uint32_t, bool,
                                       platform::WlanNotificationCallback, void*, uint32_t*) {
    return kErrorNotSupported;
}

}  // namespace connectkit::sim
