#pragma once
// Steps of the legacy AP that only its own code takes. As members of a
// nested class they reach its state without being exported with it.
#include <cstdint>

#include "connectkit/LegacyAP.h"

namespace ConnectKit {

struct LegacyAP::Steps {
    static void NotifyAdvertiserStatus(LegacyAP& ap, LegacyAPAdvertisemenStatus status);
    // False on a time-out or once Release closed the semaphore.
    static bool WaitForStatus(LegacyAP& ap, uint32_t timeoutMs);
    static void ReleaseStatusSemaphore(LegacyAP& ap);
    static void DropDevice(LegacyAP& ap, connectkit::platform::WiFiDirectDevice& device);
    // The failure path of Start, under the lock.
    static void FailStart(LegacyAP& ap, uint64_t now);
};

}  // namespace ConnectKit
