#include "platform/Platform.h"

#include <atomic>
#include <cstdlib>
#include <mutex>

#include "SDK/Util/LogTool/LogTool.h"

namespace connectkit::platform {
namespace {

std::mutex& SelectionMutex() {
    static std::mutex mutex;
    return mutex;
}

// Kept alive for the whole process: detached platform threads and
// function-level singletons may use the ports until the very end.
std::shared_ptr<Backend>& Chosen() {
    static auto* chosen = new std::shared_ptr<Backend>();
    return *chosen;
}

std::atomic<Backend*> g_current{nullptr};
std::atomic<BackendFactory> g_defaultFactory{nullptr};

}  // namespace

Backend& Current() {
    if (Backend* backend = g_current.load(std::memory_order_acquire)) {
        return *backend;
    }
    std::lock_guard<std::mutex> lock(SelectionMutex());
    if (!Chosen()) {
        BackendFactory factory = g_defaultFactory.load(std::memory_order_acquire);
        if (!factory) {
            LogErrorFun("%s: no backend installed and no default named by the program",
                        "connectkit::platform::Current");
            std::abort();
        }
        Chosen() = factory();
        g_current.store(Chosen().get(), std::memory_order_release);
    }
    return *Chosen();
}

bool Install(std::shared_ptr<Backend> backend) {
    if (!backend) {
        LogErrorFun("%s refused: no backend given", "connectkit::platform::Install");
        return false;
    }
    std::lock_guard<std::mutex> lock(SelectionMutex());
    if (Chosen()) {
        LogErrorFun("%s refused: backend %ls is already in use", "connectkit::platform::Install",
                    Chosen()->Name().c_str());
        return false;
    }
    Chosen() = std::move(backend);
    g_current.store(Chosen().get(), std::memory_order_release);
    return true;
}

void SetDefaultBackend(BackendFactory factory) {
    g_defaultFactory.store(factory, std::memory_order_release);
}

}  // namespace connectkit::platform
