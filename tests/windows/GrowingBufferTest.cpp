// The regrowing reads against answers Wine never gives: a wild size, a
// failure without an error code. A list that grows while it is fetched is
// read end to end against the iphlpapi double (wlan/WinIpHelperTest).

#include "platform/windows/machine/GrowingBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace connectkit::test {
namespace {

// The first answer asks for `asked` bytes: a sane size is offered within
// the buffer, a wild one refused without a second call.
TEST(GrowingBuffer, FillsOfferOnlyTheBufferAndRefuseWildSizes) {
    for (const uint32_t asked : {win::kFirstFillBytes + 4096, 0xFFFFFFF0u}) {
        std::vector<uint64_t> buffer;
        size_t calls = 0;
        const uint32_t result = win::GrowingFill<uint32_t>(
            buffer, ERROR_BUFFER_OVERFLOW, [&](void* data, uint32_t& bytes) -> uint32_t {
                EXPECT_EQ(data, buffer.data());
                EXPECT_LE(bytes, buffer.size() * sizeof(uint64_t)) << "offered beyond the buffer";
                if (++calls > 1) {
                    return bytes >= asked ? 0u : uint32_t{ERROR_BUFFER_OVERFLOW};
                }
                bytes = asked;
                return ERROR_BUFFER_OVERFLOW;
            });
        const bool wild = asked > win::kMaxGrowBytes;
        EXPECT_EQ(result, wild ? uint32_t{ERROR_BUFFER_OVERFLOW} : 0u) << asked;
        EXPECT_EQ(calls, wild ? 1u : 2u) << asked;
    }
}

// SetupAPI's reads grow to the answer, refuse a wild one, and never take a
// failure without an error code for success.
TEST(GrowingBuffer, SetupReadsGrowToTheAnswerOnly) {
    struct Case {
        DWORD needed;
        bool fitsWhenGrown;
        DWORD result;
        size_t size;
    } cases[] = {{10, true, ERROR_SUCCESS, 10},
                 {0x7FFFFFFF, true, ERROR_INVALID_DATA, 4},
                 {0, false, ERROR_GEN_FAILURE, 4}};
    for (const auto& c : cases) {
        std::vector<wchar_t> text(4);
        DWORD required = 0;
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(win::ReadGrowing(text, required,
                                   [&](wchar_t* data, DWORD count, DWORD* needed) {
                                       *needed = c.needed;
                                       if (!c.fitsWhenGrown || count < c.needed) {
                                           return FALSE;
                                       }
                                       std::fill_n(data, count, L'x');
                                       return TRUE;
                                   }),
                  c.result)
            << c.needed;
        EXPECT_EQ(text.size(), c.size);
        if (c.result == ERROR_SUCCESS) {
            EXPECT_EQ(required, c.needed);
        }
    }
}

}  // namespace
}  // namespace connectkit::test
