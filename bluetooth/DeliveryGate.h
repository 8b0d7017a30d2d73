#pragma once
// Lets an object give `this` to platform handlers and still be destroyed
// while the platform may be calling one: each call enters the gate before it
// touches the object and leaves it afterwards; the object's destructor
// closes the gate, so calls that come later do nothing, and waits (bounded,
// through the clock port) for the calls already inside. Removing a handler
// alone is not enough: the platform may be inside it on another thread.
// A handler that destroys its own object from inside its call would wait on
// itself; the wait then gives up with a log line instead of hanging, unless
// the caller knows it is inside and shuts the gate without waiting.

#include <atomic>
#include <cstdint>
#include <memory>

#include "platform/ports/Sync.h"

namespace connectkit::bluetooth {

class DeliveryGate {
public:
    DeliveryGate();

    // Runs `call` unless the gate is closed.
    template <typename Call>
    void Pass(Call&& call) {
        if (!Enter()) {
            return;
        }
        struct Leaving {
            DeliveryGate& gate;
            ~Leaving() { gate.Leave(); }
        } leaving{*this};
        call();
    }

    // Closes the gate and waits up to `timeoutMs` for the calls inside;
    // false (logged by `owner`, naming the call as `what`) when one was
    // still inside then.
    bool Close(const char* owner, uint32_t timeoutMs, const char* what = "a platform call");

    // Closes the gate without waiting for the calls inside.
    void Shut() { open_ = false; }

private:
    bool Enter();
    void Leave();

    // Passing takes no lock: a scanner sees thousands of events a second.
    // The mutex only pairs the last call's leaving with a waiting Close.
    std::atomic<bool> open_{true};
    std::atomic<int> inside_{0};
    std::unique_ptr<platform::Mutex> mutex_;
    std::unique_ptr<platform::ConditionVariable> left_;
};

}  // namespace connectkit::bluetooth
