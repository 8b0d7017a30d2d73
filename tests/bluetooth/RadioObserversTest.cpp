// Unregistering from an observer list while a delivery is under way on
// another thread: unregistration returns only once the delivery to that
// observer has ended (the caller may then destroy it), an observer still
// waiting its turn in that delivery is not called any more, a delivery that
// outlasts the bound is given up with a log line, and an observer that
// unregisters itself from inside its delivery does not wait for itself.
#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "bluetooth/RadioObservers.h"
#include "support/LogCapture.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

constexpr uint32_t kDeliveryMs = 1000;

struct Probe {
    std::atomic<int> calls{0};
};

struct Case {
    const char* name;
    bool removeQueued;  // the second observer, not the one being delivered to
    bool fromInside;
    uint32_t deliveryMs;
    uint64_t removalMs;  // virtual time the unregistration takes
    int targetCalls;
    bool logged;
};

class RadioObserversTest : public SimTest, public ::testing::WithParamInterface<Case> {};

TEST_P(RadioObserversTest, NoDeliveryOutlivesUnregistration) {
    const Case& c = GetParam();
    auto& clock = pc().clock();
    bluetooth::ObserverList<Probe> list;
    Probe blocking;
    Probe queued;
    list.Add(&blocking);
    list.Add(&queued);
    Probe& target = c.removeQueued ? queued : blocking;
    auto entered = clock.NewEvent(true, false);
    std::atomic<uint64_t> removalMs{~0ull};
    auto remove = [&] {
        const uint64_t start = clock.TickCount64();
        list.Remove(&target, "RadioObserversTest");
        removalMs = clock.TickCount64() - start;
    };
    LogCapture log;
    auto deliverer = clock.StartThread([&] {
        list.Deliver("RadioObserversTest", [&](Probe& probe) {
            ++probe.calls;
            if (&probe != &blocking) {
                return;
            }
            entered->Set();
            if (c.fromInside) {
                remove();
            }
            clock.Sleep(c.deliveryMs);
        });
    });
    ASSERT_EQ(entered->Wait(kDeliveryMs), platform::WaitResult::Signaled);
    if (!c.fromInside) {
        remove();
    }
    deliverer->Join();
    EXPECT_EQ(removalMs.load(), c.removalMs);
    EXPECT_EQ(target.calls.load(), c.targetCalls);
    EXPECT_EQ(blocking.calls + queued.calls, c.removeQueued ? 1 : 2);
    EXPECT_EQ(log.Contains(L"a delivery to an observer was still under way"), c.logged);
}

INSTANTIATE_TEST_SUITE_P(
    Table, RadioObserversTest,
    ::testing::Values(Case{"WaitsForTheDelivery", false, false, kDeliveryMs, kDeliveryMs, 1, false},
                      Case{"QueuedIsNotCalled", true, false, kDeliveryMs, 0, 0, false},
                      Case{"FromInsideDoesNotWait", false, true, kDeliveryMs, 0, 1, false},
                      Case{"OutlastingIsGivenUp", false, false, bluetooth::kDeliveryWaitMs + 1000,
                           bluetooth::kDeliveryWaitMs, 1, true}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace connectkit::test
