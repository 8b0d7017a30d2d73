// The connection side of the fake runtime: the listener and the requests it
// hears, the devices FromIdAsync opens, and their endpoint pairs.

#include "winrt/FakeObject.h"

namespace connectkit::test {
namespace {

// The event's arguments, the request they carry and the phone's device
// information in one object: the library reaches each through its getter.
class FakeRequest final : public Fake<IWiFiDirectConnectionRequestedEventArgs,
                                      IWiFiDirectConnectionRequest, IDeviceInformation, IClosable> {
public:
    FakeRequest(std::shared_ptr<FakeWorld> world, std::wstring id)
        : Fake(std::move(world)), id_(std::move(id)) {}
    CK_FAKE_GET(IWiFiDirectConnectionRequestedEventArgs, GetConnectionRequest,
                IWiFiDirectConnectionRequest*, ComPtr<IWiFiDirectConnectionRequest>(this))
    CK_FAKE_GET(IWiFiDirectConnectionRequest, get_DeviceInformation, IDeviceInformation*,
                ComPtr<IDeviceInformation>(this))
    CK_FAKE_GET(IDeviceInformation, get_Id, HSTRING, id_)
    HRESULT STDMETHODCALLTYPE Close() override {
        ++world_->closedRequests;
        return S_OK;
    }

private:
    std::wstring id_;
};

}  // namespace

class FakeListener final : public Fake<IWiFiDirectConnectionListener> {
public:
    explicit FakeListener(std::shared_ptr<FakeWorld> world)
        : Fake(world),
          connectionRequested_(world, "IWiFiDirectConnectionListener", "ConnectionRequested") {
        Enlist(*world_, world_->listeners, this);
    }
    ~FakeListener() override { Dismiss(*world_, world_->listeners, this); }

    CK_FAKE_EVENT(ConnectionRequested, IConnectionRequestedHandler, connectionRequested_)

    bool Request(const std::wstring& deviceId) {
        return connectionRequested_.Raise(ComPtr<FakeListener>(this), [world = world_, deviceId] {
            return Make<FakeRequest>(world, deviceId);
        });
    }

private:
    Event<IConnectionRequestedHandler> connectionRequested_;
};

namespace {

// The device's endpoint pair and its remote host name in one object. The
// local side is missing, as a pair may have it.
class FakePair final : public Fake<IEndpointPair, IHostName> {
public:
    FakePair(std::shared_ptr<FakeWorld> world, std::wstring remote)
        : Fake(std::move(world)), remote_(std::move(remote)) {}
    CK_FAKE_GET(IEndpointPair, get_LocalHostName, IHostName*, ComPtr<IHostName>())
    CK_UNUSED_PUT(put_LocalHostName, IHostName*)
    CK_UNUSED_GET(get_LocalServiceName, HSTRING)
    CK_UNUSED_PUT(put_LocalServiceName, HSTRING)
    CK_FAKE_GET(IEndpointPair, get_RemoteHostName, IHostName*, ComPtr<IHostName>(this))
    CK_UNUSED_GET(get_IPInformation, IInspectable*)
    CK_UNUSED_GET(get_RawName, HSTRING)
    CK_UNUSED_GET(get_DisplayName, HSTRING)
    CK_FAKE_GET(IHostName, get_CanonicalName, HSTRING, remote_)

private:
    std::wstring remote_;
};

using PairView = FakeView<IEndpointPairView, IEndpointPair, FakePair>;

}  // namespace

class FakeDevice final : public Fake<IWiFiDirectDevice, IClosable> {
public:
    FakeDevice(std::shared_ptr<FakeWorld> world, std::wstring id, std::wstring address)
        : Fake(world),
          id_(std::move(id)),
          address_(std::move(address)),
          statusChanged_(world, "IWiFiDirectDevice", "ConnectionStatusChanged") {
        Enlist(*world_, world_->devices, this);
    }
    ~FakeDevice() override { Dismiss(*world_, world_->devices, this); }

