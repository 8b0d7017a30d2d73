#pragma once
// What the soak tests share. Under the sanitizers every step runs about ten
// times slower and their own leak and race checks stand in for the length,
// so the runs are a tenth as long there; their allocator keeps its own books,
// so the heap figure means nothing there either.

#include <gtest/gtest.h>
#include <malloc.h>

#include <cstddef>

#include "support/SimWorld.h"

namespace connectkit::test {

#ifdef CONNECTKIT_SANITIZED
inline constexpr int kSoakDivisor = 10;
#else
inline constexpr int kSoakDivisor = 1;
#endif

inline size_t HeapInUse() {
    return mallinfo2().uordblks;
}

// Once warmed up, a run may leave the heap only a little larger, and no
// pending platform event or thread the PC did not have `before`.
inline sim::SimulatedPc::Census ExpectNothingLeftBehind(const sim::SimulatedPc::Census& before,
                                                        size_t heapAfterWarmUp) {
#ifndef CONNECTKIT_SANITIZED
    size_t atEnd = HeapInUse();
    EXPECT_LT(atEnd, heapAfterWarmUp + 256 * 1024)
        << "heap grew from " << heapAfterWarmUp << " to " << atEnd;
#else
    (void)heapAfterWarmUp;
#endif
    auto after = Pc().TakeCensus();
    EXPECT_EQ(after.pendingEvents, 0u);
    EXPECT_EQ(after.knownThreads, before.knownThreads);
    return after;
}

}  // namespace connectkit::test
