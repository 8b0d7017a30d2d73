#include "platform/sim/core/VirtualClock.h"

#include <chrono>
#include <cstdio>

#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/VirtualClockCore.h"
#include "platform/sim/core/VirtualSync.h"

namespace connectkit::sim {
namespace {

using namespace std::chrono;

int64_t ToUnixMs(const platform::LocalTime& t) {
    auto day = sys_days(year{t.year} / month{static_cast<unsigned>(t.month)} /
                        std::chrono::day{static_cast<unsigned>(t.day)});
    auto ms = day.time_since_epoch() + hours{t.hour} + minutes{t.minute} + seconds{t.second} +
              milliseconds{t.milliseconds};
    return duration_cast<milliseconds>(ms).count();
}

platform::LocalTime FromUnixMs(int64_t unixMs) {
    sys_time<milliseconds> point{milliseconds{unixMs}};
    auto day = floor<days>(point);
    year_month_day date{day};
    hh_mm_ss<milliseconds> clock{point - day};
    return platform::LocalTime{static_cast<int>(date.year()),
                               static_cast<int>(static_cast<unsigned>(date.month())),
                               static_cast<int>(static_cast<unsigned>(date.day())),
                               static_cast<int>(clock.hours().count()),
                               static_cast<int>(clock.minutes().count()),
                               static_cast<int>(clock.seconds().count()),
                               static_cast<int>(clock.subseconds().count())};
}

}  // namespace

bool ParseLocalTime(const std::string& text, platform::LocalTime& t) {
    platform::LocalTime parsed;
    char tail = 0;
    int fields = std::sscanf(text.c_str(), "%d-%d-%dT%d:%d:%d.%d%c", &parsed.year, &parsed.month,
                             &parsed.day, &parsed.hour, &parsed.minute, &parsed.second,
                             &parsed.milliseconds, &tail);
    if (fields != 6 && fields != 7) {
        return false;
    }
    year_month_day date{year{parsed.year}, month{static_cast<unsigned>(parsed.month)},
                        day{static_cast<unsigned>(parsed.day)}};
    if (!date.ok() || parsed.hour < 0 || parsed.hour > 23 || parsed.minute < 0 ||
        parsed.minute > 59 || parsed.second < 0 || parsed.second > 59 || parsed.milliseconds < 0 ||
        parsed.milliseconds > 999) {
        return false;
    }
    t = parsed;
    return true;
}

VirtualClock::VirtualClock(FaultInjector* faults) : VirtualClock(Options{}, faults) {}

VirtualClock::VirtualClock(Options options, FaultInjector* faults)
    : core_(std::make_shared<detail::Core>(options.startTick, options.stallLimit)),
      faults_(faults),
      wallAnchorUnixMs_(
          duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count()),
      wallAnchorTick_(options.startTick) {
    for (unsigned i = 0; i < options.dispatcherThreads; ++i) {
        dispatchers_.push_back(StartVirtualThread(
            core_,
            [core = core_.get()] {
                std::unique_lock<std::mutex> lock(core->m);
                while (auto work = core->NextWork(lock)) {
                    lock.unlock();
                    RunCatching("event delivery", work);
                    // Its captures go before the clock's lock is taken again:
                    // their destructors may call the clock.
                    work = nullptr;
                    lock.lock();
                    core->Progress();
                }
            },
            false));
    }
}

VirtualClock::~VirtualClock() {
    {
        std::lock_guard<std::mutex> lock(core_->m);
        core_->Stop();
    }
    dispatchers_.clear();
}

uint64_t VirtualClock::TickCount64() {
    std::lock_guard<std::mutex> lock(core_->m);
    core_->EnsureKnown();
    return core_->now;
}

void VirtualClock::Sleep(uint32_t milliseconds) {
    VirtualSleep(*core_, milliseconds);
}

uint64_t VirtualClock::UnixTimeMs() {
    std::lock_guard<std::mutex> lock(core_->m);
    core_->EnsureKnown();
    return static_cast<uint64_t>(wallAnchorUnixMs_ +
                                 static_cast<int64_t>(core_->now - wallAnchorTick_));
}

platform::LocalTime VirtualClock::LocalNow() {
    std::lock_guard<std::mutex> lock(core_->m);
    core_->EnsureKnown();
    int64_t unixMs = wallAnchorUnixMs_ + static_cast<int64_t>(core_->now - wallAnchorTick_);
    return FromUnixMs(unixMs + int64_t{utcOffsetMinutes_} * 60000);
}

void VirtualClock::SetLocalTime(const platform::LocalTime& local, int utcOffsetMinutes) {
    std::lock_guard<std::mutex> lock(core_->m);
    core_->EnsureKnown();
    utcOffsetMinutes_ = utcOffsetMinutes;
    wallAnchorUnixMs_ = ToUnixMs(local) - int64_t{utcOffsetMinutes} * 60000;
    wallAnchorTick_ = core_->now;
}

std::unique_ptr<platform::Semaphore> VirtualClock::NewSemaphore(uint32_t initialCount,
                                                                uint32_t maximumCount) {
    Fault fault = faults_ ? faults_->Check("clock.newSemaphore") : Fault{};
    if (fault.action == FaultAction::Throw) {
        ThrowInjectedFault("clock.newSemaphore");
    }
    if (fault || maximumCount == 0 || initialCount > maximumCount) {
        return nullptr;
    }
    return NewVirtualSemaphore(core_, faults_, initialCount, maximumCount);
}

std::unique_ptr<platform::Event> VirtualClock::NewEvent(bool manualReset, bool initiallySet) {
    Fault fault = faults_ ? faults_->Check("clock.newEvent") : Fault{};
    if (fault.action == FaultAction::Throw) {
        ThrowInjectedFault("clock.newEvent");
    }
    if (fault) {
        return nullptr;
    }
    return NewVirtualEvent(core_, faults_, manualReset, initiallySet);
}

std::unique_ptr<platform::Mutex> VirtualClock::NewMutex(bool recursive, uint32_t) {
    return NewVirtualMutex(core_, recursive);
}

std::unique_ptr<platform::ConditionVariable> VirtualClock::NewConditionVariable() {
    return NewVirtualConditionVariable(core_);
}

std::unique_ptr<platform::Thread> VirtualClock::StartThread(std::function<void()> body) {
    return StartVirtualThread(core_, std::move(body), false);
}

void VirtualClock::StartDetachedThread(std::function<void()> body) {
    StartVirtualThread(core_, std::move(body), true);
}

void VirtualClock::Post(uint32_t delayMs, std::function<void()> work) {
    std::lock_guard<std::mutex> lock(core_->m);
    core_->EnsureKnown();
    core_->Schedule(core_->now + delayMs, std::move(work));
}

void VirtualClock::Apply(const Scenario& scenario) {
    if (scenario.localTime) {
        SetLocalTime(*scenario.localTime, scenario.utcOffsetMinutes);
    }
}

void VirtualClock::Count(SimCensus& census) const {
    census.knownThreads += KnownThreads();
    census.pendingEvents += PendingEvents();
}

size_t VirtualClock::KnownThreads() const {
    std::lock_guard<std::mutex> lock(core_->m);
    return core_->KnownThreads();
}

size_t VirtualClock::PendingEvents() const {
    std::lock_guard<std::mutex> lock(core_->m);
    return core_->PendingTimers();
}

}  // namespace connectkit::sim
