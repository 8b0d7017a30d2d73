#pragma once
// What the Bluetooth and Wi-Fi radio objects do alike with the platform's
// radio: find it, subscribe to its changes, and switch it.

#include "bluetooth/RadioDeviceMgr.h"
#include "platform/ports/Radios.h"

namespace connectkit::bluetooth {

// Finds the radio of `kind` into `holder` and hands `handler` to its
// StateChanged, the module pinned first as the handler may outlive an
// unload. False when no radio is found or the subscription throws (logged
// under `function`).
bool HoldAndSubscribe(platform::RadioKind kind, RadioHolder& holder,
                      platform::Radio::StateHandler handler, const char* function);

// Both Enable calls' answers, as their result enums number them.
enum class SwitchAnswer { Requested = 0, Already = 1, Disabled = 2, Failed = 3 };

// Asks `radio` for on (`enable` 1) or off (anything else); `turnOn` makes
// the request for on and gives the answer, so a caller may handle its
// failure apart.
template <typename TurnOn>
SwitchAnswer SwitchRadio(platform::Radio& radio, int enable, const TurnOn& turnOn) {
    switch (radio.State()) {
        case platform::RadioState::Off:
            return enable == 1 ? turnOn() : SwitchAnswer::Already;
        case platform::RadioState::On:
            if (enable == 1) {
                return SwitchAnswer::Already;
            }
            radio.SetStateAsync(platform::RadioState::Off);
            return SwitchAnswer::Requested;
        case platform::RadioState::Disabled:
            return SwitchAnswer::Disabled;
        default:
            return SwitchAnswer::Failed;
    }
}

}  // namespace connectkit::bluetooth
