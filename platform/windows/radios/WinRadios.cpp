#include "platform/windows/radios/WinRadios.h"

#include <exception>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/radios/WinRtRadio.h"
#include "platform/windows/winrt/Activate.h"
#include "platform/windows/winrt/Delegate.h"
#include "platform/windows/winrt/RuntimeCall.h"
#include "platform/windows/winrt/abi/Radios.h"

namespace connectkit::win {
namespace {

// A PC has a handful of radios; a runtime reporting more than this is not
// believed past it.
constexpr uint32_t kMaxRadios = 32;

platform::RadioList ReadRadios(abi::IRadioListOperation* operation) {
    auto view = Fetch<abi::IRadioView>(
        [operation](abi::IRadioView** value) {
            return operation ? operation->GetResults(value) : E_POINTER;
        },
        "IAsyncOperation<IVectorView<Radio>>::GetResults");
    uint32_t size = 0;
    Check(view->get_Size(&size), "IVectorView<Radio>::get_Size");
    if (size > kMaxRadios) {
        LogErrorFun("[WinRT] %u radios reported; reading the first %u", size, kMaxRadios);
        size = kMaxRadios;
    }
    platform::RadioList radios;
    for (uint32_t index = 0; index < size; ++index) {
        ComPtr<abi::IRadio> radio;
        Check(view->GetAt(index, radio.GetAddressOf()), "IVectorView<Radio>::GetAt");
        radios.push_back(radio ? std::make_shared<WinRtRadio>(std::move(radio)) : nullptr);
    }
    return radios;
}

void CompleteListing(abi::IRadioListOperation* operation, int32_t status,
                     const platform::Radios::ListCompletion& completed) {
    auto asyncStatus = static_cast<platform::AsyncStatus>(status);
    platform::RadioList radios;
    if (asyncStatus == platform::AsyncStatus::Completed) {
        try {
            radios = ReadRadios(operation);
        } catch (const std::exception& error) {
            LogErrorFun("[WinRT] GetRadiosAsync completed, but its list cannot be read: %s",
                        error.what());
            asyncStatus = platform::AsyncStatus::Error;
        }
    } else {
        LogErrorFun("[WinRT] GetRadiosAsync ended with status %d, hresult 0x%08lx",
                    static_cast<int>(status),
                    static_cast<unsigned long>(AsyncErrorCode(operation)));
    }
    completed(asyncStatus, std::move(radios));
}

}  // namespace

void WinRadios::GetRadiosAsync(ListCompletion completed) {
    auto statics =
        Factory<abi::IRadioStatics>(*runtime_, abi::kRadioClass, "RoGetActivationFactory(Radio)");
    auto operation = Fetch<abi::IRadioListOperation>(
        [&statics](abi::IRadioListOperation** value) { return statics->GetRadiosAsync(value); },
        "IRadioStatics::GetRadiosAsync");
    auto handler = NewCompletion<abi::IRadioListCompletedHandler, abi::IRadioListOperation>(
        "GetRadiosAsync",
        [completed = std::move(completed)](abi::IRadioListOperation* done, int32_t status) {
            CompleteListing(done, status, completed);
        });
    Check(operation->put_Completed(handler.Get()),
          "IAsyncOperation<IVectorView<Radio>>::put_Completed");
}

}  // namespace connectkit::win
