#pragma once
// Every thread the library starts for itself starts here (the error status
// worker, the legacy AP's notification threads, and those of any subsystem
// to come). It keeps the module loaded first (see ModuleLifetime.h), then
// starts the thread through the clock port, so the simulated PC still counts
// it as running from its first instruction.
//
// A body's own calls into a host's objects catch what those throw; whatever
// else escapes a body is logged here and ends only that thread, never the
// host's process.

#include <functional>
#include <memory>

#include "platform/ports/Sync.h"

namespace connectkit::platform {

// Join called on the thread itself returns at once: the thread ends as soon
// as its body returns, which is all a join would wait for. A body may thus
// reach code that joins its own thread (a listener that stops its worker).
std::unique_ptr<Thread> StartLibraryThread(std::function<void()> body);

void StartDetachedLibraryThread(std::function<void()> body);

}  // namespace connectkit::platform
