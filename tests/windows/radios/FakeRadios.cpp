#include "radios/FakeRadios.h"

namespace connectkit::test {

struct FakeRadioStack::State {
    explicit State(std::shared_ptr<FakeWorld> fakes) : world(std::move(fakes)) {}
    std::shared_ptr<FakeWorld> world;
    std::mutex mutex;
    std::vector<ComPtr<FakeRadio>> radios;
    int32_t status = 1;
    HRESULT error = S_OK;
    std::vector<std::function<void()>> held;
};

namespace {

// SetStateAsync's operation: the library releases it unawaited, so only
// its lifetime matters (the world counts it).
class FakeAccessOperation final : public Fake<IRadioAccessOperation> {
public:
    using Fake::Fake;
};

using RadioView = FakeView<IRadioView, IRadio, FakeRadio>;

// The radio statics and the one GetRadiosAsync they start, in one object
// holding the radios there were when it was made: the library fetches the
// statics for every listing.
class FakeListing final : public Fake<IRadioStatics, IRadioListOperation, IAsyncInfo> {
public:
    explicit FakeListing(std::shared_ptr<FakeRadioStack::State> stack)
        : Fake(stack->world), stack_(std::move(stack)) {
        std::lock_guard<std::mutex> lock(stack_->mutex);
        radios_ = stack_->radios;
        status_ = stack_->status;
        error_ = stack_->error;
    }

    CK_FAKE_GET(IRadioStatics, GetRadiosAsync, IRadioListOperation*,
                ComPtr<IRadioListOperation>(this))

    HRESULT STDMETHODCALLTYPE put_Completed(IRadioListCompletedHandler* handler) override {
        if (HRESULT fault = Fault("IAsyncOperation<IVectorView<Radio>>::put_Completed")) {
            return fault;
        }
        ComPtr<FakeListing> self(this);
        ComPtr<IRadioListCompletedHandler> completed(handler);
        std::lock_guard<std::mutex> lock(stack_->mutex);
        stack_->held.push_back([self, completed] {
            // Twice, as a faulty runtime might: the library must deliver once.
            FakeWorld::Spawn(self->world_, [self, completed] {
                for (int call = 0; call < 2; ++call) {
                    if (FAILED(completed->Invoke(self.Get(), self->status_))) {
                        ++self->world_->failedInvokes;
                    }
                }
            });
        });
        return S_OK;
    }
    CK_UNUSED_GET(get_Completed, IRadioListCompletedHandler*)
    CK_FAKE_GET(IAsyncOperation<IVectorView<Radio>>, GetResults, IRadioView*,
                Make<RadioView>(world_, "IVectorView<Radio>", radios_))

    CK_UNUSED_GET(get_Id, uint32_t)
    CK_UNUSED_GET(get_Status, int32_t)
    CK_FAKE_GET(IAsyncInfo, get_ErrorCode, HRESULT, error_)
    HRESULT STDMETHODCALLTYPE Cancel() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Close() override { return S_OK; }

private:
    std::shared_ptr<FakeRadioStack::State> stack_;
    std::vector<ComPtr<FakeRadio>> radios_;
    int32_t status_ = 1;
    HRESULT error_ = S_OK;
};

}  // namespace

HRESULT FakeRadio::SetStateAsync(int32_t value, IRadioAccessOperation** operation) {
    *operation = nullptr;
    if (HRESULT fault = Fault("IRadio::SetStateAsync")) {
        return fault;
    }
    if (state_ != value) {
        Change(value);
    }
    *operation = Make<FakeAccessOperation>(world_).Detach();
    return S_OK;
}

bool FakeRadio::Change(int32_t state) {
    state_ = state;
    // Twice, as the platform may raise it for one change.
    auto raise = [this] {
        return stateChanged_.Raise(ComPtr<FakeRadio>(this), [] { return ComPtr<IInspectable>(); });
    };
    return raise() && raise();
}

FakeRadioStack::FakeRadioStack(FakeRuntime& runtime)
    : state_(std::make_shared<State>(runtime.shared())) {
    runtime.Provide(kRadioClass,
                    [state = state_] { return Inspectable(Make<FakeListing>(state)); });
}

ComPtr<FakeRadio> FakeRadioStack::Add(int32_t kind, int32_t state, const std::wstring& name) {
    auto radio = Make<FakeRadio>(state_->world, kind, state, name);
    std::lock_guard<std::mutex> lock(state_->mutex);
    state_->radios.push_back(radio);
    return radio;
}

void FakeRadioStack::AddNull() {
    std::lock_guard<std::mutex> lock(state_->mutex);
    state_->radios.push_back(nullptr);
}

void FakeRadioStack::EndListingsWith(int32_t status, HRESULT error) {
    std::lock_guard<std::mutex> lock(state_->mutex);
    state_->status = status;
    state_->error = error;
}

size_t FakeRadioStack::ReleaseListings() {
    std::vector<std::function<void()>> held;
    {
        std::lock_guard<std::mutex> lock(state_->mutex);
        held.swap(state_->held);
    }
    for (auto& complete : held) {
        complete();
    }
    return held.size();
}

void FakeRadioStack::Clear() {
    ReleaseListings();
    std::lock_guard<std::mutex> lock(state_->mutex);
    state_->radios.clear();
}

}  // namespace connectkit::test
