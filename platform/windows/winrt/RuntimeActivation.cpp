#include "platform/windows/winrt/RuntimeActivation.h"

// clang-format off
#include <objbase.h>
#include <roapi.h>
// clang-format on

#include <cwchar>
#include <mutex>

#include "SDK/Util/LogTool/LogTool.h"

namespace connectkit::win {
namespace {

void KeepMultithreadedApartment() {
    static std::once_flag once;
    std::call_once(once, [] {
        CO_MTA_USAGE_COOKIE cookie = nullptr;
        HRESULT result = CoIncrementMTAUsage(&cookie);
        if (FAILED(result)) {
            LogWarnFun("[WinRT] CoIncrementMTAUsage failed, hresult 0x%08lx",
                       static_cast<unsigned long>(result));
        }
    });
}

// A reference to the caller's text: no copy, valid while `header` lives.
HRESULT ClassName(const wchar_t* classId, HSTRING_HEADER& header, HSTRING& name) {
    return WindowsCreateStringReference(classId, static_cast<UINT32>(std::wcslen(classId)), &header,
                                        &name);
}

class SystemRuntime final : public RuntimeActivation {
public:
    HRESULT ActivateInstance(const wchar_t* classId, IInspectable** instance) override {
        KeepMultithreadedApartment();
        HSTRING_HEADER header;
        HSTRING name = nullptr;
        HRESULT result = ClassName(classId, header, name);
        return FAILED(result) ? result : RoActivateInstance(name, instance);
    }

    HRESULT GetActivationFactory(const wchar_t* classId, const GUID& iid, void** factory) override {
        KeepMultithreadedApartment();
        HSTRING_HEADER header;
        HSTRING name = nullptr;
        HRESULT result = ClassName(classId, header, name);
        return FAILED(result) ? result : RoGetActivationFactory(name, iid, factory);
    }
};

}  // namespace

std::shared_ptr<RuntimeActivation> SystemActivation() {
    static auto runtime = std::make_shared<SystemRuntime>();
    return runtime;
}

}  // namespace connectkit::win
