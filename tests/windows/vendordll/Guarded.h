#pragma once
// The doubles' exports are C functions called from another module: a
// failure inside (memory, a lock) is answered as the driver's own failure,
// never thrown across.

namespace connectkit::vendordll {

inline constexpr int kDriverFailure = 1;

template <class Call, class... Args>
int Guarded(Call call, Args... args) noexcept {
    try {
        return call(args...);
    } catch (...) {
        return kDriverFailure;
    }
}

}  // namespace connectkit::vendordll
