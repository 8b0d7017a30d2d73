#pragma once
// An operating system thread that nobody joins, started so that it cannot
// end before it is detached. With winpthreads (the mingw-w64 threads under
// std::thread) detaching a thread that has already returned hands the
// thread's record back to the pool while the thread's own exit still uses
// it: a later thread then shares that record and may end without running
// its body, and detaching it fails.

#include <functional>

namespace connectkit::platform {

// Throws std::system_error when the system refuses the thread; `body` has
// not run then.
void StartDetachedOsThread(std::function<void()> body);

}  // namespace connectkit::platform
