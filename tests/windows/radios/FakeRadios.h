#pragma once
// The radio stack of the fake runtime: Radio objects the test adds (null
// entries too), the Radio statics whose GetRadiosAsync lists them, and how
// each listing ends (Completed, Canceled or Error). A listing completes only
// when the test lets it go, so always after the call that started it
// returned, and it calls its handler twice. A radio's state changes on
// request or when the test says, and each change raises StateChanged twice,
// on a thread of its own. Calls fail by name through the runtime's faults
// ("IRadio::get_State").

#include <memory>
#include <string>
#include <utility>

#include "platform/windows/winrt/abi/Radios.h"
#include "winrt/FakeRuntime.h"

namespace connectkit::test {

class FakeRadio final : public Fake<IRadio> {
public:
    FakeRadio(std::shared_ptr<FakeWorld> world, int32_t kind, int32_t state, std::wstring name)
        : Fake(world), kind_(kind), state_(state), name_(std::move(name)) {}

    HRESULT STDMETHODCALLTYPE SetStateAsync(int32_t value,
                                            IRadioAccessOperation** operation) override;
    CK_FAKE_EVENT(StateChanged, IRadioStateChangedHandler, stateChanged_)
    CK_FAKE_GET(IRadio, get_State, int32_t, state_.load())
    CK_FAKE_GET(IRadio, get_Name, HSTRING, name_)
    CK_FAKE_GET(IRadio, get_Kind, int32_t, kind_)

    // Switches to `state`; false when no handler is registered.
    bool Change(int32_t state);

private:
    int32_t kind_;
    std::atomic<int32_t> state_;
    std::wstring name_;
    Event<IRadioStateChangedHandler> stateChanged_{world_, "IRadio", "StateChanged"};
};

class FakeRadioStack {
public:
    // Makes `runtime` hand out this stack's Radio statics.
    explicit FakeRadioStack(FakeRuntime& runtime);

    ComPtr<FakeRadio> Add(int32_t kind, int32_t state, const std::wstring& name);
    void AddNull();
    // Listings started from now on end with `status` (an AsyncStatus) and,
    // unless Completed, report `error` through IAsyncInfo.
    void EndListingsWith(int32_t status, HRESULT error = S_OK);
    // Completes the listings started so far, each on a thread of its own;
    // how many.
    size_t ReleaseListings();
    // Completes the held listings and drops the radios.
    void Clear();

    struct State;

private:
    std::shared_ptr<State> state_;
};

}  // namespace connectkit::test
