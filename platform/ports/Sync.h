#pragma once
// Waitable objects and locks handed out by the clock port. A thread that
// blocks on one of these is "waiting" as far as the simulated PC's virtual
// time is concerned; a thread blocked anywhere else still counts as running.

#include <cstdint>

namespace connectkit::platform {

enum class WaitResult { Signaled, TimedOut, Failed };

// A Win32-style counting semaphore.
class Semaphore {
public:
    virtual ~Semaphore() = default;
    // False when the count is already at its maximum.
    virtual bool Release() = 0;
    virtual WaitResult Wait(uint32_t timeoutMs) = 0;
};

// A Win32-style event, manual or auto reset.
class Event {
public:
    virtual ~Event() = default;
    virtual void Set() = 0;
    virtual void Reset() = 0;
    virtual WaitResult Wait(uint32_t timeoutMs) = 0;
};

// Satisfies BasicLockable, so std::lock_guard and std::unique_lock work.
class Mutex {
public:
    virtual ~Mutex() = default;
    virtual void lock() = 0;
    virtual void unlock() = 0;
};

class ConditionVariable {
public:
    virtual ~ConditionVariable() = default;
    // The mutex is held on entry and on return. Waits until notified; callers
    // re-check their condition, wake-ups may be spurious.
    virtual void Wait(Mutex& mutex) = 0;
    // Returns false when the time-out elapsed.
    virtual bool WaitFor(Mutex& mutex, uint32_t timeoutMs) = 0;
    virtual void NotifyOne() = 0;
    virtual void NotifyAll() = 0;
};

class Thread {
public:
    virtual ~Thread() = default;
    // Waits for the thread's body to return. The destructor joins too.
    virtual void Join() = 0;
};

}  // namespace connectkit::platform
