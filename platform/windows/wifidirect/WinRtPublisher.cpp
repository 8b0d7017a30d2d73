#include "platform/windows/wifidirect/WinRtPublisher.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/ports/Errors.h"
#include "platform/windows/wifidirect/WinRtPasswordCredential.h"
#include "platform/windows/winrt/Delegate.h"
#include "platform/windows/winrt/HString.h"

namespace connectkit::win {

using StatusArgs = abi::IWiFiDirectAdvertisementPublisherStatusChangedEventArgs;

WinRtPublisher::~WinRtPublisher() {
    statusHandlers_.RemoveAll(
        [this](abi::Token token) { return publisher_->remove_StatusChanged(token); },
        "IWiFiDirectAdvertisementPublisher::remove_StatusChanged");
}

platform::PublisherStatus WinRtPublisher::Status() {
    int32_t status = 0;
    Check(publisher_->get_Status(&status), "IWiFiDirectAdvertisementPublisher::get_Status");
    return static_cast<platform::PublisherStatus>(status);
}

platform::EventToken WinRtPublisher::AddStatusChanged(StatusHandler handler) {
    auto entry = statusHandlers_.Prepare(std::move(handler));
    auto handlerObject =
        NewDelegate<abi::IPublisherStatusChangedHandler, abi::IWiFiDirectAdvertisementPublisher*,
                    StatusArgs*>([self = weak_from_this(), entry](
                                     abi::IWiFiDirectAdvertisementPublisher*, StatusArgs* args) {
            auto publisher = self.lock();
            if (!publisher || !entry->active || !args) {
                return S_OK;
            }
            int32_t status = 0;
            int32_t error = 0;
            HRESULT result = args->get_Status(&status);
            if (SUCCEEDED(result)) {
                result = args->get_Error(&error);
            }
            if (FAILED(result)) {
                LogErrorFun("[WinRT] StatusChanged: reading the event failed, hresult 0x%08lx",
                            static_cast<unsigned long>(result));
                return S_OK;
            }
            entry->handler(*publisher, platform::PublisherStatusChange{
                                           static_cast<platform::PublisherStatus>(status),
                                           static_cast<platform::WiFiDirectError>(error)});
            return S_OK;
        });
    abi::Token token = 0;
    Check(publisher_->add_StatusChanged(handlerObject.Get(), &token),
          "IWiFiDirectAdvertisementPublisher::add_StatusChanged");
    statusHandlers_.Added(token, std::move(entry));
    return token;
}

void WinRtPublisher::RemoveStatusChanged(platform::EventToken token) {
    if (statusHandlers_.Remove(token)) {
        Check(publisher_->remove_StatusChanged(token),
              "IWiFiDirectAdvertisementPublisher::remove_StatusChanged");
    }
}

ComPtr<abi::IWiFiDirectAdvertisement> WinRtPublisher::Advertisement() {
    return Fetch<abi::IWiFiDirectAdvertisement>(
        [this](abi::IWiFiDirectAdvertisement** value) {
            return publisher_->get_Advertisement(value);
        },
        "IWiFiDirectAdvertisementPublisher::get_Advertisement");
}

ComPtr<abi::IWiFiDirectLegacySettings> WinRtPublisher::LegacySettings() {
    auto advertisement = Advertisement();
    return Fetch<abi::IWiFiDirectLegacySettings>(
        [&advertisement](abi::IWiFiDirectLegacySettings** value) {
            return advertisement->get_LegacySettings(value);
        },
        "IWiFiDirectAdvertisement::get_LegacySettings");
}

void WinRtPublisher::SetAutonomousGroupOwnerEnabled(bool enabled) {
    Check(Advertisement()->put_IsAutonomousGroupOwnerEnabled(enabled ? 1 : 0),
          "IWiFiDirectAdvertisement::put_IsAutonomousGroupOwnerEnabled");
}

void WinRtPublisher::SetLegacyEnabled(bool enabled) {
    Check(LegacySettings()->put_IsEnabled(enabled ? 1 : 0),
          "IWiFiDirectLegacySettings::put_IsEnabled");
}

void WinRtPublisher::SetLegacySsid(const std::wstring& ssid) {
    HString text(ssid);
    Check(LegacySettings()->put_Ssid(text.get()), "IWiFiDirectLegacySettings::put_Ssid");
}

void WinRtPublisher::SetLegacyPassphrase(
    const std::shared_ptr<platform::PasswordCredential>& passphrase) {
    auto* credential = dynamic_cast<WinRtPasswordCredential*>(passphrase.get());
    if (passphrase && !credential) {
        throw platform::PlatformError(E_INVALIDARG,
                                      "the pass phrase is not a runtime PasswordCredential");
    }
    Check(LegacySettings()->put_Passphrase(credential ? credential->Abi() : nullptr),
          "IWiFiDirectLegacySettings::put_Passphrase");
}

void WinRtPublisher::Start() {
    Check(publisher_->Start(), "IWiFiDirectAdvertisementPublisher::Start");
}

void WinRtPublisher::Stop() {
    Check(publisher_->Stop(), "IWiFiDirectAdvertisementPublisher::Stop");
}

}  // namespace connectkit::win
