#pragma once
// The lock that the radio and hotspot objects hold across their platform
// waits. It is recursive, so an observer called under it may call back into
// the object that called it on the same thread.
#include <memory>

namespace connectkit::platform {
class Mutex;
}

namespace ConnectKit {

class CBaseLock {
public:
    virtual void Lock() = 0;
    virtual void Unlock() = 0;
    virtual ~CBaseLock() = default;
};

// A recursive critical section created with spin count 4000. It comes from
// the clock port, so a thread waiting for it is waiting as far as the
// simulated PC's virtual time is concerned.
class CCriticalSection final : public CBaseLock {
public:
    CCriticalSection();
    ~CCriticalSection() override;
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;
    void Lock() override;
    void Unlock() override;

private:
    std::unique_ptr<connectkit::platform::Mutex> mutex_;
};

// Holds a CBaseLock for a scope.
class CAutoLock {
public:
    explicit CAutoLock(CBaseLock& lock) : lock_(lock) { lock_.Lock(); }
    ~CAutoLock() { lock_.Unlock(); }
    CAutoLock(const CAutoLock&) = delete;
    CAutoLock& operator=(const CAutoLock&) = delete;

private:
    CBaseLock& lock_;
};

}  // namespace ConnectKit
