#pragma once
// The adapter list that the Intel driver library hands out is the driver's
// word, not ours: its count may claim more entries than its memory holds.
// Every read is bounded by the bytes the caller vouches for.

#include <cstddef>
#include <cstdint>

namespace ConnectKit {

enum class AdapterPick {
    // The last entry whose in-use word is set (the library found through
    // PROSet).
    LastInUse,
    // The first entry (the library found through the platform device).
    First,
};

// The picked adapter's handle, or -1 when the list names none. `bytes` is
// how much of `list` may be read. A count beyond the entries those bytes hold
// is logged and cut to them.
int PickIntelAdapter(const uint8_t* list, size_t bytes, AdapterPick pick);

}  // namespace ConnectKit
