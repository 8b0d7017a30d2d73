#pragma once
// IP Helper's list calls fill a caller's buffer and, when it is too small,
// answer an overflow code with the size they need. Adapters come and go
// between that answer and the next call, so the list may have grown again by
// then: a few regrowths are allowed, never an endless loop.

#include <cstdint>
#include <vector>

namespace connectkit::win {

inline constexpr uint32_t kFirstFillBytes = 15 * 1024;  // Microsoft's advice for a first guess
inline constexpr int kMaxFillAttempts = 4;

// `call(data, bytes)` fills at most `bytes` bytes and answers `overflow` with
// `bytes` set to what it needs. Answers the last call's result; the buffer
// holds what that call wrote.
template <typename Size, typename Call>
Size GrowingFill(std::vector<uint64_t>& buffer, Size overflow, Call call) {
    Size bytes = kFirstFillBytes;
    Size result = overflow;
    for (int attempt = 0; attempt < kMaxFillAttempts && result == overflow; ++attempt) {
        // uint64_t elements keep the records aligned.
        buffer.assign(bytes / sizeof(uint64_t) + 1, 0);
        bytes = static_cast<Size>(buffer.size() * sizeof(uint64_t));
        result = call(buffer.data(), bytes);
    }
    return result;
}

}  // namespace connectkit::win
