// Adapter lists of the DLL doubles come from LocalAlloc, because the
// Windows loader hands vendor buffers back with LocalFree.

#include <windows.h>

#include <algorithm>
#include <mutex>
#include <vector>

#include "platform/sim/wificard/SimWifiDriver.h"

namespace connectkit::sim {
namespace {

struct Handed {
    std::mutex mutex;
    std::vector<void*> lists;
};

Handed& Lists() {
    static auto* handed = new Handed();
    return *handed;
}

}  // namespace

void* AllocateDriverBuffer(size_t bytes) {
    void* buffer = LocalAlloc(LMEM_FIXED | LMEM_ZEROINIT, bytes);
    if (buffer) {
        auto& handed = Lists();
        std::lock_guard<std::mutex> lock(handed.mutex);
        handed.lists.push_back(buffer);
    }
    return buffer;
}

// The caller frees with LocalFree, which we do not see; a list is still
// out for as long as the process heap vouches for it.
size_t OutstandingDriverBuffers() {
    auto& handed = Lists();
    std::lock_guard<std::mutex> lock(handed.mutex);
    HANDLE heap = GetProcessHeap();
    auto freed = std::remove_if(handed.lists.begin(), handed.lists.end(),
                                [heap](void* list) { return !HeapValidate(heap, 0, list); });
    handed.lists.erase(freed, handed.lists.end());
    return handed.lists.size();
}

}  // namespace connectkit::sim
