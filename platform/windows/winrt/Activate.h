#pragma once
// Making runtime objects by their default constructor, for the ports'
// factories: a class the runtime cannot activate (not registered, as under
// Wine, or an activation failure) is an answer, null, logged with the class
// and the HRESULT.

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/winrt/RuntimeActivation.h"
#include "platform/windows/winrt/RuntimeCall.h"

namespace connectkit::win {

// A new instance of `classId` as its default interface, or null (logged).
template <typename Interface>
ComPtr<Interface> Activate(RuntimeActivation& runtime, const wchar_t* classId) {
    ComPtr<IInspectable> instance;
    HRESULT result = runtime.ActivateInstance(classId, instance.GetAddressOf());
    if (FAILED(result) || !instance) {
        LogErrorFun(L"[WinRT] activating %ls failed, hresult 0x%08lx", classId,
                    static_cast<unsigned long>(result));
        return nullptr;
    }
    auto object = Query<Interface>(instance.Get());
    if (!object) {
        LogErrorFun(L"[WinRT] %ls lacks its default interface", classId);
    }
    return object;
}

// The statics or factory interface `Interface` of `classId`; throws
// PlatformError naming `call` when the runtime has none.
template <typename Interface>
ComPtr<Interface> Factory(RuntimeActivation& runtime, const wchar_t* classId, const char* call) {
    return Fetch<Interface>(
        [&](Interface** value) {
            return runtime.GetActivationFactory(classId, Interface::kIid,
                                                reinterpret_cast<void**>(value));
        },
        call);
}

}  // namespace connectkit::win
