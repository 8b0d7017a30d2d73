#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <vector>

#include "platform/sim/core/VirtualClock.h"

namespace connectkit::test {
namespace {

using platform::WaitResult;
using sim::VirtualClock;

class VirtualClockTest : public ::testing::Test {
protected:
    VirtualClock clock;
    uint64_t start = clock.TickCount64();
    uint64_t Elapsed() { return clock.TickCount64() - start; }
};

TEST_F(VirtualClockTest, WaitsTimeOutAtTheirDeadlineAndObjectsKeepTheirRules) {
    EXPECT_EQ(clock.NewSemaphore(2, 1), nullptr);
    auto semaphore = clock.NewSemaphore(0, 1);
    ASSERT_TRUE(semaphore);
    EXPECT_EQ(semaphore->Wait(0), WaitResult::TimedOut);
    EXPECT_EQ(semaphore->Wait(5000), WaitResult::TimedOut);
    EXPECT_EQ(Elapsed(), 5000u);
    EXPECT_TRUE(semaphore->Release());
    EXPECT_FALSE(semaphore->Release());
    EXPECT_EQ(semaphore->Wait(0), WaitResult::Signaled);
    EXPECT_EQ(semaphore->Wait(0), WaitResult::TimedOut);

    auto manual = clock.NewEvent(true, false);
    auto automatic = clock.NewEvent(false, true);
    EXPECT_EQ(automatic->Wait(0), WaitResult::Signaled);
    EXPECT_EQ(automatic->Wait(0), WaitResult::TimedOut);
    clock.Post(10, [&] { manual->Set(); });
    EXPECT_EQ(manual->Wait(100), WaitResult::Signaled);
    EXPECT_EQ(manual->Wait(100), WaitResult::Signaled);
    manual->Reset();
    EXPECT_EQ(manual->Wait(100), WaitResult::TimedOut);
    EXPECT_EQ(Elapsed(), 5110u);
}

// Time must not move while a thread started through the clock still has
// work to do, even if every other thread is waiting; and what a thread body
// or a posted event captured (a device, a publisher) is released while the
// clock still counts its thread, and may call the clock.
TEST_F(VirtualClockTest, TimeWaitsForThreadsThatStillWorkOrOwnSomething) {
    auto ready = clock.NewSemaphore(0, 1);
    auto working = clock.StartThread([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        ready->Release();
    });
    EXPECT_EQ(ready->Wait(10), WaitResult::Signaled);
    working->Join();
    EXPECT_EQ(Elapsed(), 0u);

    struct Capture {
        VirtualClock& clock;
        platform::Event& released;
        std::atomic<size_t>& known;
        ~Capture() {
            known = clock.KnownThreads();
            released.Set();
        }
    };
    auto released = clock.NewEvent(false, false);
    std::atomic<size_t> known{0};
    size_t before = clock.KnownThreads();
    auto thread =
        clock.StartThread([capture = std::make_shared<Capture>(clock, *released, known)] {});
    thread->Join();
    EXPECT_EQ(released->Wait(0), WaitResult::Signaled);
    EXPECT_EQ(known, before + 1);
    clock.Post(10, [capture = std::make_shared<Capture>(clock, *released, known)] {});
    EXPECT_EQ(released->Wait(1000), WaitResult::Signaled);
    EXPECT_EQ(known, before);
    EXPECT_EQ(Elapsed(), 10u);
}

TEST_F(VirtualClockTest, RecursiveMutexAndConditionVariableHandOff) {
    auto mutex = clock.NewMutex(true, 4000);
    auto changed = clock.NewConditionVariable();
    int stage = 0;
    auto thread = clock.StartThread([&] {
        std::lock_guard<platform::Mutex> outer(*mutex);
        std::lock_guard<platform::Mutex> inner(*mutex);
        clock.Sleep(50);
        stage = 1;
        changed->NotifyAll();
    });
    {
        std::unique_lock<platform::Mutex> lock(*mutex);
        while (stage == 0) {
            ASSERT_TRUE(changed->WaitFor(*mutex, 1000));
        }
        EXPECT_FALSE(changed->WaitFor(*mutex, 200));
    }
    thread->Join();
    EXPECT_EQ(Elapsed(), 250u);
}

TEST_F(VirtualClockTest, ContendedLockWaitsDoNotHoldTimeBack) {
    auto mutex = clock.NewMutex(false, 0);
    auto thread = clock.StartThread([&] {
        std::lock_guard<platform::Mutex> lock(*mutex);
        clock.Sleep(1000);
    });
    clock.Sleep(1);
    {
        std::lock_guard<platform::Mutex> lock(*mutex);
        EXPECT_EQ(Elapsed(), 1000u);
    }
    thread->Join();
}

// A thread blocked outside the clock would hold time back forever; the stall
// limit bounds that wait.
TEST(VirtualClockStall, AThreadStuckOutsideTheClockCannotHangWaiters) {
    VirtualClock::Options options;
    options.stallLimit = std::chrono::milliseconds(100);
    VirtualClock clock(options, nullptr);
    std::atomic<bool> release{false};
    auto stuck = clock.StartThread([&] {
        while (!release) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    auto semaphore = clock.NewSemaphore(0, 1);
    uint64_t start = clock.TickCount64();
    EXPECT_EQ(semaphore->Wait(500), WaitResult::TimedOut);
    EXPECT_EQ(clock.TickCount64() - start, 500u);
    release = true;
    stuck->Join();
}

}  // namespace
}  // namespace connectkit::test
