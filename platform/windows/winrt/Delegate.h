#pragma once
// Event handlers and completion handlers are objects we hand to the runtime:
// COM objects of our own (ComObject.h) answering for their own
// (parameterized) IID, IUnknown and IAgileObject. Agile, because the runtime
// calls them on its own pool threads; the body must therefore be safe to run
// on any thread.
//
// The body never lets an exception reach the runtime: one that escapes is
// logged and turned into E_FAIL for the caller of Invoke.

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/ModuleLifetime.h"
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

// The runtime may call a handler long after the call that handed it over,
// and may keep one we never take back: the module stays loaded from then on.
template <typename Interface, typename... Args, typename Body>
ComPtr<Interface> NewDelegate(Body body) {
    platform::KeepModuleLoaded();
    ComPtr<Interface> handler;
    handler.Attach(new Delegate<Interface, Body, Args...>(std::move(body)));
    return handler;
}

// The completion handler of one asynchronous operation. The body runs for
// the runtime's first call only: a runtime that calls again is logged, with
// the operation named by `operationName`, and otherwise ignored.
template <typename Interface, typename Operation, typename Body>
ComPtr<Interface> NewCompletion(const char* operationName, Body body) {
    auto delivered = std::make_shared<std::atomic<bool>>(false);
    return NewDelegate<Interface, Operation*, int32_t>(
        [delivered, operationName, body = std::move(body)](Operation* done, int32_t status) {
            if (delivered->exchange(true)) {
                LogErrorFun("[WinRT] %s completed twice; the second is ignored", operationName);
                return S_OK;
            }
            body(done, status);
            return S_OK;
        });
}

}  // namespace connectkit::win
