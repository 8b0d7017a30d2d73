#include "platform/windows/wifidirect/WinRtDevice.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/winrt/Delegate.h"
#include "platform/windows/winrt/HString.h"

namespace connectkit::win {
namespace {

// A connection has one pair per local interface that reaches the phone;
// a runtime reporting more than this is not believed past it.
constexpr uint32_t kMaxEndpointPairs = 16;

// A host name's canonical text; a pair may lack one side.
std::wstring CanonicalName(abi::IHostName* host) {
    if (!host) {
        return std::wstring();
    }
    HString name;
    Check(host->get_CanonicalName(name.Put()), "IHostName::get_CanonicalName");
    return name.Text();
}

}  // namespace

WinRtDevice::~WinRtDevice() {
    statusHandlers_.RemoveAll(
        [this](abi::Token token) { return device_->remove_ConnectionStatusChanged(token); },
        "IWiFiDirectDevice::remove_ConnectionStatusChanged");
}

platform::WiFiDirectConnectionStatus WinRtDevice::ConnectionStatus() {
    int32_t status = 0;
    Check(device_->get_ConnectionStatus(&status), "IWiFiDirectDevice::get_ConnectionStatus");
    return static_cast<platform::WiFiDirectConnectionStatus>(status);
}

std::wstring WinRtDevice::DeviceId() {
    HString id;
    Check(device_->get_DeviceId(id.Put()), "IWiFiDirectDevice::get_DeviceId");
    return id.Text();
}

platform::EventToken WinRtDevice::AddConnectionStatusChanged(StatusHandler handler) {
    auto entry = statusHandlers_.Prepare(std::move(handler));
    auto handlerObject =
        NewDelegate<abi::IDeviceStatusChangedHandler, abi::IWiFiDirectDevice*, IInspectable*>(
            [self = weak_from_this(), entry](abi::IWiFiDirectDevice*, IInspectable*) {
                auto device = self.lock();
                if (device && entry->active) {
                    entry->handler(*device);
                }
                return S_OK;
            });
    abi::Token token = 0;
    Check(device_->add_ConnectionStatusChanged(handlerObject.Get(), &token),
          "IWiFiDirectDevice::add_ConnectionStatusChanged");
    statusHandlers_.Added(token, std::move(entry));
    return token;
}

void WinRtDevice::RemoveConnectionStatusChanged(platform::EventToken token) {
    if (statusHandlers_.Remove(token)) {
        Check(device_->remove_ConnectionStatusChanged(token),
              "IWiFiDirectDevice::remove_ConnectionStatusChanged");
    }
}

std::vector<platform::EndpointPair> WinRtDevice::ConnectionEndpointPairs() {
    auto view = Fetch<abi::IEndpointPairView>(
        [this](abi::IEndpointPairView** value) {
            return device_->GetConnectionEndpointPairs(value);
        },
        "IWiFiDirectDevice::GetConnectionEndpointPairs");
    uint32_t size = 0;
    Check(view->get_Size(&size), "IVectorView<EndpointPair>::get_Size");
    if (size > kMaxEndpointPairs) {
        LogErrorFun("[WinRT] %u endpoint pairs reported; reading the first %u", size,
                    kMaxEndpointPairs);
        size = kMaxEndpointPairs;
    }
    std::vector<platform::EndpointPair> pairs;
    for (uint32_t index = 0; index < size; ++index) {
        auto pair = Fetch<abi::IEndpointPair>(
            [&view, index](abi::IEndpointPair** item) { return view->GetAt(index, item); },
            "IVectorView<EndpointPair>::GetAt");
        ComPtr<abi::IHostName> local;
        ComPtr<abi::IHostName> remote;
        Check(pair->get_LocalHostName(local.GetAddressOf()), "IEndpointPair::get_LocalHostName");
        Check(pair->get_RemoteHostName(remote.GetAddressOf()), "IEndpointPair::get_RemoteHostName");
        pairs.push_back({CanonicalName(local.Get()), CanonicalName(remote.Get())});
    }
    return pairs;
}

void WinRtDevice::Close() {
    auto closable = Query<abi::IClosable>(device_.Get());
    if (!closable) {
        Check(E_NOINTERFACE, "WiFiDirectDevice as IClosable");
    }
    Check(closable->Close(), "IClosable::Close");
}

}  // namespace connectkit::win
