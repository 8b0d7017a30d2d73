// The regrowing reads against calls that behave as a PC's may and Wine's
// never do: a list that grows while it is fetched, a wild size, a failure
// without an error code.

#include "platform/windows/machine/GrowingBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace connectkit::test {
namespace {

TEST(GrowingBuffer, AListThatGrowsWhileBeingFetchedIsAskedForAgainAFewTimesOnly) {
    struct Case {
        int growths;
        uint32_t result;
        size_t calls;
    };
    for (const Case& c :
         {Case{0, 0u, 1u}, Case{2, 0u, 3u},
          Case{100, uint32_t{ERROR_BUFFER_OVERFLOW}, size_t{win::kMaxGrowAttempts}}}) {
        std::vector<uint64_t> buffer;
        uint32_t needed = win::kFirstFillBytes - 8;
        int growths = c.growths;
        size_t calls = 0;
        const uint32_t result = win::GrowingFill<uint32_t>(
            buffer, ERROR_BUFFER_OVERFLOW, [&](void* data, uint32_t& bytes) -> uint32_t {
                ++calls;
                EXPECT_EQ(data, buffer.data());
                EXPECT_LE(bytes, buffer.size() * sizeof(uint64_t)) << "offered beyond the buffer";
                if (growths-- > 0) {
                    needed = std::max(needed, bytes) + 4096;
                    bytes = needed;
                    return ERROR_BUFFER_OVERFLOW;
                }
                EXPECT_GE(bytes, needed) << "offered less than the last answer asked for";
                return bytes >= needed ? 0u : uint32_t{ERROR_BUFFER_OVERFLOW};
            });
        EXPECT_EQ(result, c.result) << c.growths << " growths";
        EXPECT_EQ(calls, c.calls) << c.growths << " growths";
    }
}

TEST(GrowingBuffer, WildSizesAreRefusedWithoutAskingForTheMemory) {
    std::vector<uint64_t> list;
    size_t calls = 0;
    EXPECT_EQ(win::GrowingFill<uint32_t>(list, ERROR_BUFFER_OVERFLOW,
                                         [&](void*, uint32_t& bytes) -> uint32_t {
                                             ++calls;
                                             bytes = 0xFFFFFFF0u;
                                             return ERROR_BUFFER_OVERFLOW;
                                         }),
              uint32_t{ERROR_BUFFER_OVERFLOW});
    EXPECT_EQ(calls, 1u);

    std::vector<wchar_t> text(4);
    DWORD required = 0;
    EXPECT_EQ(win::ReadGrowing(text, required,
                               [](wchar_t*, DWORD, DWORD* needed) {
                                   *needed = 0x7FFFFFFF;
                                   return FALSE;
                               }),
              DWORD{ERROR_INVALID_DATA});
    EXPECT_EQ(text.size(), 4u);
}

TEST(GrowingBuffer, SetupReadsGrowToTheAnswerAndNeverTakeASilentFailureForSuccess) {
    std::vector<wchar_t> text(4);
    DWORD required = 0;
    int calls = 0;
    EXPECT_EQ(win::ReadGrowing(text, required,
                               [&](wchar_t* data, DWORD count, DWORD* needed) {
                                   ++calls;
                                   *needed = 10;
                                   if (count < 10) {
                                       return FALSE;
                                   }
                                   std::fill_n(data, 10, L'x');
                                   return TRUE;
                               }),
              DWORD{ERROR_SUCCESS});
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(text.size(), 10u);
    EXPECT_EQ(required, 10u);

    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(win::ReadGrowing(text, required, [](wchar_t*, DWORD, DWORD*) { return FALSE; }),
              DWORD{ERROR_GEN_FAILURE});
}

}  // namespace
}  // namespace connectkit::test
