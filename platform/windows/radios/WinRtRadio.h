#pragma once

#include <memory>

#include "platform/ports/Radios.h"
#include "platform/windows/winrt/RuntimeCall.h"
#include "platform/windows/winrt/Subscriptions.h"
#include "platform/windows/winrt/abi/Radios.h"

namespace connectkit::win {

// Windows.Devices.Radios.Radio. A radio the platform has taken away (a USB
// controller pulled) keeps its object, whose calls then fail: each failure
// throws PlatformError with the runtime's HRESULT. Made only through
// std::make_shared (its delegates hold it weakly).
class WinRtRadio final : public platform::Radio, public std::enable_shared_from_this<WinRtRadio> {
public:
    explicit WinRtRadio(ComPtr<abi::IRadio> radio) : radio_(std::move(radio)) {}
    ~WinRtRadio() override;
    WinRtRadio(const WinRtRadio&) = delete;
    WinRtRadio& operator=(const WinRtRadio&) = delete;

    platform::RadioKind Kind() override;
    platform::RadioState State() override;
    std::wstring Name() override;
    void SetStateAsync(platform::RadioState state) override;
    platform::EventToken AddStateChanged(StateHandler handler) override;
    void RemoveStateChanged(platform::EventToken token) override;

private:
    ComPtr<abi::IRadio> radio_;
    Subscriptions<StateHandler> stateHandlers_;
};

}  // namespace connectkit::win
