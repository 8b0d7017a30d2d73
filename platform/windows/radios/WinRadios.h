#pragma once
// The PC's radios through the Windows Runtime, over hand-declared ABI
// interfaces (winrt/abi/Radios.h). The radio statics come from a
// RuntimeActivation: the system's by default, a test's fakes otherwise.
//
// GetRadiosAsync throws PlatformError when the statics cannot be had (class
// not registered, as under Wine) or the listing cannot be started. Once
// started, the completion runs exactly once, on the runtime's thread, with
// whatever the runtime delivered: a radio list whose reading fails counts as
// an Error listing, a null entry stays null.

#include <memory>

#include "platform/ports/Radios.h"
#include "platform/windows/winrt/RuntimeActivation.h"

namespace connectkit::win {

class WinRadios final : public platform::Radios {
public:
    explicit WinRadios(std::shared_ptr<RuntimeActivation> runtime = SystemActivation())
        : runtime_(std::move(runtime)) {}

    void GetRadiosAsync(ListCompletion completed) override;

private:
    std::shared_ptr<RuntimeActivation> runtime_;
};

}  // namespace connectkit::win
