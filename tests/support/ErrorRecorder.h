#pragma once
// An error listener that records what reaches it; waits for deliveries go
// through the clock port, so they cost virtual time only.
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "connectkit/ErrorStatus.h"
#include "platform/Platform.h"

namespace connectkit::test {

class ErrorRecorder : public ErrorListener {
public:
    using Notification = std::pair<ConnectErrorCode, std::string>;

    ErrorRecorder() : arrived_(platform::Current().clock().NewSemaphore(0, 100)) {}
    void OnErrorNotification(Notification notification) override {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            received_.push_back(notification);
        }
        arrived_->Release();
    }
    // Waits (virtual time) for one delivery.
    bool WaitForOne(uint32_t ms = 1000) {
        return arrived_->Wait(ms) == platform::WaitResult::Signaled;
    }
    std::vector<Notification> Received() {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }
    std::vector<ConnectErrorCode> Codes() {
        std::vector<ConnectErrorCode> codes;
        for (const auto& notification : Received()) {
            codes.push_back(notification.first);
        }
        return codes;
    }

private:
    std::unique_ptr<platform::Semaphore> arrived_;
    std::mutex mutex_;
    std::vector<Notification> received_;
};

}  // namespace connectkit::test
