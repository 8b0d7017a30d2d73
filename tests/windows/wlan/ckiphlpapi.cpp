// A double of iphlpapi.dll whose adapter list changes from one call to the
// next as the test scripted it, which Wine's own never does: the list may
// grow between the size query and the fill, shrink, or never fit. Like the
// system library it writes only into the caller's buffer, never past the
// size it was offered, and answers the size it needs otherwise; it hands out
// no memory of its own, so unlike the wlanapi double it needs no guard page.

#include <ws2tcpip.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cwchar>
#include <mutex>

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

// One GetAdaptersAddresses adapter with everything its pointers reach.
struct AddressesRecord {
    IP_ADAPTER_ADDRESSES adapter;
    IP_ADAPTER_UNICAST_ADDRESS unicast;
    sockaddr_in address;
    char name[40];
    wchar_t description[24];
    wchar_t friendlyName[16];
};

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

}  // namespace

extern "C" {

ULONG WINAPI GetAdaptersAddresses(ULONG, ULONG, PVOID, PIP_ADAPTER_ADDRESSES list, PULONG bytes) {
    return Answer(bytes, 0, sizeof(AddressesRecord), ERROR_BUFFER_OVERFLOW, [&](uint32_t count) {
        auto* records = reinterpret_cast<AddressesRecord*>(list);
        std::fill_n(reinterpret_cast<char*>(records), count * sizeof(AddressesRecord), 0);
        for (uint32_t i = 0; i < count; ++i) {
            AddressesRecord& r = records[i];
            const DWORD index = i + 1;
            r.adapter.Length = sizeof(r.adapter);
            r.adapter.IfIndex = index;
            r.adapter.Next = i + 1 < count ? &records[i + 1].adapter : nullptr;
            std::snprintf(r.name, sizeof(r.name), "{CK-ADAPTER-%lu}", index);
            std::swprintf(r.description, std::size(r.description), L"ck adapter %lu", index);
            std::swprintf(r.friendlyName, std::size(r.friendlyName), L"Ethernet %lu", index);
            r.adapter.AdapterName = r.name;
            r.adapter.Description = r.description;
            r.adapter.FriendlyName = r.friendlyName;
            r.adapter.IfType = IF_TYPE_ETHERNET_CSMACD;
            r.adapter.OperStatus = IfOperStatusUp;
            r.address.sin_family = AF_INET;
            r.address.sin_addr.S_un.S_un_b = {10, 0, 0, static_cast<UCHAR>(index)};
            r.unicast.Address = {reinterpret_cast<sockaddr*>(&r.address), sizeof(r.address)};
            r.adapter.FirstUnicastAddress = &r.unicast;
        }
    });
}

ULONG WINAPI GetAdaptersInfo(PIP_ADAPTER_INFO list, PULONG bytes) {
    return Answer(bytes, 0, sizeof(IP_ADAPTER_INFO), ERROR_BUFFER_OVERFLOW, [&](uint32_t count) {
        std::fill_n(reinterpret_cast<char*>(list), count * sizeof(IP_ADAPTER_INFO), 0);
        for (uint32_t i = 0; i < count; ++i) {
            IP_ADAPTER_INFO& adapter = list[i];
            adapter.Index = i + 1;
            adapter.Next = i + 1 < count ? &list[i + 1] : nullptr;
            std::snprintf(adapter.AdapterName, sizeof(adapter.AdapterName), "{CK-ADAPTER-%lu}",
                          adapter.Index);
            std::snprintf(adapter.Description, sizeof(adapter.Description), "ck adapter %lu",
                          adapter.Index);
            std::snprintf(adapter.IpAddressList.IpAddress.String,
                          sizeof(adapter.IpAddressList.IpAddress.String), "10.0.0.%lu",
                          adapter.Index);
            adapter.Type = MIB_IF_TYPE_ETHERNET;
        }
    });
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
