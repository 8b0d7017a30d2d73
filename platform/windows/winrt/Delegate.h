#pragma once
// Event handlers and completion handlers are objects we hand to the runtime:
// COM objects of our own (ComObject.h) answering for their own
// (parameterized) IID, IUnknown and IAgileObject. Agile, because the runtime
// calls them on its own pool threads; the body must therefore be safe to run
// on any thread.
//
// The body never lets an exception reach the runtime: one that escapes is
// logged and turned into E_FAIL for the caller of Invoke.

#include <utility>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/core/ComPtr.h"
#include "platform/windows/winrt/ComObject.h"

namespace connectkit::win {

template <typename Interface, typename Body, typename... Args>
class Delegate final : public ComObject<Interface> {
public:
    explicit Delegate(Body body) : body_(std::move(body)) {}

    HRESULT STDMETHODCALLTYPE Invoke(Args... args) override {
        try {
            return body_(args...);
        } catch (...) {
            LogErrorFun("[WinRT] an event or completion handler threw; the runtime gets E_FAIL");
            return E_FAIL;
        }
    }

private:
    ~Delegate() override = default;

    Body body_;
};

template <typename Interface, typename... Args, typename Body>
ComPtr<Interface> NewDelegate(Body body) {
    ComPtr<Interface> handler;
    handler.Attach(new Delegate<Interface, Body, Args...>(std::move(body)));
    return handler;
}

}  // namespace connectkit::win
