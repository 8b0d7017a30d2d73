#include "winrt/FakeRuntime.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <tuple>
#include <vector>

#include "platform/windows/ComPtr.h"
#include "platform/windows/winrt/WinRtAbi.h"

namespace connectkit::test {

using win::ComPtr;
using namespace win::abi;

struct FakeWorld {
    std::atomic<long> live{0};
    std::atomic<long> handlers{0};
    std::atomic<long> closedRequests{0};
    std::atomic<long> pending{0};
    std::atomic<bool> system{false};

    mutable std::mutex mutex;
    std::map<std::string, HRESULT> faults;
    bool abortStarts = false;
    int32_t abortError = 0;
    std::set<std::wstring> refused;
    std::map<std::wstring, std::wstring> phoneAddresses;
    std::wstring startedSsid;
    std::wstring startedPassword;
    bool startedAsLegacyGroupOwner = false;
    // Objects events are sent to; each entry is removed by its destructor.
    std::vector<class FakeListener*> listeners;
    std::vector<class FakeDevice*> devices;

    HRESULT Fault(const std::string& call) {
        std::lock_guard<std::mutex> lock(mutex);
        auto found = faults.find(call);
        return found == faults.end() ? S_OK : found->second;
    }

    // Runs `work` on a thread of its own, as the runtime's pool would.
    static void Spawn(const std::shared_ptr<FakeWorld>& world, std::function<void()> work) {
        ++world->pending;
        auto* job = new std::function<void()>([world, work = std::move(work)] {
            work();
            --world->pending;
        });
        HANDLE thread = CreateThread(
            nullptr, 0,
            [](void* parameter) -> DWORD {
                std::unique_ptr<std::function<void()>> run(
                    static_cast<std::function<void()>*>(parameter));
                (*run)();
                return 0;
            },
            job, 0, nullptr);
        if (thread) {
            CloseHandle(thread);
        } else {
            delete job;
            --world->pending;
        }
    }
};

namespace {

HSTRING NewString(const std::wstring& text) {
    HSTRING string = nullptr;
    WindowsCreateString(text.c_str(), static_cast<UINT32>(text.size()), &string);
    return string;
}

std::wstring Read(HSTRING string) {
    UINT32 length = 0;
    const wchar_t* buffer = WindowsGetStringRawBuffer(string, &length);
    return buffer ? std::wstring(buffer, length) : std::wstring();
}

// IUnknown and IInspectable for a fake implementing `Interfaces`, counted
// in the world's live objects.
template <typename... Interfaces>
class Fake : public Interfaces... {
public:
    explicit Fake(std::shared_ptr<FakeWorld> world) : world_(std::move(world)) { ++world_->live; }
    virtual ~Fake() { --world_->live; }
    Fake(const Fake&) = delete;
    Fake& operator=(const Fake&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!object) {
            return E_POINTER;
        }
        *object = nullptr;
        using First = std::tuple_element_t<0, std::tuple<Interfaces...>>;
        if (IsEqualGUID(iid, kIidUnknown) || IsEqualGUID(iid, kIidInspectable)) {
            *object = static_cast<First*>(this);
        }
        ((IsEqualGUID(iid, Interfaces::kIid) ? (*object = static_cast<Interfaces*>(this))
                                             : nullptr),
         ...);
        if (!*object) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    // A reference for a finder that holds only a raw pointer; fails once the
    // object is on its way out.
    bool TryAddRef() {
        ULONG count = references_.load();
        while (count != 0) {
            if (references_.compare_exchange_weak(count, count + 1)) {
                return true;
            }
        }
        return false;
    }
    HRESULT STDMETHODCALLTYPE GetIids(ULONG* count, IID** iids) override {
        *count = 0;
        *iids = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING* name) override {
        *name = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel* level) override {
        *level = BaseTrust;
        return S_OK;
    }

protected:
    HRESULT Fault(const char* call) { return world_->Fault(call); }

