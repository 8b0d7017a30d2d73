// A double of iphlpapi.dll whose adapter list changes from one call to the
// next as the test scripted it, which Wine's own never does: the list may
// grow between the size query and the fill, shrink, or never fit. Like the
// system library it writes only into the caller's buffer, never past the
// size it was offered, and answers the size it needs otherwise; it hands out
// no memory of its own, so unlike the wlanapi double it needs no guard page.

#include <ws2tcpip.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <mutex>
#include <type_traits>

#include "wlan/CkIpHelperControl.h"

namespace {

struct Double {
    std::mutex mutex;
    CkIpHelperSetup setup{1, {}, 0};
    CkIpHelperReport report{};
};

Double& State() {
    static Double state;
    return state;
}

// A list call's answer for the scripted count: `write(count)` fills the
// caller's buffer when `*bytes` holds the list, else `*bytes` is what it needs.
template <typename Write>
ULONG Answer(ULONG* bytes, size_t header, size_t perAdapter, ULONG overflow, Write write) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    const CkIpHelperSetup& setup = state.setup;
    const uint32_t count = setup.counts[std::min(state.report.listCalls++, setup.steps - 1)];
    if (count == 0) {
        return ERROR_NO_DATA;
    }
    const size_t needed = setup.neverFits ? *bytes + 4096 : header + count * perAdapter;
    if (*bytes < needed) {
        *bytes = static_cast<ULONG>(needed);
        return overflow;
    }
    write(count);
    return ERROR_SUCCESS;
}

// Each list holds adapters 1 to the count, linked in order, and nothing the
// tests do not read: their indexes.
template <typename Adapter>
void Link(Adapter* list, uint32_t count) {
    std::fill_n(reinterpret_cast<char*>(list), count * sizeof(Adapter), 0);
    for (uint32_t i = 0; i < count; ++i) {
        list[i].Next = i + 1 < count ? &list[i + 1] : nullptr;
        if constexpr (std::is_same_v<Adapter, IP_ADAPTER_INFO>) {
            list[i].Index = i + 1;
        } else {
            list[i].Length = sizeof(Adapter);
            list[i].IfIndex = i + 1;
        }
    }
}

}  // namespace

extern "C" {

ULONG WINAPI GetAdaptersAddresses(ULONG, ULONG, PVOID, PIP_ADAPTER_ADDRESSES list, PULONG bytes) {
    return Answer(bytes, 0, sizeof(*list), ERROR_BUFFER_OVERFLOW,
                  [&](uint32_t count) { Link(list, count); });
}

ULONG WINAPI GetAdaptersInfo(PIP_ADAPTER_INFO list, PULONG bytes) {
    return Answer(bytes, 0, sizeof(*list), ERROR_BUFFER_OVERFLOW,
                  [&](uint32_t count) { Link(list, count); });
}

DWORD WINAPI GetInterfaceInfo(PIP_INTERFACE_INFO table, PULONG bytes) {
    return Answer(bytes, offsetof(IP_INTERFACE_INFO, Adapter), sizeof(IP_ADAPTER_INDEX_MAP),
                  ERROR_INSUFFICIENT_BUFFER, [&](uint32_t count) {
                      table->NumAdapters = static_cast<LONG>(count);
                      for (uint32_t i = 0; i < count; ++i) {
                          table->Adapter[i].Index = i + 1;
                          std::swprintf(table->Adapter[i].Name, MAX_ADAPTER_NAME,
                                        L"\\DEVICE\\TCPIP_{CK-ADAPTER-%lu}", i + 1);
                      }
                  });
}

// Leases are tested against Wine's own library; these answer as it does.
DWORD WINAPI IpReleaseAddress(PIP_ADAPTER_INDEX_MAP) {
    return ERROR_NOT_SUPPORTED;
}

DWORD WINAPI IpRenewAddress(PIP_ADAPTER_INDEX_MAP) {
    return ERROR_NOT_SUPPORTED;
}

int CkIpHelperConfigure(const CkIpHelperSetup* setup, CkIpHelperReport* report) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (setup) {
        if (setup->steps == 0 || setup->steps > std::size(setup->counts) ||
            std::any_of(setup->counts, setup->counts + setup->steps,
                        [](uint32_t count) { return count > 128; })) {
            return 1;
        }
        state.setup = *setup;
        state.report = {};
    }
    if (report) {
        *report = state.report;
    }
    return 0;
}

}  // extern "C"
