// Thousands of create/destroy cycles with phones coming and going and faults
// injected now and then must leave nothing behind: no runtime objects, no
// event registrations, no threads, no pending platform events, and a heap
// that stops growing.
#include <gtest/gtest.h>

#include "connectkit/SoftAPManager.h"
#include "support/HotspotWorld.h"
#include "support/Soak.h"

namespace connectkit::test {
namespace {

constexpr int kCycles = 10000 / kSoakDivisor;
// The world is applied afresh this often: the simulated PC keeps every phone
// and fault rule it was given, and its heap must not count against the
// library's.
constexpr int kWorldInterval = kCycles / 20;
constexpr int kWarmUpCycles = 2 * kWorldInterval;

class HotspotSoakTest : public HotspotTest {
protected:
    void Cycle(int cycle) {
        if (cycle % 5 == 0) {
            pc().wifiDirect().AddPhone(
                Phone(L"phone-" + std::to_wstring(cycle), "192.168.137.40", 100, 300, cycle % 2));
        }
        if (cycle % 13 == 0) {
            pc().faults().Add(sim::FaultRule{"wifidirect.start", sim::FaultAction::Throw, 0, 1});
        }
        if (cycle % 17 == 0) {
            pc().faults().Add(sim::FaultRule{"adapters.list", sim::FaultAction::Fail, 1, 1});
        }
        if (cycle % 29 == 0) {
            pc().faults().Add(sim::FaultRule{"wifidirect.fromId", sim::FaultAction::Fail, 0, 1});
        }
        SoftAPInfo info;
        SystemCreateSoftAP(info);
        if (cycle % 3 == 0) {
            pc().clock().Sleep(500);
        }
        SystemDestroySoftAP(info);
    }
};

TEST_F(HotspotSoakTest, ManyCyclesLeaveNothingBehind) {
    Settle();
    auto before = pc().TakeCensus();
    size_t heapAfterWarmUp = 0;
    for (int cycle = 1; cycle <= kCycles; ++cycle) {
        Cycle(cycle);
        if (cycle % kWorldInterval == 0) {
            Use(World());
            if (cycle == kWarmUpCycles) {
                heapAfterWarmUp = HeapInUse();
            }
        }
    }
    pc().clock().Sleep(10000);
    auto after = ExpectNothingLeftBehind(before, heapAfterWarmUp);
    EXPECT_EQ(after.wifiDirectObjects, 0u);
    EXPECT_EQ(after.wifiDirectRegistrations, 0u);
    EXPECT_LE(after.openLibraries, before.openLibraries + 1);
}

}  // namespace
}  // namespace connectkit::test
