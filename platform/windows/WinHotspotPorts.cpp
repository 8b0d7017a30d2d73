#include "platform/windows/WinHotspotPorts.h"

#include <atomic>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/ports/Errors.h"

namespace connectkit::win {
namespace {

void SayNotAvailable(const char* port) {
    static std::atomic<bool> said{false};
    if (!said.exchange(true)) {
        LogWarnFun("[WindowsBackend] %s is not available in this build; it answers not implemented",
                   port);
    }
}

}  // namespace

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

uint32_t WinNetworkAdapters::List(std::vector<platform::NetworkAdapterInfo>& adapters) {
    SayNotAvailable("network adapters");
    adapters.clear();
    return platform::kErrorCallNotImplemented;
}

}  // namespace connectkit::win
