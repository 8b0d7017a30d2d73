#include "channel/IntelAdapterList.h"

#include <cstring>

#include "SDK/Util/LogTool/LogTool.h"
#include "connectkit/WifiDriverTypes.h"

namespace ConnectKit {
namespace {

bool ReadWord(const uint8_t* list, size_t bytes, size_t offset, uint32_t& word) {
    if (offset > bytes || bytes - offset < sizeof(word)) {
        return false;
    }
    std::memcpy(&word, list + offset, sizeof(word));
    return true;
}

// Entries that lie in the list up to their in-use word, the last field either
// pick reads; 25,124 bytes hold 20.
size_t EntriesHeld(size_t bytes) {
    constexpr size_t kEntryReadEnd = kIntelAdapterInUseOffset + sizeof(uint32_t);
    return bytes < kEntryReadEnd ? 0 : (bytes - kEntryReadEnd) / kIntelAdapterStride + 1;
}

int32_t HandleOf(const uint8_t* list, size_t entry) {
    int32_t handle = -1;
    std::memcpy(&handle, list + kIntelAdapterStride * entry + kIntelAdapterHandleOffset,
                sizeof(handle));
    return handle;
}

}  // namespace

int PickIntelAdapter(const uint8_t* list, size_t bytes, AdapterPick pick) {
    uint32_t count = 0;
    if (!list || !ReadWord(list, bytes, 0, count)) {
        LogErrorFun("[WifiIntelAPI][error]adapter list of %lu bytes holds no count",
                    static_cast<unsigned long>(bytes));
        return -1;
    }
    size_t held = EntriesHeld(bytes);
    if (count > held) {
        LogErrorFun(
            "[WifiIntelAPI][error]adapter list of %lu bytes claims %lu adapters; reading %lu",
            static_cast<unsigned long>(bytes), static_cast<unsigned long>(count),
            static_cast<unsigned long>(held));
        count = static_cast<uint32_t>(held);
    }
    if (pick == AdapterPick::First) {
        return count > 0 ? HandleOf(list, 0) : -1;
    }
    int handle = -1;
    for (size_t i = 0; i < count; ++i) {
        uint32_t inUse = 0;
        std::memcpy(&inUse, list + kIntelAdapterStride * i + kIntelAdapterInUseOffset,
                    sizeof(inUse));
        if (inUse != 0) {
            handle = HandleOf(list, i);
        }
    }
    return handle;
}

}  // namespace ConnectKit
