#pragma once
// Time, waits, locks and threads. Every wait the library makes goes through
// this port: on Windows it is the real clock; in the simulated PC time is
// virtual, so a 60-second time-out costs microseconds of wall time.

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/ports/Sync.h"

namespace connectkit::platform {

// Broken-down local time, as GetLocalTime gives it.
struct LocalTime {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int milliseconds = 0;
};

class Clock {
public:
    virtual ~Clock() = default;

    // Milliseconds since the machine started (GetTickCount64).
    virtual uint64_t TickCount64() = 0;
    virtual void Sleep(uint32_t milliseconds) = 0;
    // Milliseconds since 1970-01-01 UTC.
    virtual uint64_t UnixTimeMs() = 0;
    virtual LocalTime LocalNow() = 0;

    // Null when the platform refuses to create the object.
    virtual std::unique_ptr<Semaphore> NewSemaphore(uint32_t initialCount,
                                                    uint32_t maximumCount) = 0;
    virtual std::unique_ptr<Event> NewEvent(bool manualReset, bool initiallySet) = 0;
    virtual std::unique_ptr<Mutex> NewMutex(bool recursive, uint32_t spinCount) = 0;
    virtual std::unique_ptr<ConditionVariable> NewConditionVariable() = 0;

    // Threads the library starts itself. They are ordinary threads; starting
    // them here lets the simulated PC count them as running from the first
    // instruction, so virtual time never runs ahead of work they still have
    // to do.
    virtual std::unique_ptr<Thread> StartThread(std::function<void()> body) = 0;
    virtual void StartDetachedThread(std::function<void()> body) = 0;
};

}  // namespace connectkit::platform
