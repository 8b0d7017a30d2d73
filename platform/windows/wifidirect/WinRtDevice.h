#pragma once

#include <memory>

#include "platform/ports/WiFiDirect.h"
#include "platform/windows/winrt/RuntimeCall.h"
#include "platform/windows/winrt/Subscriptions.h"
#include "platform/windows/winrt/abi/WiFiDirect.h"

namespace connectkit::win {

// Windows.Devices.WiFiDirect.WiFiDirectDevice: a phone connected to our
// group. Made only through std::make_shared (its delegates hold it weakly).
class WinRtDevice final : public platform::WiFiDirectDevice,
                          public std::enable_shared_from_this<WinRtDevice> {
public:
    explicit WinRtDevice(ComPtr<abi::IWiFiDirectDevice> device) : device_(std::move(device)) {}
    ~WinRtDevice() override;
    WinRtDevice(const WinRtDevice&) = delete;
    WinRtDevice& operator=(const WinRtDevice&) = delete;

    platform::WiFiDirectConnectionStatus ConnectionStatus() override;
    std::wstring DeviceId() override;
    platform::EventToken AddConnectionStatusChanged(StatusHandler handler) override;
    void RemoveConnectionStatusChanged(platform::EventToken token) override;
    std::vector<platform::EndpointPair> ConnectionEndpointPairs() override;
    void Close() override;

private:
    ComPtr<abi::IWiFiDirectDevice> device_;
    Subscriptions<StatusHandler> statusHandlers_;
};

}  // namespace connectkit::win
