// Adapter lists of the simulated drivers, for the simulated PC: its loader
// gives them back through FreeSimDriverBuffer, so a list the library's user
// forgets to free shows up in the census.

#include <map>
#include <mutex>

#include "platform/sim/wificard/SimWifiCard.h"
#include "platform/sim/wificard/SimWifiDriver.h"

namespace connectkit::sim {
namespace {

struct Buffers {
    std::mutex mutex;
    std::map<const void*, size_t> live;
};

Buffers& Live() {
    static auto* buffers = new Buffers();
    return *buffers;
}

}  // namespace

void* AllocateDriverBuffer(size_t bytes) {
    auto& buffers = Live();
    std::lock_guard<std::mutex> lock(buffers.mutex);
    auto* buffer = new uint8_t[bytes]();
    buffers.live.emplace(buffer, bytes);
    return buffer;
}

size_t OutstandingDriverBuffers() {
    auto& buffers = Live();
    std::lock_guard<std::mutex> lock(buffers.mutex);
    return buffers.live.size();
}

bool FreeSimDriverBuffer(void* buffer) {
    auto& buffers = Live();
    std::lock_guard<std::mutex> lock(buffers.mutex);
    auto found = buffers.live.find(buffer);
    if (found == buffers.live.end()) {
        return false;
    }
    delete[] static_cast<uint8_t*>(buffer);
    buffers.live.erase(found);
    return true;
}

size_t SimDriverBufferSize(const void* buffer) {
    auto& buffers = Live();
    std::lock_guard<std::mutex> lock(buffers.mutex);
    auto found = buffers.live.find(buffer);
    return found == buffers.live.end() ? 0 : found->second;
}

}  // namespace connectkit::sim
