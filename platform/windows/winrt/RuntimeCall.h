#pragma once
// Calling runtime interfaces: a failed call becomes a PlatformError carrying
// its HRESULT and the method's name, the way the runtime's projections
// throw.

#include "platform/windows/core/ComPtr.h"
#include "platform/windows/winrt/abi/Foundation.h"

namespace connectkit::win {

// Throws when `result` is a failure; `call` names the interface method.
void Check(HRESULT result, const char* call);

// A call that succeeded but handed back no object where one was due.
[[noreturn]] void ThrowNull(const char* call);

// The object an [out] interface pointer call hands back; never null.
template <typename Interface, typename Call>
ComPtr<Interface> Fetch(Call call, const char* name) {
    ComPtr<Interface> object;
    Check(call(object.GetAddressOf()), name);
    if (!object) {
        ThrowNull(name);
    }
    return object;
}

// `object` as `Interface`, or null when it does not implement it.
template <typename Interface>
ComPtr<Interface> Query(IUnknown* object) {
    ComPtr<Interface> result;
    if (object) {
        object->QueryInterface(Interface::kIid, reinterpret_cast<void**>(result.GetAddressOf()));
    }
    return result;
}

// The failure an asynchronous operation that did not complete reports
// through IAsyncInfo, or S_OK when it reports none.
inline HRESULT AsyncErrorCode(IUnknown* operation) {
    HRESULT error = S_OK;
    if (auto info = Query<abi::IAsyncInfo>(operation)) {
        info->get_ErrorCode(&error);
    }
    return error;
}

}  // namespace connectkit::win
