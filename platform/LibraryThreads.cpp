#include "platform/LibraryThreads.h"

#include <atomic>
#include <exception>
#include <thread>
#include <utility>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/ModuleLifetime.h"
#include "platform/Platform.h"

namespace connectkit::platform {
namespace {

void RunGuarded(const std::function<void()>& body) {
    try {
        body();
    } catch (const std::exception& error) {
        LogErrorFun("%s a library thread ended with an exception: %.200s",
                    "connectkit::platform::StartLibraryThread", error.what());
    } catch (...) {
        LogErrorFun("%s a library thread ended with an unknown exception",
                    "connectkit::platform::StartLibraryThread");
    }
}

class LibraryThread final : public Thread {
public:
    LibraryThread(std::shared_ptr<std::atomic<std::thread::id>> id, std::unique_ptr<Thread> thread)
        : id_(std::move(id)), thread_(std::move(thread)) {}

    void Join() override {
        if (id_->load() != std::this_thread::get_id()) {
            thread_->Join();
        }
    }

private:
    std::shared_ptr<std::atomic<std::thread::id>> id_;
    std::unique_ptr<Thread> thread_;
};

}  // namespace

std::unique_ptr<Thread> StartLibraryThread(std::function<void()> body) {
    KeepModuleLoaded();
    // Set before the body runs, so the body always sees its own id; a joiner
    // on another thread that still sees the empty id is not this thread.
    auto id = std::make_shared<std::atomic<std::thread::id>>();
    auto thread = Current().clock().StartThread([id, body = std::move(body)] {
        id->store(std::this_thread::get_id());
        RunGuarded(body);
    });
    return std::make_unique<LibraryThread>(std::move(id), std::move(thread));
}

void StartDetachedLibraryThread(std::function<void()> body) {
    KeepModuleLoaded();
    Current().clock().StartDetachedThread([body = std::move(body)] { RunGuarded(body); });
}

}  // namespace connectkit::platform
