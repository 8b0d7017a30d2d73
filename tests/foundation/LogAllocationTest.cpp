// The log functions format without touching the heap. This binary counts
// every allocation: operator new always, and malloc too where no sanitizer
// owns the allocator.

#include <gtest/gtest.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "SDK/Util/LogTool/LogTool.h"
#include "SDK/Util/LogTool/Logger.h"

namespace {
std::atomic<bool> g_counting{false};
std::atomic<size_t> g_allocations{0};

void Count() {
    if (g_counting.load(std::memory_order_relaxed)) {
        g_allocations.fetch_add(1, std::memory_order_relaxed);
    }
}
}  // namespace

// Replaced as a matched pair, on the C allocator.
void* operator new(std::size_t size) {
    Count();
    if (void* p = std::malloc(size ? size : 1)) {
        return p;
    }
    throw std::bad_alloc();
}
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}
#pragma GCC diagnostic pop

#if !defined(CONNECTKIT_SANITIZED)
extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* malloc(size_t size) {
    Count();
    return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
    Count();
    return __libc_calloc(count, size);
}
void* realloc(void* p, size_t size) {
    Count();
    return __libc_realloc(p, size);
}
}
#endif

namespace {

class Counted {
public:
    Counted() {
        g_allocations = 0;
        g_counting = true;
    }
    size_t Stop() {
        g_counting = false;
        return g_allocations.load();
    }
};

TEST(LogAllocation, FormattingAndTheLevelTestAllocateNothing) {
    log4cplus::Logger logger = GetLogger();
    logger.setLogLevel(log4cplus::OFF_LOG_LEVEL);
    // Warm up: first use creates the logger and per-thread state.
    LogWarnFun("warm %d", 1);
    LogWarnFun(L"warm %d", 1);

    const wchar_t* wideName = L"ConnectKit::LegacyAP::Start";
    const std::string tooLong(600, 'x');
    Counted counted;
    for (int i = 0; i < 100; ++i) {
        LogWarnFun("%s 6 Starting soft AP success,totalCount=%llu,succCount=%llu,failCount=%llu",
                   "ConnectKit::LegacyAP::Start", 10ull, 9ull, 1ull);
        LogErrorFun("%s %d %u %lu %x %.3f %c", "x", -5, 7u, 8ul, 255u, 2.5, 'z');
        LogWarnFun(L"%ls start Status:%d", wideName, i);
        LogErrorFun(L"%ls %s", wideName, "narrow");
        LogWarnFun("%s", tooLong.c_str());
    }
    EXPECT_EQ(counted.Stop(), 0u);
    logger.setLogLevel(log4cplus::NOT_SET_LOG_LEVEL);
    // The counter sees an allocation, so the check above can fail.
    Counted control;
    std::string grown(1000, 'x');
    EXPECT_GE(control.Stop(), 1u) << grown.size();
}

}  // namespace

int main(int argc, char** argv) {
    log4cplus::Initializer initializer;
    log4cplus::Logger::getRoot().addAppender(
        log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