    std::shared_ptr<FakeWorld> world_;

private:
    std::atomic<ULONG> references_{1};
};

template <typename Object, typename... Args>
ComPtr<Object> Make(Args&&... args) {
    ComPtr<Object> object;
    object.Attach(new Object(std::forward<Args>(args)...));
    return object;
}

// An [out] pointer to `object` as its base `Interface`, with a reference.
template <typename Interface, typename Object>
HRESULT Give(const ComPtr<Object>& object, Interface** out) {
    *out = object.Get();
    if (*out) {
        (*out)->AddRef();
    }
    return S_OK;
}

// One event of one fake: the delegates registered on it, by token.
template <typename Handler>
class Event {
public:
    explicit Event(std::shared_ptr<FakeWorld> world) : world_(std::move(world)) {}
    ~Event() { world_->handlers -= static_cast<long>(handlers_.size()); }

    HRESULT Add(Handler* handler, Token* token) {
        if (!handler || !token) {
            return E_INVALIDARG;
        }
        static std::atomic<Token> next{0x1000};
        std::lock_guard<std::mutex> lock(mutex_);
        *token = ++next;
        handlers_[*token] = handler;
        ++world_->handlers;
        return S_OK;
    }
    HRESULT Remove(Token token) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (handlers_.erase(token) > 0) {
            --world_->handlers;
        }
        return S_OK;
    }
    std::vector<ComPtr<Handler>> Snapshot() {
        std::lock_guard<std::mutex> lock(mutex_);
        std::vector<ComPtr<Handler>> handlers;
        for (auto& [token, handler] : handlers_) {
            handlers.push_back(handler);
        }
        return handlers;
    }

private:
    std::shared_ptr<FakeWorld> world_;
    std::mutex mutex_;
    std::map<Token, ComPtr<Handler>> handlers_;
};

class FakeCredential final : public Fake<IPasswordCredential> {
public:
    using Fake::Fake;
    HRESULT STDMETHODCALLTYPE get_Resource(HSTRING* value) override {
        *value = nullptr;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_Resource(HSTRING) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE get_UserName(HSTRING* value) override {
        *value = nullptr;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_UserName(HSTRING) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE get_Password(HSTRING* value) override {
        if (HRESULT fault = Fault("IPasswordCredential::get_Password")) {
            return fault;
        }
        std::lock_guard<std::mutex> lock(mutex_);
        *value = NewString(password_);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_Password(HSTRING value) override {
        if (HRESULT fault = Fault("IPasswordCredential::put_Password")) {
            return fault;
        }
        std::lock_guard<std::mutex> lock(mutex_);
        password_ = Read(value);
        return S_OK;
    }

private:
    std::mutex mutex_;
    std::wstring password_;
};

class FakeLegacySettings final : public Fake<IWiFiDirectLegacySettings> {
public:
    using Fake::Fake;
    HRESULT STDMETHODCALLTYPE get_IsEnabled(Boolean* value) override {
        *value = enabled;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_IsEnabled(Boolean value) override {
        if (HRESULT fault = Fault("IWiFiDirectLegacySettings::put_IsEnabled")) {
            return fault;
        }
        enabled = value;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Ssid(HSTRING* value) override {
        *value = NewString(ssid);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_Ssid(HSTRING value) override {
        if (HRESULT fault = Fault("IWiFiDirectLegacySettings::put_Ssid")) {
            return fault;
        }
        ssid = Read(value);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Passphrase(IPasswordCredential** value) override {
        return Give(passphrase, value);
    }
    HRESULT STDMETHODCALLTYPE put_Passphrase(IPasswordCredential* value) override {
        if (HRESULT fault = Fault("IWiFiDirectLegacySettings::put_Passphrase")) {
            return fault;
        }
        if (!value) {
            return E_INVALIDARG;
        }
        passphrase = value;
        return S_OK;
    }

    Boolean enabled = 0;
    std::wstring ssid;
    ComPtr<IPasswordCredential> passphrase;
};

class FakeAdvertisement final : public Fake<IWiFiDirectAdvertisement> {
public:
    explicit FakeAdvertisement(std::shared_ptr<FakeWorld> world)
        : Fake(world), settings(Make<FakeLegacySettings>(world)) {}
    HRESULT STDMETHODCALLTYPE get_InformationElements(IInspectable** value) override {
        *value = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE put_InformationElements(IInspectable*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_ListenStateDiscoverability(int32_t* value) override {
        *value = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_ListenStateDiscoverability(int32_t) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE get_IsAutonomousGroupOwnerEnabled(Boolean* value) override {
        *value = autonomous;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_IsAutonomousGroupOwnerEnabled(Boolean value) override {
        if (HRESULT fault = Fault("IWiFiDirectAdvertisement::put_IsAutonomousGroupOwnerEnabled")) {
            return fault;
        }
        autonomous = value;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_LegacySettings(IWiFiDirectLegacySettings** value) override {
        if (HRESULT fault = Fault("IWiFiDirectAdvertisement::get_LegacySettings")) {
            return fault;
        }
        return Give(settings, value);
    }

    Boolean autonomous = 0;
    ComPtr<FakeLegacySettings> settings;
};

class FakeStatusArgs final : public Fake<IWiFiDirectAdvertisementPublisherStatusChangedEventArgs> {
public:
    FakeStatusArgs(std::shared_ptr<FakeWorld> world, int32_t status, int32_t error)
        : Fake(std::move(world)), status_(status), error_(error) {}
    HRESULT STDMETHODCALLTYPE get_Status(int32_t* value) override {
        *value = status_;
        return Fault("IWiFiDirectAdvertisementPublisherStatusChangedEventArgs::get_Status");
    }
    HRESULT STDMETHODCALLTYPE get_Error(int32_t* value) override {
        *value = error_;
        return S_OK;
    }

private:
    int32_t status_;
    int32_t error_;
};

class FakePublisher final : public Fake<IWiFiDirectAdvertisementPublisher> {
public:
    explicit FakePublisher(std::shared_ptr<FakeWorld> world)
        : Fake(world), advertisement_(Make<FakeAdvertisement>(world)), statusChanged_(world) {}

    HRESULT STDMETHODCALLTYPE get_Advertisement(IWiFiDirectAdvertisement** value) override {
        if (HRESULT fault = Fault("IWiFiDirectAdvertisementPublisher::get_Advertisement")) {
            return fault;
        }
        return Give(advertisement_, value);
    }
    HRESULT STDMETHODCALLTYPE get_Status(int32_t* value) override {
        *value = status_;
        return Fault("IWiFiDirectAdvertisementPublisher::get_Status");
    }
    HRESULT STDMETHODCALLTYPE add_StatusChanged(IPublisherStatusChangedHandler* handler,
                                                Token* token) override {
        if (HRESULT fault = Fault("IWiFiDirectAdvertisementPublisher::add_StatusChanged")) {
            return fault;
        }
        return statusChanged_.Add(handler, token);
    }
    HRESULT STDMETHODCALLTYPE remove_StatusChanged(Token token) override {
        if (HRESULT fault = Fault("IWiFiDirectAdvertisementPublisher::remove_StatusChanged")) {
            return fault;
        }
        return statusChanged_.Remove(token);
    }
    HRESULT STDMETHODCALLTYPE Start() override {
        if (HRESULT fault = Fault("IWiFiDirectAdvertisementPublisher::Start")) {
            return fault;
        }
        auto& settings = *advertisement_->settings.Get();
        HSTRING password = nullptr;
        if (settings.passphrase) {
            settings.passphrase->get_Password(&password);
        }
        bool abort = false;
        int32_t error = 0;
        {
            std::lock_guard<std::mutex> lock(world_->mutex);
            abort = world_->abortStarts;
            error = world_->abortError;
            world_->startedSsid = settings.ssid;
            world_->startedAsLegacyGroupOwner = advertisement_->autonomous && settings.enabled;
            world_->startedPassword = Read(password);
        }
        WindowsDeleteString(password);
        Report(abort ? 3 : 1, abort ? error : 0);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Stop() override {
        if (HRESULT fault = Fault("IWiFiDirectAdvertisementPublisher::Stop")) {
            return fault;
        }
        Report(2, 0);
        return S_OK;
    }

private:
    // The status changes now; the event follows on another thread.
    void Report(int32_t status, int32_t error) {
        status_ = status;
        ComPtr<FakePublisher> self(this);
        FakeWorld::Spawn(world_, [self, status, error] {
            auto args = Make<FakeStatusArgs>(self->world_, status, error);
            for (auto& handler : self->statusChanged_.Snapshot()) {
                handler->Invoke(self.Get(), args.Get());
            }
        });
    }

    std::atomic<int32_t> status_{0};
    ComPtr<FakeAdvertisement> advertisement_;
    Event<IPublisherStatusChangedHandler> statusChanged_;
};

class FakeDeviceInformation final : public Fake<IDeviceInformation> {
public:
    FakeDeviceInformation(std::shared_ptr<FakeWorld> world, std::wstring id)
        : Fake(std::move(world)), id_(std::move(id)) {}
    HRESULT STDMETHODCALLTYPE get_Id(HSTRING* value) override {
        if (HRESULT fault = Fault("IDeviceInformation::get_Id")) {
            return fault;
        }
        *value = NewString(id_);
        return S_OK;
    }

private:
    std::wstring id_;
};

class FakeRequest final : public Fake<IWiFiDirectConnectionRequest, IClosable> {
public:
    FakeRequest(std::shared_ptr<FakeWorld> world, const std::wstring& id)
        : Fake(world), information_(Make<FakeDeviceInformation>(world, id)) {}
    HRESULT STDMETHODCALLTYPE get_DeviceInformation(IDeviceInformation** value) override {
        if (HRESULT fault = Fault("IWiFiDirectConnectionRequest::get_DeviceInformation")) {
            return fault;
        }
        return Give(information_, value);
    }
    HRESULT STDMETHODCALLTYPE Close() override {
        ++world_->closedRequests;
        return S_OK;
    }

private:
    ComPtr<FakeDeviceInformation> information_;
};

class FakeRequestArgs final : public Fake<IWiFiDirectConnectionRequestedEventArgs> {
public:
    FakeRequestArgs(std::shared_ptr<FakeWorld> world, const std::wstring& id)
        : Fake(world), request_(Make<FakeRequest>(world, id)) {}
    HRESULT STDMETHODCALLTYPE GetConnectionRequest(IWiFiDirectConnectionRequest** value) override {
        if (HRESULT fault =
                Fault("IWiFiDirectConnectionRequestedEventArgs::GetConnectionRequest")) {
            return fault;
        }
        return Give(request_, value);
    }

private:
    ComPtr<FakeRequest> request_;
};

// Keeps `object` registered in `list` for the world's finders.
template <typename Object>
void Enlist(FakeWorld& world, std::vector<Object*>& list, Object* object) {
    std::lock_guard<std::mutex> lock(world.mutex);
    list.push_back(object);
}

template <typename Object>
void Dismiss(FakeWorld& world, std::vector<Object*>& list, Object* object) {
    std::lock_guard<std::mutex> lock(world.mutex);
    list.erase(std::remove(list.begin(), list.end(), object), list.end());
}

// The objects in `list` that are still alive, each with a reference.
template <typename Object>
std::vector<ComPtr<Object>> Find(FakeWorld& world, std::vector<Object*>& list) {
    std::lock_guard<std::mutex> lock(world.mutex);
    std::vector<ComPtr<Object>> found;
    for (auto* object : list) {
        if (object->TryAddRef()) {
            ComPtr<Object> held;
            held.Attach(object);
            found.push_back(held);
        }
    }
    return found;
}

}  // namespace

class FakeListener final : public Fake<IWiFiDirectConnectionListener> {
public:
    explicit FakeListener(std::shared_ptr<FakeWorld> world)
        : Fake(world), connectionRequested_(world) {
        Enlist(*world_, world_->listeners, this);
    }
    ~FakeListener() override { Dismiss(*world_, world_->listeners, this); }

    HRESULT STDMETHODCALLTYPE add_ConnectionRequested(IConnectionRequestedHandler* handler,
                                                      Token* token) override {
        if (HRESULT fault = Fault("IWiFiDirectConnectionListener::add_ConnectionRequested")) {
            return fault;
        }
        return connectionRequested_.Add(handler, token);
    }
    HRESULT STDMETHODCALLTYPE remove_ConnectionRequested(Token token) override {
        if (HRESULT fault = Fault("IWiFiDirectConnectionListener::remove_ConnectionRequested")) {
            return fault;
        }
        return connectionRequested_.Remove(token);
    }

    bool Request(const std::wstring& deviceId) {
        auto handlers = connectionRequested_.Snapshot();
        if (handlers.empty()) {
            return false;
        }
        ComPtr<FakeListener> self(this);
        FakeWorld::Spawn(world_, [self, handlers, deviceId] {
            auto args = Make<FakeRequestArgs>(self->world_, deviceId);
            for (auto& handler : handlers) {
                handler->Invoke(self.Get(), args.Get());
            }
        });
        return true;
    }

private:
    Event<IConnectionRequestedHandler> connectionRequested_;
};

namespace {

class FakeHostName final : public Fake<IHostName> {
public:
    FakeHostName(std::shared_ptr<FakeWorld> world, std::wstring name)
        : Fake(std::move(world)), name_(std::move(name)) {}
    HRESULT STDMETHODCALLTYPE get_IPInformation(IInspectable** value) override {
        *value = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_RawName(HSTRING* value) override {
        *value = NewString(name_);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_DisplayName(HSTRING* value) override {
        *value = NewString(name_);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_CanonicalName(HSTRING* value) override {
        if (HRESULT fault = Fault("IHostName::get_CanonicalName")) {
            return fault;
        }
        *value = NewString(name_);
        return S_OK;
    }

private:
    std::wstring name_;
};

class FakeEndpointPair final : public Fake<IEndpointPair> {
public:
    FakeEndpointPair(std::shared_ptr<FakeWorld> world, const std::wstring& remote)
        : Fake(world),
          local_(Make<FakeHostName>(world, L"192.168.137.1")),
          remote_(Make<FakeHostName>(world, remote)) {}
    HRESULT STDMETHODCALLTYPE get_LocalHostName(IHostName** value) override {
        return Give(local_, value);
    }
    HRESULT STDMETHODCALLTYPE put_LocalHostName(IHostName*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_LocalServiceName(HSTRING* value) override {
        *value = nullptr;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_LocalServiceName(HSTRING) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_RemoteHostName(IHostName** value) override {
        if (HRESULT fault = Fault("IEndpointPair::get_RemoteHostName")) {
            return fault;
        }
        return Give(remote_, value);
    }

private:
    ComPtr<FakeHostName> local_;
    ComPtr<FakeHostName> remote_;
};

class FakePairView final : public Fake<IEndpointPairView> {
public:
    FakePairView(std::shared_ptr<FakeWorld> world, const std::wstring& remote)
        : Fake(world), pair_(Make<FakeEndpointPair>(world, remote)) {}
    HRESULT STDMETHODCALLTYPE GetAt(uint32_t index, IEndpointPair** item) override {
        if (index != 0) {
            *item = nullptr;
            return static_cast<HRESULT>(0x8000000B);  // E_BOUNDS
        }
        return Give(pair_, item);
    }
    HRESULT STDMETHODCALLTYPE get_Size(uint32_t* size) override {
        *size = 1;
        return Fault("IVectorView<EndpointPair>::get_Size");
    }

private:
    ComPtr<FakeEndpointPair> pair_;
};

}  // namespace

class FakeDevice final : public Fake<IWiFiDirectDevice, IClosable> {
public:
    FakeDevice(std::shared_ptr<FakeWorld> world, std::wstring id, std::wstring address)
        : Fake(world), id_(std::move(id)), address_(std::move(address)), statusChanged_(world) {
        Enlist(*world_, world_->devices, this);
    }
    ~FakeDevice() override { Dismiss(*world_, world_->devices, this); }

    HRESULT STDMETHODCALLTYPE get_ConnectionStatus(int32_t* value) override {
        *value = connected_ ? 1 : 0;
        return Fault("IWiFiDirectDevice::get_ConnectionStatus");
    }
    HRESULT STDMETHODCALLTYPE get_DeviceId(HSTRING* value) override {
        if (HRESULT fault = Fault("IWiFiDirectDevice::get_DeviceId")) {
            return fault;
        }
        *value = NewString(id_);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE add_ConnectionStatusChanged(IDeviceStatusChangedHandler* handler,
                                                          Token* token) override {
        if (HRESULT fault = Fault("IWiFiDirectDevice::add_ConnectionStatusChanged")) {
            return fault;
        }
        return statusChanged_.Add(handler, token);
    }
    HRESULT STDMETHODCALLTYPE remove_ConnectionStatusChanged(Token token) override {
        if (HRESULT fault = Fault("IWiFiDirectDevice::remove_ConnectionStatusChanged")) {
            return fault;
        }
        return statusChanged_.Remove(token);
    }
    HRESULT STDMETHODCALLTYPE GetConnectionEndpointPairs(IEndpointPairView** value) override {
        if (HRESULT fault = Fault("IWiFiDirectDevice::GetConnectionEndpointPairs")) {
            return fault;
        }
        *value = Make<FakePairView>(world_, address_).Detach();
        return S_OK;
    }
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
        ComPtr<FakeDevice> self(this);
        FakeWorld::Spawn(world_, [self] {
            for (auto& handler : self->statusChanged_.Snapshot()) {
                handler->Invoke(self.Get(), nullptr);
            }
        });
    }

private:
    std::wstring id_;
    std::wstring address_;
    std::atomic<bool> connected_{true};
    Event<IDeviceStatusChangedHandler> statusChanged_;
};

namespace {

class FakeOperation final : public Fake<IDeviceOperation, IAsyncInfo> {
public:
    FakeOperation(std::shared_ptr<FakeWorld> world, std::wstring id)
        : Fake(std::move(world)), id_(std::move(id)) {}

    HRESULT STDMETHODCALLTYPE put_Completed(IDeviceOperationCompletedHandler* handler) override {
        if (HRESULT fault = Fault("IAsyncOperation<WiFiDirectDevice>::put_Completed")) {
            return fault;
        }
        if (!handler) {
            return E_INVALIDARG;
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
        FakeWorld::Spawn(
            world_, [self, completed] { completed->Invoke(self.Get(), self->refused_ ? 3 : 1); });
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Completed(IDeviceOperationCompletedHandler** handler) override {
        *handler = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetResults(IWiFiDirectDevice** results) override {
        if (HRESULT fault = Fault("IAsyncOperation<WiFiDirectDevice>::GetResults")) {
            *results = nullptr;
            return fault;
        }
        return Give(device_, results);
    }

    HRESULT STDMETHODCALLTYPE get_Id(uint32_t* id) override {
        *id = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Status(int32_t* status) override {
        *status = refused_ ? 3 : 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_ErrorCode(HRESULT* errorCode) override {
        *errorCode = refused_ ? HRESULT_FROM_WIN32(ERROR_NOT_FOUND) : S_OK;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Cancel() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Close() override { return S_OK; }

private:
    std::wstring id_;
    bool refused_ = false;
    ComPtr<FakeDevice> device_;
};

class FakeDeviceStatics final : public Fake<IWiFiDirectDeviceStatics> {
public:
    using Fake::Fake;
    HRESULT STDMETHODCALLTYPE GetDeviceSelector(HSTRING* selector) override {
        *selector = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE FromIdAsync(HSTRING deviceId, IDeviceOperation** operation) override {
        if (HRESULT fault = Fault("IWiFiDirectDeviceStatics::FromIdAsync")) {
            *operation = nullptr;
            return fault;
        }
        *operation = Make<FakeOperation>(world_, Read(deviceId)).Detach();
        return S_OK;
    }
};

}  // namespace

FakeRuntime::FakeRuntime() : world_(std::make_shared<FakeWorld>()) {}

FakeRuntime::~FakeRuntime() {
    Quiet();
}

HRESULT FakeRuntime::ActivateInstance(const wchar_t* classId, IInspectable** instance) {
    if (world_->system) {
        return win::SystemActivation()->ActivateInstance(classId, instance);
    }
    *instance = nullptr;
    std::wstring name(classId);
    if (HRESULT fault = world_->Fault("activate:" + std::string(name.begin(), name.end()))) {
        return fault;
    }
    if (name == kPublisherClass) {
        *instance = Make<FakePublisher>(world_).Detach();
    } else if (name == kConnectionListenerClass) {
        *instance = Make<FakeListener>(world_).Detach();
    } else if (name == kPasswordCredentialClass) {
        *instance = Make<FakeCredential>(world_).Detach();
    } else {
        return REGDB_E_CLASSNOTREG;
    }
    return S_OK;
}

HRESULT FakeRuntime::GetActivationFactory(const wchar_t* classId, const GUID& iid, void** factory) {
    if (world_->system) {
        return win::SystemActivation()->GetActivationFactory(classId, iid, factory);
    }
    *factory = nullptr;
    std::wstring name(classId);
    if (HRESULT fault = world_->Fault("factory:" + std::string(name.begin(), name.end()))) {
        return fault;
    }
    if (name != kDeviceClass) {
        return REGDB_E_CLASSNOTREG;
    }
    return Make<FakeDeviceStatics>(world_)->QueryInterface(iid, factory);
}

void FakeRuntime::UseSystem(bool system) {
    world_->system = system;
}

void FakeRuntime::Fail(const std::string& call, HRESULT result) {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->faults[call] = result;
}

void FakeRuntime::ClearFaults() {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->faults.clear();
    world_->abortStarts = false;
    world_->refused.clear();
}

void FakeRuntime::AbortStarts(int32_t error) {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->abortStarts = true;
    world_->abortError = error;
}

void FakeRuntime::RefuseDevice(const std::wstring& deviceId) {
    std::lock_guard<std::mutex> lock(world_->mutex);
    world_->refused.insert(deviceId);
}

bool FakeRuntime::PhoneRequests(const std::wstring& deviceId, const std::wstring& phoneAddress) {
    {
        std::lock_guard<std::mutex> lock(world_->mutex);
        world_->phoneAddresses[deviceId] = phoneAddress;
    }
    bool heard = false;
    for (auto& listener : Find(*world_, world_->listeners)) {
        heard = listener->Request(deviceId) || heard;
    }
    return heard;
}

bool FakeRuntime::PhoneLeaves(const std::wstring& deviceId) {
    bool left = false;
    for (auto& device : Find(*world_, world_->devices)) {
        if (device->Id() == deviceId) {
            device->Leave();
            left = true;
        }
    }
    return left;
}

bool FakeRuntime::Quiet(unsigned timeoutMs) {
    for (unsigned waited = 0; world_->pending > 0; waited += 5) {
        if (waited >= timeoutMs) {
            return false;
        }
        Sleep(5);
    }
    return true;
}

long FakeRuntime::LiveObjects() const {
    return world_->live;
}

long FakeRuntime::RegisteredHandlers() const {
    return world_->handlers;
}

long FakeRuntime::ClosedRequests() const {
    return world_->closedRequests;
}

std::wstring FakeRuntime::StartedSsid() const {
    std::lock_guard<std::mutex> lock(world_->mutex);
    return world_->startedSsid;
}

std::wstring FakeRuntime::StartedPassword() const {
    std::lock_guard<std::mutex> lock(world_->mutex);
    return world_->startedPassword;
}

bool FakeRuntime::StartedAsLegacyGroupOwner() const {
    std::lock_guard<std::mutex> lock(world_->mutex);
    return world_->startedAsLegacyGroupOwner;
}

}  // namespace connectkit::test