    CK_FAKE_GET(IWiFiDirectDevice, get_ConnectionStatus, int32_t, connected_ ? 1 : 0)
    CK_FAKE_GET(IWiFiDirectDevice, get_DeviceId, HSTRING, id_)
    CK_FAKE_EVENT(ConnectionStatusChanged, IDeviceStatusChangedHandler, statusChanged_)
    CK_FAKE_GET(IWiFiDirectDevice, GetConnectionEndpointPairs, IEndpointPairView*,
                Make<PairView>(world_, "IVectorView<EndpointPair>",
                               std::vector<ComPtr<FakePair>>{Make<FakePair>(world_, address_)}))
    HRESULT STDMETHODCALLTYPE Close() override {
        if (HRESULT fault = Fault("IClosable::Close")) {
            return fault;
        }
        connected_ = false;
        return S_OK;
    }

    const std::wstring& Id() const { return id_; }
    void Leave() {
        connected_ = false;
        statusChanged_.Raise(ComPtr<FakeDevice>(this), [] { return ComPtr<IInspectable>(); });
    }

private:
    std::wstring id_;
    std::wstring address_;
    std::atomic<bool> connected_{true};
    Event<IDeviceStatusChangedHandler> statusChanged_;
};

namespace {

// The device factory and the one FromIdAsync it starts, in one object: the
// library fetches a factory for every device it opens.
class FakeOperation final : public Fake<IWiFiDirectDeviceStatics, IDeviceOperation, IAsyncInfo> {
public:
    using Fake::Fake;

    CK_UNUSED_GET(GetDeviceSelector, HSTRING)
    HRESULT STDMETHODCALLTYPE FromIdAsync(HSTRING deviceId, IDeviceOperation** operation) override {
        *operation = nullptr;
        if (HRESULT fault = Fault("IWiFiDirectDeviceStatics::FromIdAsync")) {
            return fault;
        }
        id_ = Read(deviceId);
        return Give(ComPtr<IDeviceOperation>(this), operation);
    }

    HRESULT STDMETHODCALLTYPE put_Completed(IDeviceOperationCompletedHandler* handler) override {
        if (HRESULT fault = Fault("IAsyncOperation<WiFiDirectDevice>::put_Completed")) {
            return fault;
        }
        std::wstring address;
        {
            std::lock_guard<std::mutex> lock(world_->mutex);
            refused_ = world_->refused.count(id_) > 0;
            address = world_->phoneAddresses[id_];
        }
        if (!refused_) {
            device_ = Make<FakeDevice>(world_, id_, address);
        }
        ComPtr<FakeOperation> self(this);
        ComPtr<IDeviceOperationCompletedHandler> completed(handler);
        FakeWorld::Spawn(world_, [self, completed] {
            if (FAILED(completed->Invoke(self.Get(), self->refused_ ? 3 : 1))) {
                ++self->world_->failedInvokes;
            }
        });
        return S_OK;
    }
    CK_UNUSED_GET(get_Completed, IDeviceOperationCompletedHandler*)
    CK_FAKE_GET(IAsyncOperation<WiFiDirectDevice>, GetResults, IWiFiDirectDevice*, device_)

    CK_UNUSED_GET(get_Id, uint32_t)
    CK_UNUSED_GET(get_Status, int32_t)
    CK_FAKE_GET(IAsyncInfo, get_ErrorCode, HRESULT,
                refused_ ? HRESULT_FROM_WIN32(ERROR_NOT_FOUND) : S_OK)
    HRESULT STDMETHODCALLTYPE Cancel() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Close() override { return S_OK; }

private:
    std::wstring id_;
    bool refused_ = false;
    ComPtr<FakeDevice> device_;
};

}  // namespace

ComPtr<IInspectable> NewFakeListener(const std::shared_ptr<FakeWorld>& world) {
    return Inspectable(Make<FakeListener>(world));
}

ComPtr<IInspectable> NewFakeDeviceStatics(const std::shared_ptr<FakeWorld>& world) {
    return Inspectable(Make<FakeOperation>(world));
}

bool RequestConnection(FakeWorld& world, const std::wstring& deviceId) {
    bool heard = false;
    for (auto& listener : Find(world, world.listeners)) {
        heard = listener->Request(deviceId) || heard;
    }
    return heard;
}

bool DisconnectDevice(FakeWorld& world, const std::wstring& deviceId) {
    bool left = false;
    for (auto& device : Find(world, world.devices)) {
        if (device->Id() == deviceId) {
            device->Leave();
            left = true;
        }
    }
    return left;
}

}  // namespace connectkit::test
