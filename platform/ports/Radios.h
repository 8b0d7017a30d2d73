#pragma once
// The PC's radios as the Windows Runtime offers them
// (Windows.Devices.Radios), with the conventions of the other runtime ports:
// calls that fail throw platform::PlatformError with the HRESULT, and
// handlers run on platform threads.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/ports/RuntimeTypes.h"

namespace connectkit::platform {

// Windows.Devices.Radios.RadioKind
enum class RadioKind : int32_t { Other = 0, WiFi = 1, MobileBroadband = 2, Bluetooth = 3, FM = 4 };
// Windows.Devices.Radios.RadioState
enum class RadioState : int32_t { Unknown = 0, On = 1, Off = 2, Disabled = 3 };
// Windows.Devices.Radios.RadioAccessStatus
enum class RadioAccessStatus : int32_t {
    Unspecified = 0,
    Allowed = 1,
    DeniedByUser = 2,
    DeniedBySystem = 3
};

class Radio {
public:
    // TypedEventHandler<Radio, IInspectable>: the arguments carry nothing, so
    // only the sender is handed on. The platform may raise the event more
    // than once for one change, and a radio that vanishes raises nothing.
    using StateHandler = std::function<void(Radio& sender)>;

    virtual ~Radio() = default;
    virtual RadioKind Kind() = 0;
    virtual RadioState State() = 0;
    virtual std::wstring Name() = 0;
    // Starts the switch and returns at once. The operation's outcome
    // (allowed, denied, failed) is dropped, as its only caller never awaits
    // it; what really happened shows as a state change or as none. Throws
    // when the runtime refuses to start the operation at all.
    virtual void SetStateAsync(RadioState state) = 0;
    virtual EventToken AddStateChanged(StateHandler handler) = 0;
    // A handler removed is not called again once this returns, except for a
    // call already under way on another thread.
    virtual void RemoveStateChanged(EventToken token) = 0;
};

// IVectorView<Radio>, copied out. An entry may be null: the runtime's vector
// hands out whatever the radio stack put in it.
using RadioList = std::vector<std::shared_ptr<Radio>>;

class Radios {
public:
    // Completion of Radio.GetRadiosAsync(): the list when `status` is
    // Completed, empty otherwise.
    using ListCompletion = std::function<void(AsyncStatus status, RadioList radios)>;

    virtual ~Radios() = default;
    // Starts the listing; `completed` runs once, on a platform thread,
    // possibly before this returns, possibly long after the caller stopped
    // waiting. Throws when the listing cannot even be started (the radio
    // statics cannot be activated).
    virtual void GetRadiosAsync(ListCompletion completed) = 0;
};

}  // namespace connectkit::platform
