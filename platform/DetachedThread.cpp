#include "platform/DetachedThread.h"

#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace connectkit::platform {

void StartDetachedOsThread(std::function<void()> body) {
    auto detached = std::make_shared<std::mutex>();
    std::unique_lock<std::mutex> starting(*detached);
    std::thread([detached, body = std::move(body)] {
        { std::lock_guard<std::mutex> wait(*detached); }
        body();
    }).detach();
}

}  // namespace connectkit::platform
