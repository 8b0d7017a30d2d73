#pragma once
// Wi-Fi Direct through the Windows Runtime, over hand-declared ABI
// interfaces (winrt/abi/WiFiDirect.h). Runtime objects come from a
// RuntimeActivation: the system's by default, a test's fakes otherwise.
//
// A class the runtime cannot activate (not registered, as under Wine, or an
// activation failure) makes the factories answer null with a log line naming
// the class and the HRESULT; every other failing runtime call throws
// PlatformError. FromIdAsync's completion runs once, on the runtime's
// thread, and may run before DeviceFromIdAsync returns when the operation
// finished at once.

#include <memory>

#include "platform/ports/WiFiDirect.h"
#include "platform/windows/winrt/RuntimeActivation.h"

namespace connectkit::win {

class WinWiFiDirect final : public platform::WiFiDirect {
public:
    explicit WinWiFiDirect(std::shared_ptr<RuntimeActivation> runtime = SystemActivation())
        : runtime_(std::move(runtime)) {}

    std::shared_ptr<platform::WiFiDirectPublisher> NewPublisher() override;
    std::shared_ptr<platform::WiFiDirectConnectionListener> NewConnectionListener() override;
    std::shared_ptr<platform::PasswordCredential> NewPasswordCredential() override;
    void DeviceFromIdAsync(const std::wstring& deviceId, DeviceCompletion completed) override;

private:
    std::shared_ptr<RuntimeActivation> runtime_;
};

}  // namespace connectkit::win
