#pragma once
// Reads into a buffer that grows to the size the system answers it needs.
// The thing read may grow again between that answer and the next call (an
// adapter arriving, a property rewritten), so a few regrowths are allowed,
// never an endless loop; and a size the system answers is believed only up
// to kMaxGrowBytes, so a wild answer fails with a code instead of asking
// for gigabytes.

#include <windows.h>

#include <cstdint>
#include <vector>

#include "SDK/Util/LogTool/LogTool.h"

namespace connectkit::win {

inline constexpr uint32_t kFirstFillBytes = 15 * 1024;  // Microsoft's advice for a first guess
inline constexpr int kMaxGrowAttempts = 4;
// Far beyond any adapter list, device property or device text.
inline constexpr uint64_t kMaxGrowBytes = 16 * 1024 * 1024;

// IP Helper's shape: `call(data, bytes)` fills at most `bytes` bytes and
// answers `overflow` with `bytes` set to what it needs. Answers the last
// call's result (`overflow` also for a size beyond the bound); the buffer
// holds what that call wrote.
template <typename Size, typename Call>
Size GrowingFill(std::vector<uint64_t>& buffer, Size overflow, Call call) {
    Size bytes = kFirstFillBytes;
    Size result = overflow;
    for (int attempt = 0; attempt < kMaxGrowAttempts && result == overflow; ++attempt) {
        if (bytes > kMaxGrowBytes) {
            LogErrorFun("[GrowingBuffer] %llu bytes asked for, refused",
                        static_cast<unsigned long long>(bytes));
            return overflow;
        }
        // uint64_t elements keep the records aligned.
        buffer.assign(bytes / sizeof(uint64_t) + 1, 0);
        bytes = static_cast<Size>(buffer.size() * sizeof(uint64_t));
        result = call(buffer.data(), bytes);
    }
    return result;
}

// SetupAPI's shape: `read(data, count, &required)` answers TRUE when the
// value fit in `count` elements, otherwise FALSE with `required` set when
// it wants more room. On success `required` is what the call says it wrote.
// A failure without an error code (Wine's class name for a buffer too
// small) does not read as a success.
template <typename T, typename Read>
DWORD ReadGrowing(std::vector<T>& buffer, DWORD& required, const Read& read) {
    for (int attempt = 0; attempt < kMaxGrowAttempts; ++attempt) {
        required = 0;
        if (read(buffer.data(), static_cast<DWORD>(buffer.size()), &required)) {
            return ERROR_SUCCESS;
        }
        if (required <= buffer.size()) {
            const DWORD error = GetLastError();
            return error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
        }
        if (uint64_t{required} * sizeof(T) > kMaxGrowBytes) {
            LogErrorFun("[GrowingBuffer] %lu elements asked for, refused",
                        static_cast<unsigned long>(required));
            return ERROR_INVALID_DATA;
        }
        buffer.assign(required, T{});
    }
    return ERROR_INSUFFICIENT_BUFFER;
}

}  // namespace connectkit::win
