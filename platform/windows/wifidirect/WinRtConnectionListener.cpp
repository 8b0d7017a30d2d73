#include "platform/windows/wifidirect/WinRtConnectionListener.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/winrt/Delegate.h"
#include "platform/windows/winrt/HString.h"

namespace connectkit::win {

using RequestedArgs = abi::IWiFiDirectConnectionRequestedEventArgs;

WinRtConnectionRequest::~WinRtConnectionRequest() {
    if (auto closable = Query<abi::IClosable>(request_.Get())) {
        closable->Close();
    }
}

std::wstring WinRtConnectionRequest::DeviceId() {
    auto information = Fetch<abi::IDeviceInformation>(
        [this](abi::IDeviceInformation** value) { return request_->get_DeviceInformation(value); },
        "IWiFiDirectConnectionRequest::get_DeviceInformation");
    HString id;
    Check(information->get_Id(id.Put()), "IDeviceInformation::get_Id");
    return id.Text();
}

WinRtConnectionListener::~WinRtConnectionListener() {
    requestHandlers_.RemoveAll(
        [this](abi::Token token) { return listener_->remove_ConnectionRequested(token); },
        "IWiFiDirectConnectionListener::remove_ConnectionRequested");
}

platform::EventToken WinRtConnectionListener::AddConnectionRequested(RequestHandler handler) {
    auto entry = requestHandlers_.Prepare(std::move(handler));
    auto handlerObject = NewDelegate<abi::IConnectionRequestedHandler,
                                     abi::IWiFiDirectConnectionListener*, RequestedArgs*>(
        [self = weak_from_this(), entry](abi::IWiFiDirectConnectionListener*, RequestedArgs* args) {
            auto listener = self.lock();
            if (!listener || !entry->active || !args) {
                return S_OK;
            }
            ComPtr<abi::IWiFiDirectConnectionRequest> request;
            HRESULT result = args->GetConnectionRequest(request.GetAddressOf());
            if (FAILED(result) || !request) {
                LogErrorFun(
                    "[WinRT] ConnectionRequested: GetConnectionRequest failed, hresult 0x%08lx",
                    static_cast<unsigned long>(result));
                return S_OK;
            }
            entry->handler(std::make_shared<WinRtConnectionRequest>(std::move(request)));
            return S_OK;
        });
    abi::Token token = 0;
    Check(listener_->add_ConnectionRequested(handlerObject.Get(), &token),
          "IWiFiDirectConnectionListener::add_ConnectionRequested");
    requestHandlers_.Added(token, std::move(entry));
    return token;
}

void WinRtConnectionListener::RemoveConnectionRequested(platform::EventToken token) {
    if (requestHandlers_.Remove(token)) {
        Check(listener_->remove_ConnectionRequested(token),
              "IWiFiDirectConnectionListener::remove_ConnectionRequested");
    }
}

}  // namespace connectkit::win
