#include "platform/windows/radios/WinRtRadio.h"

#include "platform/windows/winrt/Delegate.h"
#include "platform/windows/winrt/HString.h"

namespace connectkit::win {

WinRtRadio::~WinRtRadio() {
    stateHandlers_.RemoveAll(
        [this](abi::Token token) { return radio_->remove_StateChanged(token); },
        "IRadio::remove_StateChanged");
}

platform::RadioKind WinRtRadio::Kind() {
    int32_t kind = 0;
    Check(radio_->get_Kind(&kind), "IRadio::get_Kind");
    return static_cast<platform::RadioKind>(kind);
}

platform::RadioState WinRtRadio::State() {
    int32_t state = 0;
    Check(radio_->get_State(&state), "IRadio::get_State");
    return static_cast<platform::RadioState>(state);
}

std::wstring WinRtRadio::Name() {
    HString name;
    Check(radio_->get_Name(name.Put()), "IRadio::get_Name");
    return name.Text();
}

void WinRtRadio::SetStateAsync(platform::RadioState state) {
    // The switch goes on without us once started: releasing the operation
    // does not cancel it.
    ComPtr<abi::IRadioAccessOperation> operation;
    Check(radio_->SetStateAsync(static_cast<int32_t>(state), operation.GetAddressOf()),
          "IRadio::SetStateAsync");
}

platform::EventToken WinRtRadio::AddStateChanged(StateHandler handler) {
    auto entry = stateHandlers_.Prepare(std::move(handler));
    auto handlerObject = NewDelegate<abi::IRadioStateChangedHandler, abi::IRadio*, IInspectable*>(
        [self = weak_from_this(), entry](abi::IRadio*, IInspectable*) {
            auto radio = self.lock();
            if (radio && entry->active) {
                entry->handler(*radio);
            }
            return S_OK;
        });
    abi::Token token = 0;
    Check(radio_->add_StateChanged(handlerObject.Get(), &token), "IRadio::add_StateChanged");
    stateHandlers_.Added(token, std::move(entry));
    return token;
}

void WinRtRadio::RemoveStateChanged(platform::EventToken token) {
    if (stateHandlers_.Remove(token)) {
        Check(radio_->remove_StateChanged(token), "IRadio::remove_StateChanged");
    }
}

}  // namespace connectkit::win
