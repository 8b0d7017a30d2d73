#include "platform/windows/WinHotspotPorts.h"

#include "platform/ports/Errors.h"
#include "platform/windows/NotAvailable.h"

namespace connectkit::win {

uint32_t WinDeviceSetup::PresentDevices(std::vector<std::wstring>& instanceIds) {
    SayNotAvailable("device setup");
    instanceIds.clear();
    return platform::kCrCallNotImplemented;
}

uint32_t WinDeviceSetup::HardwareIds(const std::wstring&, std::vector<std::wstring>& hardwareIds) {
    SayNotAvailable("device setup");
    hardwareIds.clear();
    return platform::kCrCallNotImplemented;
}

uint32_t WinDeviceSetup::ReadDeviceValue(const std::wstring&, const std::wstring&,
                                         std::wstring& value) {
    SayNotAvailable("device setup");
    value.clear();
    return platform::kCrCallNotImplemented;
}

uint32_t WinDeviceSetup::State(const std::wstring&, platform::DeviceState& state) {
    SayNotAvailable("device setup");
    state = platform::DeviceState{};
    return platform::kCrCallNotImplemented;
}

uint32_t WinDeviceSetup::SetEnabled(const std::wstring&, bool) {
    SayNotAvailable("device setup");
    return platform::kCrCallNotImplemented;
}

uint32_t WinNetworkAdapters::List(std::vector<platform::NetworkAdapterInfo>& adapters) {
    SayNotAvailable("network adapters");
    adapters.clear();
    return platform::kErrorCallNotImplemented;
}

}  // namespace connectkit::win
