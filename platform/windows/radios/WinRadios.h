#pragma once
// Placeholder until the Radios ABI is declared: the statics cannot be
// activated, as on a PC without the runtime class.

#include "platform/ports/Errors.h"
#include "platform/ports/Radios.h"

namespace connectkit::win {

class WinRadios final : public platform::Radios {
public:
    void GetRadiosAsync(ListCompletion) override {
        throw platform::PlatformError(static_cast<int32_t>(0x80040154), "Radio statics");
    }
};

}  // namespace connectkit::win
