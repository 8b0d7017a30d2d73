#include "platform/sim/core/VirtualClockCore.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "SDK/Util/LogTool/LogTool.h"

namespace connectkit::sim::detail {
namespace {

// The clocks this thread is known to. Threads started through a clock leave
// it explicitly (Core::Leave); other threads leave when they end. Null once
// the list is gone: static destructors still run on the main thread after
// its thread_local objects died, and such late calls go untracked.
struct KnownClocks {
    std::vector<std::shared_ptr<Core>> cores;
};

#if defined(_WIN32)
// mingw-w64 can run a thread_local's destructor after its storage was freed,
// so on Windows the list lives on the heap and is never destroyed: a thread
// that joined a clock without being started by it stays counted. Only the
// tests' main thread does that there.
thread_local KnownClocks* t_knownList = nullptr;
KnownClocks* Known() {
    if (!t_knownList) {
        t_knownList = new KnownClocks();
    }
    return t_knownList;
}
#else
thread_local bool t_knownListGone = false;
struct ExitingKnownClocks : KnownClocks {
    ~ExitingKnownClocks() {
        t_knownListGone = true;
        for (auto& core : cores) {
            std::lock_guard<std::mutex> lock(core->m);
            core->ThreadExited();
        }
    }
};
thread_local ExitingKnownClocks t_knownList;
KnownClocks* Known() {
    return t_knownListGone ? nullptr : &t_knownList;
}
#endif

}  // namespace

bool Core::IsKnownHere() const {
    KnownClocks* known = Known();
    return !known ||
           std::any_of(known->cores.begin(), known->cores.end(),
                       [this](const std::shared_ptr<Core>& core) { return core.get() == this; });
}

void Core::EnsureKnown() {
    if (!IsKnownHere()) {
        Known()->cores.push_back(shared_from_this());
        ++busy_;
        ++known_;
    }
}

void Core::Adopt() {
    if (!IsKnownHere()) {
        Known()->cores.push_back(shared_from_this());
    }
}

void Core::Leave() {
    KnownClocks* known = Known();
    if (!known) {
        return;
    }
    auto& cores = known->cores;
    for (auto it = cores.begin(); it != cores.end(); ++it) {
        if (it->get() == this) {
            cores.erase(it);
            ThreadExited();
            return;
        }
    }
}

void Core::ThreadExited() {
    --busy_;
    --known_;
    ++progress_;
    MaybeAdvance();
}

void Core::Enqueue(std::list<Waiter*>& queue, Waiter& waiter) {
    waiter.queue = &queue;
    waiter.queuePos = queue.insert(queue.end(), &waiter);
}

bool Core::Block(std::unique_lock<std::mutex>& lock, Waiter& waiter,
                 std::optional<uint64_t> deadline) {
    if (deadline) {
        waiter.hasDeadline = true;
        waiter.deadlinePos = deadlines_.emplace(*deadline, &waiter);
    }
    --busy_;
    ++progress_;
    MaybeAdvance();

    uint64_t seen = progress_;
    auto quietSince = std::chrono::steady_clock::now();
    while (!waiter.woken) {
        if (deadlines_.empty() && timers_.empty()) {
            waiter.cv.wait(lock);
            continue;
        }
        waiter.cv.wait_for(lock, std::chrono::milliseconds(20));
        if (waiter.woken) {
            break;
        }
        auto wallNow = std::chrono::steady_clock::now();
        if (progress_ != seen) {
            seen = progress_;
            quietSince = wallNow;
        } else if (wallNow - quietSince >= stallLimit_) {
            LogWarnFun(
                "[VirtualClock] no progress for %lld ms of wall time with %zu thread(s) "
                "running outside the clock; moving virtual time on from %llu",
                static_cast<long long>(stallLimit_.count()), busy_,
                static_cast<unsigned long long>(now));
            AdvanceToNext();
            seen = progress_;
            quietSince = wallNow;
        }
    }
    return !waiter.timedOut;
}

void Core::Release(Waiter& waiter, bool timedOut) {
    if (waiter.queue) {
        waiter.queue->erase(waiter.queuePos);
        waiter.queue = nullptr;
    }
    if (waiter.hasDeadline) {
        deadlines_.erase(waiter.deadlinePos);
        waiter.hasDeadline = false;
    }
    waiter.timedOut = timedOut;
    VirtualMutexState* mutex = waiter.reacquire;
    if (mutex && mutex->owner) {
        Enqueue(mutex->queue, waiter);
        return;
    }
    if (mutex) {
        mutex->owner = waiter.thread;
        mutex->depth = waiter.reacquireDepth;
    }
    Resume(waiter);
}

void Core::PassOn(VirtualMutexState& mutex) {
    mutex.owner.reset();
    mutex.depth = 0;
    if (!mutex.queue.empty()) {
        Waiter& next = *mutex.queue.front();
        Release(next, next.timedOut);
    }
}

void Core::Resume(Waiter& waiter) {
    waiter.woken = true;
    ++busy_;
    ++progress_;
    waiter.cv.notify_one();
}

void Core::Schedule(uint64_t at, std::function<void()> work) {
    ++progress_;
    if (at <= now) {
        ready_.push_back(std::move(work));
        if (!idleDispatchers_.empty()) {
            Release(*idleDispatchers_.front(), false);
        }
        return;
    }
    timers_.emplace(std::make_pair(at, timerSeq_++), std::move(work));
    MaybeAdvance();
}

std::function<void()> Core::NextWork(std::unique_lock<std::mutex>& lock) {
    while (ready_.empty() && !stopping_) {
        Waiter idle;
        Enqueue(idleDispatchers_, idle);
        Block(lock, idle, std::nullopt);
    }
    if (ready_.empty()) {
        return {};
    }
    auto work = std::move(ready_.front());
    ready_.pop_front();
    return work;
}

void Core::Stop() {
    stopping_ = true;
    while (!idleDispatchers_.empty()) {
        Release(*idleDispatchers_.front(), false);
    }
}

void Core::MaybeAdvance() {
    while (busy_ == 0 && ready_.empty() && !(deadlines_.empty() && timers_.empty())) {
        AdvanceToNext();
    }
}

void Core::AdvanceToNext() {
    uint64_t next = std::numeric_limits<uint64_t>::max();
    if (!timers_.empty()) {
        next = timers_.begin()->first.first;
    }
    if (!deadlines_.empty()) {
        next = std::min(next, deadlines_.begin()->first);
    }
    if (next == std::numeric_limits<uint64_t>::max()) {
        return;
    }
    now = std::max(now, next);
    ++progress_;
    while (!timers_.empty() && timers_.begin()->first.first <= now) {
        ready_.push_back(std::move(timers_.begin()->second));
        timers_.erase(timers_.begin());
        if (!idleDispatchers_.empty()) {
            Release(*idleDispatchers_.front(), false);
        }
    }
    while (!deadlines_.empty() && deadlines_.begin()->first <= now) {
        Release(*deadlines_.begin()->second, true);
    }
}

}  // namespace connectkit::sim::detail
