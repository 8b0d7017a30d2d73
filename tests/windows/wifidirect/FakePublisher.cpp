// The publisher side of the fake runtime: the advertisement publisher with
// its advertisement and legacy settings, and the password credential.

#include "winrt/FakeObject.h"

namespace connectkit::test {
namespace {

class FakeCredential final : public Fake<IPasswordCredential> {
public:
    using Fake::Fake;
    CK_UNUSED_GET(get_Resource, HSTRING)
    CK_UNUSED_PUT(put_Resource, HSTRING)
    CK_UNUSED_GET(get_UserName, HSTRING)
    CK_UNUSED_PUT(put_UserName, HSTRING)
    HRESULT STDMETHODCALLTYPE get_Password(HSTRING* value) override {
        std::lock_guard<std::mutex> lock(mutex_);
        return Answer("IPasswordCredential::get_Password", value, password_);
    }
    HRESULT STDMETHODCALLTYPE put_Password(HSTRING value) override {
        std::lock_guard<std::mutex> lock(mutex_);
        return Put("IPasswordCredential::put_Password", password_, Read(value));
    }

private:
    std::mutex mutex_;
    std::wstring password_;
};

class FakeStatusArgs final : public Fake<IWiFiDirectAdvertisementPublisherStatusChangedEventArgs> {
public:
    FakeStatusArgs(std::shared_ptr<FakeWorld> world, int32_t status, int32_t error)
        : Fake(std::move(world)), status_(status), error_(error) {}
    CK_FAKE_GET(IWiFiDirectAdvertisementPublisherStatusChangedEventArgs, get_Status, int32_t,
                status_)
    CK_FAKE_GET(IWiFiDirectAdvertisementPublisherStatusChangedEventArgs, get_Error, int32_t, error_)

private:
    int32_t status_;
    int32_t error_;
};

// The publisher, its advertisement and the advertisement's legacy settings
// in one object: the library reaches each through its own getter and never
// asks one for another's interface.
class FakePublisher final : public Fake<IWiFiDirectAdvertisementPublisher, IWiFiDirectAdvertisement,
                                        IWiFiDirectLegacySettings> {
public:
    explicit FakePublisher(std::shared_ptr<FakeWorld> world)
        : Fake(world),
          statusChanged_(world, "IWiFiDirectAdvertisementPublisher", "StatusChanged") {}

    CK_FAKE_GET(IWiFiDirectAdvertisementPublisher, get_Advertisement, IWiFiDirectAdvertisement*,
                ComPtr<IWiFiDirectAdvertisement>(this))
    CK_FAKE_GET(IWiFiDirectAdvertisementPublisher, get_Status, int32_t, status_.load())
    CK_FAKE_EVENT(StatusChanged, IPublisherStatusChangedHandler, statusChanged_)
    HRESULT STDMETHODCALLTYPE Start() override {
        if (HRESULT fault = Fault("IWiFiDirectAdvertisementPublisher::Start")) {
            return fault;
        }
        HSTRING password = nullptr;
        if (passphrase_) {
            passphrase_->get_Password(&password);
        }
        bool abort = false;
        int32_t error = 0;
        {
            std::lock_guard<std::mutex> lock(world_->mutex);
            abort = world_->abortStarts;
            error = world_->abortError;
            world_->started = {ssid_, Read(password), autonomous_ && enabled_};
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

    CK_UNUSED_GET(get_InformationElements, IInspectable*)
    CK_UNUSED_PUT(put_InformationElements, IInspectable*)
    CK_UNUSED_GET(get_ListenStateDiscoverability, int32_t)
    CK_UNUSED_PUT(put_ListenStateDiscoverability, int32_t)
    CK_UNUSED_GET(get_IsAutonomousGroupOwnerEnabled, Boolean)
    CK_FAKE_PUT(IWiFiDirectAdvertisement, put_IsAutonomousGroupOwnerEnabled, Boolean, autonomous_)
    CK_FAKE_GET(IWiFiDirectAdvertisement, get_LegacySettings, IWiFiDirectLegacySettings*,
                ComPtr<IWiFiDirectLegacySettings>(this))

    CK_UNUSED_GET(get_IsEnabled, Boolean)
    CK_FAKE_PUT(IWiFiDirectLegacySettings, put_IsEnabled, Boolean, enabled_)
    CK_UNUSED_GET(get_Ssid, HSTRING)
    CK_FAKE_PUT(IWiFiDirectLegacySettings, put_Ssid, HSTRING, ssid_)
    CK_UNUSED_GET(get_Passphrase, IPasswordCredential*)
    CK_FAKE_PUT(IWiFiDirectLegacySettings, put_Passphrase, IPasswordCredential*, passphrase_)

private:
    // The status changes now; the event follows on another thread.
    void Report(int32_t status, int32_t error) {
        status_ = status;
        statusChanged_.Raise(ComPtr<FakePublisher>(this), [world = world_, status, error] {
            return Make<FakeStatusArgs>(world, status, error);
        });
    }

    std::atomic<int32_t> status_{0};
    Boolean autonomous_ = 0;
    Boolean enabled_ = 0;
    std::wstring ssid_;
    ComPtr<IPasswordCredential> passphrase_;
    Event<IPublisherStatusChangedHandler> statusChanged_;
};

}  // namespace

ComPtr<IInspectable> NewFakePublisher(const std::shared_ptr<FakeWorld>& world) {
    return Inspectable(Make<FakePublisher>(world));
}

ComPtr<IInspectable> NewFakeCredential(const std::shared_ptr<FakeWorld>& world) {
    return Inspectable(Make<FakeCredential>(world));
}

}  // namespace connectkit::test
