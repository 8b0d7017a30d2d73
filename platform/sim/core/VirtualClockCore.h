#pragma once
// The scheduler behind the simulated PC's virtual time.
//
// Virtual time stands still while any thread it knows about is running, and
// jumps to the next deadline or timer once every known thread is blocked in
// one of its waits. Work therefore costs no virtual time, and a 60-second
// time-out costs only the wall time of the threads' real work.
//
// A thread is known once it calls into the clock or was started through it
// (including the event dispatcher threads), and stays known until it ends. A
// known thread that blocks anywhere else (a std::mutex held across a long
// operation, std::thread::join) still counts as running and holds time back;
// the library therefore waits only through the clock port. As a last resort,
// a waiter that sees no progress for `stallLimit` of wall time while timers or
// deadlines are pending moves time on and logs why, so no wait is unbounded.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace connectkit::sim::detail {

class Core;
struct VirtualMutexState;

struct Waiter {
    std::condition_variable cv;
    std::thread::id thread = std::this_thread::get_id();
    bool woken = false;
    bool timedOut = false;
    std::list<Waiter*>* queue = nullptr;
    std::list<Waiter*>::iterator queuePos;
    bool hasDeadline = false;
    std::multimap<uint64_t, Waiter*>::iterator deadlinePos;
    // Mutex to hold again before the waiter may run on (lock and
    // condition-variable waits), with the recursion depth to restore.
    VirtualMutexState* reacquire = nullptr;
    unsigned reacquireDepth = 0;
};

struct VirtualMutexState {
    bool recursive = false;
    std::optional<std::thread::id> owner;
    unsigned depth = 0;
    std::list<Waiter*> queue;
};

class Core : public std::enable_shared_from_this<Core> {
public:
    Core(uint64_t startTick, std::chrono::milliseconds stallLimit)
        : now(startTick), stallLimit_(stallLimit) {}

    std::mutex m;
    uint64_t now;

    // All members below need `m` held.
    void EnsureKnown();
    // A thread being started counts as running before its first instruction;
    // it calls Adopt() once it runs. ThreadExited() undoes either.
    void CountStartingThread() {
        ++busy_;
        ++known_;
    }
    void Adopt();
    void ThreadExited();
    // A thread started through the clock leaves it as its body's last act,
    // rather than from a thread_local destructor: on mingw-w64 those run
    // after winpthreads has torn down the thread, where locking a mutex fails.
    void Leave();

    void Enqueue(std::list<Waiter*>& queue, Waiter& waiter);
    // Blocks the calling thread until another thread releases the waiter or
    // the deadline passes. Returns false on time-out.
    bool Block(std::unique_lock<std::mutex>& lock, Waiter& waiter,
               std::optional<uint64_t> deadline);
    // Ends a wait: detaches the waiter and lets it run, taking its mutex back
    // first when it needs one.
    void Release(Waiter& waiter, bool timedOut);
    // Hands a free mutex to its next waiter.
    void PassOn(VirtualMutexState& mutex);

    void Schedule(uint64_t at, std::function<void()> work);
    // Dispatcher side: next work item, or empty once stopping.
    std::function<void()> NextWork(std::unique_lock<std::mutex>& lock);
    void Stop();
    void Progress() { ++progress_; }

    size_t KnownThreads() const { return known_; }
    size_t PendingTimers() const { return timers_.size() + ready_.size(); }

private:
    void Resume(Waiter& waiter);
    void MaybeAdvance();
    void AdvanceToNext();
    bool IsKnownHere() const;

    std::chrono::milliseconds stallLimit_;
    size_t busy_ = 0;
    size_t known_ = 0;
    uint64_t progress_ = 0;
    uint64_t timerSeq_ = 0;
    bool stopping_ = false;
    std::multimap<uint64_t, Waiter*> deadlines_;
    std::map<std::pair<uint64_t, uint64_t>, std::function<void()>> timers_;
    std::list<std::function<void()>> ready_;
    std::list<Waiter*> idleDispatchers_;
};

}  // namespace connectkit::sim::detail
