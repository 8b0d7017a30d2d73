#pragma once

#include <memory>

#include "platform/ports/WiFiDirect.h"
#include "platform/windows/winrt/RuntimeCall.h"
#include "platform/windows/winrt/Subscriptions.h"
#include "platform/windows/winrt/abi/WiFiDirect.h"

namespace connectkit::win {

// A phone's WiFiDirectConnectionRequest. The request is closed when the
// wrapper goes: the runtime keeps the phone waiting until it is answered or
// closed.
class WinRtConnectionRequest final : public platform::WiFiDirectConnectionRequest {
public:
    explicit WinRtConnectionRequest(ComPtr<abi::IWiFiDirectConnectionRequest> request)
        : request_(std::move(request)) {}
    ~WinRtConnectionRequest() override;
    WinRtConnectionRequest(const WinRtConnectionRequest&) = delete;
    WinRtConnectionRequest& operator=(const WinRtConnectionRequest&) = delete;

    std::wstring DeviceId() override;

private:
    ComPtr<abi::IWiFiDirectConnectionRequest> request_;
};

// Windows.Devices.WiFiDirect.WiFiDirectConnectionListener; made only through
// std::make_shared (its delegates hold it weakly).
class WinRtConnectionListener final : public platform::WiFiDirectConnectionListener,
                                      public std::enable_shared_from_this<WinRtConnectionListener> {
public:
    explicit WinRtConnectionListener(ComPtr<abi::IWiFiDirectConnectionListener> listener)
        : listener_(std::move(listener)) {}
    ~WinRtConnectionListener() override;
    WinRtConnectionListener(const WinRtConnectionListener&) = delete;
    WinRtConnectionListener& operator=(const WinRtConnectionListener&) = delete;

    platform::EventToken AddConnectionRequested(RequestHandler handler) override;
    void RemoveConnectionRequested(platform::EventToken token) override;

private:
    ComPtr<abi::IWiFiDirectConnectionListener> listener_;
    Subscriptions<RequestHandler> requestHandlers_;
};

}  // namespace connectkit::win
