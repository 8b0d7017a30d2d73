#pragma once
// Wi-Fi Direct on Windows is not built yet. It behaves as on a system without
// the runtime classes: every factory answers null, and FromIdAsync cannot be
// started (PlatformError with REGDB_E_CLASSNOTREG), which is how activation
// fails there too. It says so in the log once.

#include "platform/ports/WiFiDirect.h"

namespace connectkit::win {

class WinWiFiDirect final : public platform::WiFiDirect {
public:
    std::shared_ptr<platform::WiFiDirectPublisher> NewPublisher() override;
    std::shared_ptr<platform::WiFiDirectConnectionListener> NewConnectionListener() override;
    std::shared_ptr<platform::PasswordCredential> NewPasswordCredential() override;
    void DeviceFromIdAsync(const std::wstring& deviceId, DeviceCompletion completed) override;
};

}  // namespace connectkit::win
