#include "platform/windows/WinWiFiDirect.h"

#include "platform/ports/Errors.h"
#include "platform/windows/NotAvailable.h"

namespace connectkit::win {
namespace {

constexpr int32_t kClassNotRegistered = static_cast<int32_t>(0x80040154u);

}  // namespace

std::shared_ptr<platform::WiFiDirectPublisher> WinWiFiDirect::NewPublisher() {
    SayNotAvailable("Wi-Fi Direct");
    return nullptr;
}

std::shared_ptr<platform::WiFiDirectConnectionListener> WinWiFiDirect::NewConnectionListener() {
    SayNotAvailable("Wi-Fi Direct");
    return nullptr;
}

std::shared_ptr<platform::PasswordCredential> WinWiFiDirect::NewPasswordCredential() {
    SayNotAvailable("Wi-Fi Direct");
    return nullptr;
}

void WinWiFiDirect::DeviceFromIdAsync(const std::wstring&, DeviceCompletion) {
    SayNotAvailable("Wi-Fi Direct");
    throw platform::PlatformError(kClassNotRegistered, "WiFiDirectDevice is not available");
}

}  // namespace connectkit::win
