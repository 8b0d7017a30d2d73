#pragma once
// The simulated PC's clock port: virtual time (see VirtualClockCore.h), the
// waitable objects and threads built on it, and the event dispatcher threads
// that deliver simulated platform events the way the OS delivers its own, on
// threads of their own.

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "platform/ports/Clock.h"
#include "platform/sim/core/SimModel.h"

namespace connectkit::sim {

namespace detail {
class Core;
}
class FaultInjector;

class VirtualClock final : public platform::Clock, public SimModel {
public:
    struct Options {
        // Tick count at start: a PC that has been up for an hour.
        uint64_t startTick = 3600000;
        unsigned dispatcherThreads = 2;
        std::chrono::milliseconds stallLimit{3000};
    };

    explicit VirtualClock(FaultInjector* faults = nullptr);
    VirtualClock(Options options, FaultInjector* faults);
    ~VirtualClock() override;
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;

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

    // Runs `work` on a dispatcher thread once `delayMs` of virtual time passed.
    void Post(uint32_t delayMs, std::function<void()> work);
    // Sets the wall clock: from now on, local time reads `local`, which is
    // `utcOffsetMinutes` ahead of UTC.
    void SetLocalTime(const platform::LocalTime& local, int utcOffsetMinutes);

    // Sets the wall clock to the scenario's "clock", if it has one; the tick
    // count goes on, as it does on a real PC.
    void Apply(const Scenario& scenario) override;
    void Count(SimCensus& census) const override;
    size_t KnownThreads() const;
    size_t PendingEvents() const;

private:
    std::shared_ptr<detail::Core> core_;
    FaultInjector* faults_;
    std::vector<std::unique_ptr<platform::Thread>> dispatchers_;
    // UTC milliseconds at tick `wallAnchorTick_`.
    int64_t wallAnchorUnixMs_;
    uint64_t wallAnchorTick_;
    int utcOffsetMinutes_ = 0;
};

// Parses "2024-03-05T09:05:03.007" (milliseconds optional).
bool ParseLocalTime(const std::string& text, platform::LocalTime& time);

}  // namespace connectkit::sim
