#pragma once

#include "platform/ports/Clock.h"

namespace connectkit::win {

// The real clock: GetTickCount64, Sleep, Win32 semaphores and events, and
// critical sections.
class WinClock final : public platform::Clock {
public:
    uint64_t TickCount64() override;
    void Sleep(uint32_t milliseconds) override;
    uint64_t UnixTimeMs() override;
    platform::LocalTime LocalNow() override;
    std::unique_ptr<platform::Semaphore> NewSemaphore(uint32_t initialCount,
                                                      uint32_t maximumCount) override;
    std::unique_ptr<platform::Event> NewEvent(bool manualReset, bool initiallySet) override;
    std::unique_ptr<platform::Mutex> NewMutex(bool recursive, uint32_t spinCount) override;
    std::unique_ptr<platform::ConditionVariable> NewConditionVariable() override;
    std::unique_ptr<platform::Thread> StartThread(std::function<void()> body) override;
    void StartDetachedThread(std::function<void()> body) override;
};

}  // namespace connectkit::win
