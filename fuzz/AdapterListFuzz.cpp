// The Intel driver hands back an adapter list whose count word is its own
// word: any bytes must give a handle or -1, and no read outside them.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "channel/IntelAdapterList.h"
#include "connectkit/WifiDriverTypes.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    auto pick = data[0] & 1 ? ConnectKit::AdapterPick::First : ConnectKit::AdapterPick::LastInUse;
    // A heap copy of exactly the list's size, so that AddressSanitizer sees
    // the first byte beyond it.
    std::vector<uint8_t> list(data + 1, data + size);
    int handle = ConnectKit::PickIntelAdapter(list.data(), list.size(), pick);
    // A list too short for one entry names no adapter.
    if (handle != -1 && list.size() < ConnectKit::kIntelAdapterInUseOffset + 4) {
        __builtin_trap();
    }
    return 0;
}
