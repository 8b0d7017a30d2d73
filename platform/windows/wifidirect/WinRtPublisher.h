#pragma once

#include <memory>

#include "platform/ports/WiFiDirect.h"
#include "platform/windows/winrt/RuntimeCall.h"
#include "platform/windows/winrt/Subscriptions.h"
#include "platform/windows/winrt/abi/WiFiDirect.h"

namespace connectkit::win {

// Windows.Devices.WiFiDirect.WiFiDirectAdvertisementPublisher. Made only
// through std::make_shared: its event delegates hold it weakly, so an event
// that arrives after the wrapper is gone finds nobody and is dropped.
class WinRtPublisher final : public platform::WiFiDirectPublisher,
                             public std::enable_shared_from_this<WinRtPublisher> {
public:
    explicit WinRtPublisher(ComPtr<abi::IWiFiDirectAdvertisementPublisher> publisher)
        : publisher_(std::move(publisher)) {}
    ~WinRtPublisher() override;
    WinRtPublisher(const WinRtPublisher&) = delete;
    WinRtPublisher& operator=(const WinRtPublisher&) = delete;

    platform::PublisherStatus Status() override;
    platform::EventToken AddStatusChanged(StatusHandler handler) override;
    void RemoveStatusChanged(platform::EventToken token) override;
    void SetAutonomousGroupOwnerEnabled(bool enabled) override;
    void SetLegacyEnabled(bool enabled) override;
    void SetLegacySsid(const std::wstring& ssid) override;
    void SetLegacyPassphrase(
        const std::shared_ptr<platform::PasswordCredential>& passphrase) override;
    void Start() override;
    void Stop() override;

private:
    ComPtr<abi::IWiFiDirectAdvertisement> Advertisement();
    ComPtr<abi::IWiFiDirectLegacySettings> LegacySettings();

    ComPtr<abi::IWiFiDirectAdvertisementPublisher> publisher_;
    Subscriptions<StatusHandler> statusHandlers_;
};

}  // namespace connectkit::win
