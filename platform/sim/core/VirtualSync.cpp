#include "platform/sim/core/VirtualSync.h"

#include <log4cplus/config.hxx>

#include <stdexcept>
#include <system_error>
#include <thread>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/DetachedThread.h"
#include "platform/sim/core/FaultInjector.h"

namespace connectkit::sim {
namespace {

using detail::Core;
using detail::Waiter;
using platform::WaitResult;

// What an injected fault makes of a wait; nullopt lets the wait run.
std::optional<WaitResult> FaultedWait(Core& core, FaultInjector* faults, std::string_view call) {
    Fault fault = faults ? faults->Check(call) : Fault{};
    switch (fault.action) {
        case FaultAction::None:
            return std::nullopt;
        case FaultAction::Fail:
            return WaitResult::Failed;
        case FaultAction::TimeOut:
            VirtualSleep(core, fault.delayMs);
            return WaitResult::TimedOut;
        case FaultAction::Throw:
            ThrowInjectedFault(call);
    }
    return std::nullopt;
}

// A Win32-style wait: take the object at once if `take` can (called with the
// clock's lock held), otherwise queue and block until a release or the
// time-out.
template <class Take>
WaitResult TimedWait(Core& core, FaultInjector* faults, std::string_view call,
                     std::list<Waiter*>& queue, uint32_t timeoutMs, Take take) {
    if (auto faulted = FaultedWait(core, faults, call)) {
        return *faulted;
    }
    std::unique_lock<std::mutex> lock(core.m);
    core.EnsureKnown();
    if (take()) {
        return WaitResult::Signaled;
    }
    if (timeoutMs == 0) {
        return WaitResult::TimedOut;
    }
    Waiter waiter;
    core.Enqueue(queue, waiter);
    return core.Block(lock, waiter, core.now + timeoutMs) ? WaitResult::Signaled
                                                          : WaitResult::TimedOut;
}

class VirtualSemaphore final : public platform::Semaphore {
public:
    VirtualSemaphore(std::shared_ptr<Core> core, FaultInjector* faults, uint32_t count,
                     uint32_t maximum)
        : core_(std::move(core)), faults_(faults), count_(count), maximum_(maximum) {}

    bool Release() override {
        std::lock_guard<std::mutex> lock(core_->m);
        core_->Progress();
        if (!queue_.empty()) {
            core_->Release(*queue_.front(), false);
            return true;
        }
        if (count_ >= maximum_) {
            return false;
        }
        ++count_;
        return true;
    }

    WaitResult Wait(uint32_t timeoutMs) override {
        return TimedWait(*core_, faults_, "semaphore.wait", queue_, timeoutMs, [this] {
            if (count_ == 0) {
                return false;
            }
            --count_;
            return true;
        });
    }

private:
    std::shared_ptr<Core> core_;
    FaultInjector* faults_;
    uint32_t count_;
    uint32_t maximum_;
    std::list<Waiter*> queue_;
};

class VirtualEvent final : public platform::Event {
public:
    VirtualEvent(std::shared_ptr<Core> core, FaultInjector* faults, bool manualReset, bool set)
        : core_(std::move(core)), faults_(faults), manualReset_(manualReset), set_(set) {}

    void Set() override {
        std::lock_guard<std::mutex> lock(core_->m);
        core_->Progress();
        if (manualReset_) {
            set_ = true;
            while (!queue_.empty()) {
                core_->Release(*queue_.front(), false);
            }
        } else if (!queue_.empty()) {
            core_->Release(*queue_.front(), false);
        } else {
            set_ = true;
        }
    }

    void Reset() override {
        std::lock_guard<std::mutex> lock(core_->m);
        set_ = false;
    }

    WaitResult Wait(uint32_t timeoutMs) override {
        return TimedWait(*core_, faults_, "event.wait", queue_, timeoutMs, [this] {
            if (!set_) {
                return false;
            }
            set_ = manualReset_;
            return true;
        });
    }

private:
    std::shared_ptr<Core> core_;
    FaultInjector* faults_;
    bool manualReset_;
    bool set_;
    std::list<Waiter*> queue_;
};

class VirtualMutex final : public platform::Mutex {
public:
    VirtualMutex(std::shared_ptr<Core> core, bool recursive) : core_(std::move(core)) {
        state_.recursive = recursive;
    }

    void lock() override {
        std::unique_lock<std::mutex> lock(core_->m);
        core_->EnsureKnown();
        auto me = std::this_thread::get_id();
        if (!state_.owner) {
            state_.owner = me;
            state_.depth = 1;
            return;
        }
        if (*state_.owner == me) {
            if (!state_.recursive) {
                throw std::system_error(
                    std::make_error_code(std::errc::resource_deadlock_would_occur));
            }
            ++state_.depth;
            return;
        }
        Waiter waiter;
        waiter.reacquire = &state_;
        waiter.reacquireDepth = 1;
        core_->Enqueue(state_.queue, waiter);
        core_->Block(lock, waiter, std::nullopt);
    }

    void unlock() override {
        std::lock_guard<std::mutex> lock(core_->m);
        if (!state_.owner || *state_.owner != std::this_thread::get_id()) {
            return;
        }
        core_->Progress();
        if (--state_.depth == 0) {
            core_->PassOn(state_);
        }
    }

    detail::VirtualMutexState& State() { return state_; }

private:
    std::shared_ptr<Core> core_;
    detail::VirtualMutexState state_;
};

class VirtualConditionVariable final : public platform::ConditionVariable {
public:
    explicit VirtualConditionVariable(std::shared_ptr<Core> core) : core_(std::move(core)) {}

    void Wait(platform::Mutex& mutex) override { WaitUntil(mutex, std::nullopt); }

