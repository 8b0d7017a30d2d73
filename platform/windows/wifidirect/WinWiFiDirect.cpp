#include "platform/windows/wifidirect/WinWiFiDirect.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/wifidirect/WinRtConnectionListener.h"
#include "platform/windows/wifidirect/WinRtDevice.h"
#include "platform/windows/wifidirect/WinRtPasswordCredential.h"
#include "platform/windows/wifidirect/WinRtPublisher.h"
#include "platform/windows/winrt/Activate.h"
#include "platform/windows/winrt/Delegate.h"
#include "platform/windows/winrt/HString.h"
#include "platform/windows/winrt/abi/WiFiDirect.h"

namespace connectkit::win {
namespace {

// The completion of one FromIdAsync: delivers exactly once, whatever the
// runtime does.
void CompleteDeviceOperation(abi::IDeviceOperation* operation, int32_t status,
                             const WinWiFiDirect::DeviceCompletion& completed) {
    auto asyncStatus = static_cast<platform::AsyncStatus>(status);
    std::shared_ptr<platform::WiFiDirectDevice> device;
    if (asyncStatus == platform::AsyncStatus::Completed) {
        ComPtr<abi::IWiFiDirectDevice> result;
        HRESULT hr = operation ? operation->GetResults(result.GetAddressOf()) : E_POINTER;
        if (SUCCEEDED(hr) && result) {
            device = std::make_shared<WinRtDevice>(std::move(result));
        } else {
            LogErrorFun("[WinRT] FromIdAsync completed without a device, hresult 0x%08lx",
                        static_cast<unsigned long>(hr));
            asyncStatus = platform::AsyncStatus::Error;
        }
    } else {
        LogErrorFun("[WinRT] FromIdAsync ended with status %d, hresult 0x%08lx",
                    static_cast<int>(status),
                    static_cast<unsigned long>(AsyncErrorCode(operation)));
    }
    completed(asyncStatus, std::move(device));
}

}  // namespace

std::shared_ptr<platform::WiFiDirectPublisher> WinWiFiDirect::NewPublisher() {
    auto publisher =
        Activate<abi::IWiFiDirectAdvertisementPublisher>(*runtime_, abi::kPublisherClass);
    return publisher ? std::make_shared<WinRtPublisher>(std::move(publisher)) : nullptr;
}

std::shared_ptr<platform::WiFiDirectConnectionListener> WinWiFiDirect::NewConnectionListener() {
    auto listener =
        Activate<abi::IWiFiDirectConnectionListener>(*runtime_, abi::kConnectionListenerClass);
    return listener ? std::make_shared<WinRtConnectionListener>(std::move(listener)) : nullptr;
}

std::shared_ptr<platform::PasswordCredential> WinWiFiDirect::NewPasswordCredential() {
    auto credential = Activate<abi::IPasswordCredential>(*runtime_, abi::kPasswordCredentialClass);
    return credential ? std::make_shared<WinRtPasswordCredential>(std::move(credential)) : nullptr;
}

void WinWiFiDirect::DeviceFromIdAsync(const std::wstring& deviceId, DeviceCompletion completed) {
    auto statics = Factory<abi::IWiFiDirectDeviceStatics>(
        *runtime_, abi::kDeviceClass, "RoGetActivationFactory(WiFiDirectDevice)");
    HString id(deviceId);
    auto operation = Fetch<abi::IDeviceOperation>(
        [&](abi::IDeviceOperation** value) { return statics->FromIdAsync(id.get(), value); },
        "IWiFiDirectDeviceStatics::FromIdAsync");
    auto handler = NewCompletion<abi::IDeviceOperationCompletedHandler, abi::IDeviceOperation>(
        "FromIdAsync",
        [completed = std::move(completed)](abi::IDeviceOperation* done, int32_t status) {
            CompleteDeviceOperation(done, status, completed);
        });
    Check(operation->put_Completed(handler.Get()),
          "IAsyncOperation<WiFiDirectDevice>::put_Completed");
}

}  // namespace connectkit::win
