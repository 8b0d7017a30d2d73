// The publisher side of the fake runtime: the advertisement publisher with
// its advertisement and legacy settings, and the password credential.

#include "winrt/FakeObject.h"

namespace connectkit::test {
namespace {

class FakeCredential final : public Fake<IPasswordCredential> {
public:
    using Fake::Fake;
    HRESULT STDMETHODCALLTYPE get_Resource(HSTRING* value) override { return Unused(value); }
    HRESULT STDMETHODCALLTYPE put_Resource(HSTRING) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE get_UserName(HSTRING* value) override { return Unused(value); }
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

// The publisher, its advertisement and the advertisement's legacy settings
// in one object: the library reaches each through its own getter and never
// asks one for another's interface.
class FakePublisher final : public Fake<IWiFiDirectAdvertisementPublisher, IWiFiDirectAdvertisement,
                                        IWiFiDirectLegacySettings> {
public:
    explicit FakePublisher(std::shared_ptr<FakeWorld> world)
        : Fake(world),
          statusChanged_(world, "IWiFiDirectAdvertisementPublisher", "StatusChanged") {}

    HRESULT STDMETHODCALLTYPE get_Advertisement(IWiFiDirectAdvertisement** value) override {
        return Hand("IWiFiDirectAdvertisementPublisher::get_Advertisement",
                    ComPtr<IWiFiDirectAdvertisement>(this), value);
    }
    HRESULT STDMETHODCALLTYPE get_Status(int32_t* value) override {
        *value = status_;
        return Fault("IWiFiDirectAdvertisementPublisher::get_Status");
    }
    HRESULT STDMETHODCALLTYPE add_StatusChanged(IPublisherStatusChangedHandler* handler,
                                                Token* token) override {
        return statusChanged_.Add(handler, token);
    }
    HRESULT STDMETHODCALLTYPE remove_StatusChanged(Token token) override {
        return statusChanged_.Remove(token);
    }
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

    HRESULT STDMETHODCALLTYPE get_InformationElements(IInspectable** value) override {
        return Unused(value);
    }
    HRESULT STDMETHODCALLTYPE put_InformationElements(IInspectable*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_ListenStateDiscoverability(int32_t* value) override {
        return Unused(value);
    }
    HRESULT STDMETHODCALLTYPE put_ListenStateDiscoverability(int32_t) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE get_IsAutonomousGroupOwnerEnabled(Boolean* value) override {
        return Unused(value);
    }
    HRESULT STDMETHODCALLTYPE put_IsAutonomousGroupOwnerEnabled(Boolean value) override {
        return Put("IWiFiDirectAdvertisement::put_IsAutonomousGroupOwnerEnabled", autonomous_,
                   value);
    }
    HRESULT STDMETHODCALLTYPE get_LegacySettings(IWiFiDirectLegacySettings** value) override {
        return Hand("IWiFiDirectAdvertisement::get_LegacySettings",
                    ComPtr<IWiFiDirectLegacySettings>(this), value);
    }

    HRESULT STDMETHODCALLTYPE get_IsEnabled(Boolean* value) override { return Unused(value); }
    HRESULT STDMETHODCALLTYPE put_IsEnabled(Boolean value) override {
        return Put("IWiFiDirectLegacySettings::put_IsEnabled", enabled_, value);
    }
    HRESULT STDMETHODCALLTYPE get_Ssid(HSTRING* value) override { return Unused(value); }
    HRESULT STDMETHODCALLTYPE put_Ssid(HSTRING value) override {
        return Put("IWiFiDirectLegacySettings::put_Ssid", ssid_, Read(value));
    }
    HRESULT STDMETHODCALLTYPE get_Passphrase(IPasswordCredential** value) override {
        return Unused(value);
    }
    HRESULT STDMETHODCALLTYPE put_Passphrase(IPasswordCredential* value) override {
        if (HRESULT fault = Fault("IWiFiDirectLegacySettings::put_Passphrase")) {
            return fault;
        }
        if (!value) {
            return E_INVALIDARG;
        }
        passphrase_ = ComPtr<IPasswordCredential>(value);
        return S_OK;
    }

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
