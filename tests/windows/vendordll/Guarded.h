#pragma once
// The doubles' exports are C functions called from another module: a
// failure inside (memory, a lock) is answered as the driver's own failure,
// never thrown across.

namespace connectkit::vendordll {

inline constexpr int kDriverFailure = 1;

template <class Call>
int Guarded(Call call) noexcept {
    try {
        return call();
    } catch (...) {
        return kDriverFailure;
    }
}

}  // namespace connectkit::vendordll

// An export of a double: the real library's `name` with its `parameters`,
// answered by `call` into the simulated library.
#define CK_GUARDED_EXPORT(name, parameters, call)                    \
    int name parameters noexcept {                                   \
        return connectkit::vendordll::Guarded([&] { return call; }); \
    }
