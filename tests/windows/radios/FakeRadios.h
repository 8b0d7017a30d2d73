#pragma once
// The radio stack of the fake runtime: Radio objects the test adds (null
// entries too), the Radio statics whose GetRadiosAsync lists them, and how
// each listing ends (Completed, Canceled or Error). A listing completes only
// when the test lets it go, so always after the call that started it
// returned, and it calls its handler twice. Radios change state on request or when the test says,
// raising StateChanged as often as asked, each time on a thread of its own. Calls fail by name
// through the runtime's faults ("IRadio::get_State").

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/windows/winrt/abi/Radios.h"
#include "winrt/FakeRuntime.h"

namespace connectkit::test {

class FakeRadio final : public Fake<IRadio> {
public:
    FakeRadio(std::shared_ptr<FakeWorld> world, int32_t kind, int32_t state, std::wstring name);

    HRESULT STDMETHODCALLTYPE SetStateAsync(int32_t value,
                                            IRadioAccessOperation** operation) override;
    HRESULT STDMETHODCALLTYPE add_StateChanged(IRadioStateChangedHandler* handler,
                                               Token* token) override;
    HRESULT STDMETHODCALLTYPE remove_StateChanged(Token token) override;
    HRESULT STDMETHODCALLTYPE get_State(int32_t* value) override;
    HRESULT STDMETHODCALLTYPE get_Name(HSTRING* value) override;
    HRESULT STDMETHODCALLTYPE get_Kind(int32_t* value) override;

    // Switches to `state` and raises StateChanged `times` times; false when
    // no handler is registered.
    bool Change(int32_t state, int times = 1);
    // Each change SetStateAsync makes is raised this often.
    void RaiseEachChange(int times) { timesPerChange_ = times; }

private:
    int32_t kind_;
    std::atomic<int32_t> state_;
    std::wstring name_;
    std::atomic<int> timesPerChange_{1};
    Event<IRadioStateChangedHandler> stateChanged_;
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
