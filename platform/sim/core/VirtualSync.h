#pragma once
// Waitable objects and threads on virtual time.

#include <functional>
#include <memory>

#include "platform/ports/Sync.h"
#include "platform/sim/core/VirtualClockCore.h"

namespace connectkit::sim {

class FaultInjector;

std::unique_ptr<platform::Semaphore> NewVirtualSemaphore(std::shared_ptr<detail::Core> core,
                                                         FaultInjector* faults, uint32_t initial,
                                                         uint32_t maximum);
std::unique_ptr<platform::Event> NewVirtualEvent(std::shared_ptr<detail::Core> core,
                                                 FaultInjector* faults, bool manualReset,
                                                 bool initiallySet);
std::unique_ptr<platform::Mutex> NewVirtualMutex(std::shared_ptr<detail::Core> core,
                                                 bool recursive);
std::unique_ptr<platform::ConditionVariable> NewVirtualConditionVariable(
    std::shared_ptr<detail::Core> core);
// `detached` threads are not joined; the returned handle is then null.
std::unique_ptr<platform::Thread> StartVirtualThread(std::shared_ptr<detail::Core> core,
                                                     std::function<void()> body, bool detached);
// Runs `work`; what it throws is logged, not passed on, so a simulated event
// or thread that fails cannot take the dispatcher or the process down.
void RunCatching(const char* what, const std::function<void()>& work);
// Sleeps `ms` of virtual time on the calling thread.
void VirtualSleep(detail::Core& core, uint32_t ms);

}  // namespace connectkit::sim
