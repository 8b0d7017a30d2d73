#include "platform/windows/core/WinClock.h"

#include <windows.h>

#include <thread>
#include <utility>

#include "platform/DetachedThread.h"
#include "platform/windows/core/UniqueHandle.h"

namespace connectkit::win {
namespace {

using platform::WaitResult;

WaitResult Wait(HANDLE handle, uint32_t timeoutMs) {
    switch (WaitForSingleObject(handle, timeoutMs)) {
        case WAIT_OBJECT_0:
            return WaitResult::Signaled;
        case WAIT_TIMEOUT:
            return WaitResult::TimedOut;
        default:
            return WaitResult::Failed;
    }
}

class WinSemaphore final : public platform::Semaphore {
public:
    explicit WinSemaphore(KernelHandle handle) : handle_(std::move(handle)) {}
    bool Release() override { return ReleaseSemaphore(handle_.Get(), 1, nullptr) != FALSE; }
    WaitResult Wait(uint32_t timeoutMs) override { return win::Wait(handle_.Get(), timeoutMs); }

private:
    KernelHandle handle_;
};

class WinEvent final : public platform::Event {
public:
    explicit WinEvent(KernelHandle handle) : handle_(std::move(handle)) {}
    void Set() override { SetEvent(handle_.Get()); }
    void Reset() override { ResetEvent(handle_.Get()); }
    WaitResult Wait(uint32_t timeoutMs) override { return win::Wait(handle_.Get(), timeoutMs); }

private:
    KernelHandle handle_;
};

// A critical section is recursive by nature; a non-recursive request gets
// one too, which only forgives what would otherwise be a deadlock.
class WinCriticalSection final : public platform::Mutex {
public:
    explicit WinCriticalSection(uint32_t spinCount) {
        InitializeCriticalSectionAndSpinCount(&section_, spinCount);
    }
    ~WinCriticalSection() override { DeleteCriticalSection(&section_); }
    void lock() override { EnterCriticalSection(&section_); }
    void unlock() override { LeaveCriticalSection(&section_); }
    CRITICAL_SECTION& Section() { return section_; }

private:
    CRITICAL_SECTION section_;
};

class WinConditionVariable final : public platform::ConditionVariable {
public:
    WinConditionVariable() { InitializeConditionVariable(&variable_); }

    void Wait(platform::Mutex& mutex) override {
        SleepConditionVariableCS(&variable_, &Section(mutex), INFINITE);
    }

    bool WaitFor(platform::Mutex& mutex, uint32_t timeoutMs) override {
        return SleepConditionVariableCS(&variable_, &Section(mutex), timeoutMs) != FALSE;
    }

    void NotifyOne() override { WakeConditionVariable(&variable_); }
    void NotifyAll() override { WakeAllConditionVariable(&variable_); }

private:
    static CRITICAL_SECTION& Section(platform::Mutex& mutex) {
        return static_cast<WinCriticalSection&>(mutex).Section();
    }

    CONDITION_VARIABLE variable_;
};

class WinThread final : public platform::Thread {
public:
    explicit WinThread(std::function<void()> body) : thread_(std::move(body)) {}
    ~WinThread() override { Join(); }
    void Join() override {
        if (thread_.joinable()) {
            thread_.join();
        }
    }

private:
    std::thread thread_;
};

}  // namespace

uint64_t WinClock::TickCount64() {
    return GetTickCount64();
}

void WinClock::Sleep(uint32_t milliseconds) {
    ::Sleep(milliseconds);
}

uint64_t WinClock::UnixTimeMs() {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    ULARGE_INTEGER ticks;
    ticks.LowPart = now.dwLowDateTime;
    ticks.HighPart = now.dwHighDateTime;
    constexpr uint64_t kUnixEpochIn100ns = 116444736000000000ULL;
    return (ticks.QuadPart - kUnixEpochIn100ns) / 10000;
}

platform::LocalTime WinClock::LocalNow() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return platform::LocalTime{now.wYear,   now.wMonth,  now.wDay,         now.wHour,
                               now.wMinute, now.wSecond, now.wMilliseconds};
}

std::unique_ptr<platform::Semaphore> WinClock::NewSemaphore(uint32_t initialCount,
                                                            uint32_t maximumCount) {
    KernelHandle handle(CreateSemaphoreW(nullptr, static_cast<LONG>(initialCount),
                                         static_cast<LONG>(maximumCount), nullptr));
    return handle ? std::make_unique<WinSemaphore>(std::move(handle)) : nullptr;
}

std::unique_ptr<platform::Event> WinClock::NewEvent(bool manualReset, bool initiallySet) {
    KernelHandle handle(CreateEventW(nullptr, manualReset, initiallySet, nullptr));
    return handle ? std::make_unique<WinEvent>(std::move(handle)) : nullptr;
}

std::unique_ptr<platform::Mutex> WinClock::NewMutex(bool, uint32_t spinCount) {
    return std::make_unique<WinCriticalSection>(spinCount);
}

std::unique_ptr<platform::ConditionVariable> WinClock::NewConditionVariable() {
    return std::make_unique<WinConditionVariable>();
}

std::unique_ptr<platform::Thread> WinClock::StartThread(std::function<void()> body) {
    return std::make_unique<WinThread>(std::move(body));
}

void WinClock::StartDetachedThread(std::function<void()> body) {
    platform::StartDetachedOsThread(std::move(body));
}

}  // namespace connectkit::win
