#pragma once
// Event handlers and completion handlers are objects we hand to the runtime:
// IUnknown-based, reference counted, answering QueryInterface for their own
// (parameterized) IID, IUnknown and IAgileObject. Agile, because the runtime
// calls them on its own pool threads; the body must therefore be safe to run
// on any thread.
//
// The body never lets an exception reach the runtime: one that escapes is
// logged and turned into E_FAIL for the caller of Invoke.

#include <atomic>
#include <utility>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/core/ComPtr.h"
#include "platform/windows/winrt/abi/Foundation.h"

namespace connectkit::win {

template <typename Interface, typename Body, typename... Args>
class Delegate final : public Interface {
public:
    explicit Delegate(Body body) : body_(std::move(body)) {}
    Delegate(const Delegate&) = delete;
    Delegate& operator=(const Delegate&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!object) {
            return E_POINTER;
        }
        if (IsEqualGUID(iid, Interface::kIid) || IsEqualGUID(iid, abi::kIidUnknown) ||
            IsEqualGUID(iid, abi::kIidAgileObject)) {
            AddRef();
            *object = static_cast<Interface*>(this);
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE Invoke(Args... args) override {
        try {
            return body_(args...);
        } catch (...) {
            LogErrorFun("[WinRT] an event or completion handler threw; the runtime gets E_FAIL");
            return E_FAIL;
        }
    }

private:
    ~Delegate() = default;

    std::atomic<ULONG> references_{1};
    Body body_;
};

template <typename Interface, typename... Args, typename Body>
ComPtr<Interface> NewDelegate(Body body) {
    ComPtr<Interface> handler;
    handler.Attach(new Delegate<Interface, Body, Args...>(std::move(body)));
    return handler;
}

}  // namespace connectkit::win
