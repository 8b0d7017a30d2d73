#pragma once
// A COM object of our own implementing `Interfaces` (each naming its IID as
// kIid): the reference count and QueryInterface over those IIDs, plus
// IUnknown, IAgileObject and, when the first interface is a runtime one,
// IInspectable, all answered by the first interface. Every such object is
// agile: the runtime calls delegates on its own pool threads, so whatever
// derives from this must be safe to call on any thread.
//
// An object starts with one reference, which its maker takes over
// (ComPtr::Attach), and deletes itself when the last one goes.

#include <atomic>
#include <type_traits>

#include "platform/windows/winrt/abi/Foundation.h"

namespace connectkit::win {

template <typename First, typename... Others>
class ComObject : public First, public Others... {
public:
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!object) {
            return E_POINTER;
        }
        *object = Find(iid);
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

protected:
    ComObject() = default;
    virtual ~ComObject() = default;

    // A reference for a finder that holds only a raw pointer; fails once
    // the object is on its way out.
    bool TryAddRef() {
        ULONG count = references_.load();
        while (count != 0) {
            if (references_.compare_exchange_weak(count, count + 1)) {
                return true;
            }
        }
        return false;
    }

private:
    void* Find(REFIID iid) {
        if (IsEqualGUID(iid, First::kIid) || IsEqualGUID(iid, abi::kIidUnknown) ||
            IsEqualGUID(iid, abi::kIidAgileObject) ||
            (std::is_base_of_v<IInspectable, First> && IsEqualGUID(iid, abi::kIidInspectable))) {
            return static_cast<First*>(this);
        }
        void* found = nullptr;
        ((found = !found && IsEqualGUID(iid, Others::kIid) ? static_cast<Others*>(this) : found),
         ...);
        return found;
    }

    std::atomic<ULONG> references_{1};
};

}  // namespace connectkit::win
