#pragma once
// Types every Windows Runtime port shares.

#include <cstdint>

namespace connectkit::platform {

// Windows.Foundation.AsyncStatus
enum class AsyncStatus : int32_t { Started = 0, Completed = 1, Canceled = 2, Error = 3 };

// EventRegistrationToken. 0 is never handed out.
using EventToken = int64_t;

}  // namespace connectkit::platform