    bool WaitFor(platform::Mutex& mutex, uint32_t timeoutMs) override {
        return WaitUntil(mutex, timeoutMs);
    }

    void NotifyOne() override {
        std::lock_guard<std::mutex> lock(core_->m);
        core_->Progress();
        if (!queue_.empty()) {
            core_->Release(*queue_.front(), false);
        }
    }

    void NotifyAll() override {
        std::lock_guard<std::mutex> lock(core_->m);
        core_->Progress();
        while (!queue_.empty()) {
            core_->Release(*queue_.front(), false);
        }
    }

private:
    bool WaitUntil(platform::Mutex& mutex, std::optional<uint32_t> timeoutMs) {
        auto* virtualMutex = dynamic_cast<VirtualMutex*>(&mutex);
        if (!virtualMutex) {
            throw std::invalid_argument("condition variable used with a mutex of another clock");
        }
        auto& state = virtualMutex->State();
        std::unique_lock<std::mutex> lock(core_->m);
        core_->EnsureKnown();
        if (!state.owner || *state.owner != std::this_thread::get_id()) {
            throw std::system_error(std::make_error_code(std::errc::operation_not_permitted));
        }
        Waiter waiter;
        waiter.reacquire = &state;
        waiter.reacquireDepth = state.depth;
        core_->PassOn(state);
        core_->Enqueue(queue_, waiter);
        std::optional<uint64_t> deadline;
        if (timeoutMs) {
            deadline = core_->now + *timeoutMs;
        }
        return core_->Block(lock, waiter, deadline);
    }

    std::shared_ptr<Core> core_;
    std::list<Waiter*> queue_;
};

// The OS thread is detached from the start; joining means waiting, on the
// clock, for its body to return. What remains of the thread after that is its
// own exit, which needs nothing of ours (and std::thread::join after it can
// fail spuriously with winpthreads).
class VirtualThread final : public platform::Thread {
public:
    struct Shared {
        bool done = false;
        std::list<Waiter*> joiners;
    };

    VirtualThread(std::shared_ptr<Core> core, std::shared_ptr<Shared> shared)
        : core_(std::move(core)), shared_(std::move(shared)) {}
    ~VirtualThread() override { Join(); }

    void Join() override {
        std::unique_lock<std::mutex> lock(core_->m);
        if (!shared_->done) {
            core_->EnsureKnown();
            Waiter waiter;
            core_->Enqueue(shared_->joiners, waiter);
            core_->Block(lock, waiter, std::nullopt);
        }
    }

private:
    std::shared_ptr<Core> core_;
    std::shared_ptr<Shared> shared_;
};

}  // namespace

std::unique_ptr<platform::Semaphore> NewVirtualSemaphore(std::shared_ptr<Core> core,
                                                         FaultInjector* faults, uint32_t initial,
                                                         uint32_t maximum) {
    return std::make_unique<VirtualSemaphore>(std::move(core), faults, initial, maximum);
}

std::unique_ptr<platform::Event> NewVirtualEvent(std::shared_ptr<Core> core, FaultInjector* faults,
                                                 bool manualReset, bool initiallySet) {
    return std::make_unique<VirtualEvent>(std::move(core), faults, manualReset, initiallySet);
}

std::unique_ptr<platform::Mutex> NewVirtualMutex(std::shared_ptr<Core> core, bool recursive) {
    return std::make_unique<VirtualMutex>(std::move(core), recursive);
}

std::unique_ptr<platform::ConditionVariable> NewVirtualConditionVariable(
    std::shared_ptr<Core> core) {
    return std::make_unique<VirtualConditionVariable>(std::move(core));
}

std::unique_ptr<platform::Thread> StartVirtualThread(std::shared_ptr<Core> core,
                                                     std::function<void()> body, bool detached) {
    auto shared = std::make_shared<VirtualThread::Shared>();
    {
        // Counted as running from now on, so time cannot move before the new
        // thread has had its turn.
        std::lock_guard<std::mutex> lock(core->m);
        core->CountStartingThread();
    }
    auto run = [core, shared, body = std::move(body)]() mutable {
        {
            std::lock_guard<std::mutex> lock(core->m);
            core->Adopt();
        }
        RunCatching("thread body", body);
        // What the body captured (a device, a publisher) goes while the clock
        // still counts the thread, and so do the logger's per-thread buffers:
        // once time has moved on, a thread that is done owns nothing, and
        // none is still tearing down behind a test's back or the process's.
        body = nullptr;
        log4cplus::threadCleanup();
        std::lock_guard<std::mutex> lock(core->m);
        shared->done = true;
        while (!shared->joiners.empty()) {
            core->Release(*shared->joiners.front(), false);
        }
        core->Leave();
    };
    try {
        platform::StartDetachedOsThread(std::move(run));
    } catch (...) {
        std::lock_guard<std::mutex> lock(core->m);
        core->ThreadExited();
        throw;
    }
    if (detached) {
        return nullptr;
    }
    return std::make_unique<VirtualThread>(std::move(core), std::move(shared));
}

void RunCatching(const char* what, const std::function<void()>& work) {
    try {
        work();
    } catch (const std::exception& e) {
        LogErrorFun("[VirtualClock] %s threw: %s", what, e.what());
    } catch (...) {
        LogErrorFun("[VirtualClock] %s threw an unknown exception", what);
    }
}

void VirtualSleep(Core& core, uint32_t ms) {
    std::unique_lock<std::mutex> lock(core.m);
    core.EnsureKnown();
    if (ms == 0) {
        core.Progress();
        return;
    }
    Waiter waiter;
    core.Block(lock, waiter, core.now + ms);
}

}  // namespace connectkit::sim
