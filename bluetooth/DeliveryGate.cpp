#include "bluetooth/DeliveryGate.h"

#include <mutex>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/Platform.h"

namespace connectkit::bluetooth {

DeliveryGate::DeliveryGate()
    : mutex_(platform::Current().clock().NewMutex(false, 0)),
      left_(platform::Current().clock().NewConditionVariable()) {}

bool DeliveryGate::Enter() {
    // Counted before the check: a Close that stores "closed" first then sees
    // this call inside and waits for it to leave.
    ++inside_;
    if (!open_) {
        Leave();
        return false;
    }
    return true;
}

void DeliveryGate::Leave() {
    if (--inside_ == 0 && !open_) {
        std::lock_guard<platform::Mutex> lock(*mutex_);
        left_->NotifyAll();
    }
}

bool DeliveryGate::Close(const char* owner, uint32_t timeoutMs, const char* what) {
    auto& clock = platform::Current().clock();
    const uint64_t deadline = clock.TickCount64() + timeoutMs;
    std::unique_lock<platform::Mutex> lock(*mutex_);
    open_ = false;
    while (inside_ > 0) {
        const uint64_t now = clock.TickCount64();
        if (now >= deadline || !left_->WaitFor(*mutex_, static_cast<uint32_t>(deadline - now))) {
            LogErrorFun("%s %s was still under way after %u ms", owner, what,
                        static_cast<unsigned>(timeoutMs));
            return false;
        }
    }
    return true;
}

}  // namespace connectkit::bluetooth
