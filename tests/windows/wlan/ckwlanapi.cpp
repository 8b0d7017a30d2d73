// A double of wlanapi.dll: the interfaces, networks and connection a test
// sets up, behind the system library's structures. Everything it hands out
// ends right before a page the process may not read, to the byte, so a
// caller that reads past what it was given faults at once; it counts what
// is not given back to WlanFreeMemory, the handles left open and calls with
// unknown handles.

#include <cstddef>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "wlan/CkWlanControl.h"

namespace {

constexpr size_t kPage = 4096;

struct Registration {
    DWORD sources;
    WLAN_NOTIFICATION_CALLBACK callback;
    void* context;
};

struct Double {
    std::mutex mutex;
    CkWlanSetup setup{};
    CkWlanReport report{};
    std::map<HANDLE, Registration> open;
    std::map<void*, void*> allocations;  // block to its reservation
    uintptr_t nextToken = 0x3A000;

    // `bytes` from `source` (zero without one), ending against a page that
    // faults. The structures handed out are sized in multiples of their
    // alignment, so ending exactly keeps them aligned.
    void* Allocate(const void* source, size_t bytes) {
        const size_t pages = (bytes + kPage - 1) / kPage;
        auto* base = static_cast<uint8_t*>(
            VirtualAlloc(nullptr, (pages + 1) * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        if (!base) {
            return nullptr;
        }
        DWORD old = 0;
        VirtualProtect(base + pages * kPage, kPage, PAGE_NOACCESS, &old);
        auto* block = base + pages * kPage - bytes;
        if (source) {
            std::memcpy(block, source, bytes);
        }
        allocations[block] = base;
        ++report.outstandingAllocations;
        return block;
    }

    // `bytes` of entries after a header of `header` bytes the caller fills.
    uint8_t* AllocateList(size_t header, const void* entries, size_t bytes) {
        auto* list = static_cast<uint8_t*>(Allocate(nullptr, header + bytes));
        std::memcpy(list + header, entries, bytes);
        return list;
    }
};

Double& State() {
    static Double state;
    return state;
}

// Runs `body` under the double's lock for a handle the double handed out.
template <typename Body>
DWORD WithHandle(HANDLE handle, Body body) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (state.open.count(handle) == 0) {
        ++state.report.badHandles;
        return ERROR_INVALID_HANDLE;
    }
    return body(state);
}

}  // namespace

extern "C" {

DWORD WINAPI WlanOpenHandle(DWORD, PVOID, PDWORD negotiated, PHANDLE handle) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    *negotiated = 2;
    *handle = reinterpret_cast<HANDLE>(state.nextToken += 8);
    state.open[*handle] = {};
    ++state.report.openHandles;
    return ERROR_SUCCESS;
}

DWORD WINAPI WlanCloseHandle(HANDLE handle, PVOID) {
    return WithHandle(handle, [&](Double& state) {
        state.open.erase(handle);
        --state.report.openHandles;
        return ERROR_SUCCESS;
    });
}

VOID WINAPI WlanFreeMemory(PVOID memory) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    auto found = state.allocations.find(memory);
    if (found == state.allocations.end()) {
        ++state.report.badFrees;
        return;
    }
    VirtualFree(found->second, 0, MEM_RELEASE);
    state.allocations.erase(found);
    --state.report.outstandingAllocations;
}

DWORD WINAPI WlanEnumInterfaces(HANDLE handle, PVOID, PWLAN_INTERFACE_INFO_LIST* list) {
    return WithHandle(handle, [&](Double& state) {
        const size_t count = state.setup.interfaceCount;
        *list = reinterpret_cast<PWLAN_INTERFACE_INFO_LIST>(
            state.AllocateList(offsetof(WLAN_INTERFACE_INFO_LIST, InterfaceInfo),
                               state.setup.interfaces, count * sizeof(WLAN_INTERFACE_INFO)));
        (*list)->dwNumberOfItems = static_cast<DWORD>(count);
        return ERROR_SUCCESS;
    });
}

DWORD WINAPI WlanScan(HANDLE handle, const GUID*, const PDOT11_SSID ssid,
                      const PWLAN_RAW_DATA ieData, PVOID) {
    return WithHandle(handle, [&](Double& state) {
        state.report.scanSsidLength = ssid ? ssid->uSSIDLength : 0xFFFFFFFF;
        state.report.scanIeBytes = ieData ? ieData->dwDataSize : 0;
        return ERROR_SUCCESS;
    });
}

DWORD WINAPI WlanGetNetworkBssList(HANDLE handle, const GUID*, const PDOT11_SSID, DOT11_BSS_TYPE,
                                   WINBOOL, PVOID, PWLAN_BSS_LIST* list) {
    return WithHandle(handle, [&](Double& state) {
        const size_t header = offsetof(WLAN_BSS_LIST, wlanBssEntries);
        const size_t bytes = state.setup.bssCount * sizeof(WLAN_BSS_ENTRY);
        *list =
            reinterpret_cast<PWLAN_BSS_LIST>(state.AllocateList(header, state.setup.bss, bytes));
        (*list)->dwTotalSize = static_cast<DWORD>(header + bytes);
        (*list)->dwNumberOfItems =
            state.setup.bssClaimed ? state.setup.bssClaimed : state.setup.bssCount;
        return ERROR_SUCCESS;
    });
}

DWORD WINAPI WlanQueryInterface(HANDLE handle, const GUID*, WLAN_INTF_OPCODE opcode, PVOID,
                                PDWORD size, PVOID* data, PWLAN_OPCODE_VALUE_TYPE) {
    return WithHandle(handle, [&](Double& state) -> DWORD {
        const CkWlanSetup& setup = state.setup;
        std::pair<const void*, size_t> answer;
        switch (opcode) {
            case wlan_intf_opcode_current_connection:
                answer = {&setup.connection,
                          setup.connectionBytes ? setup.connectionBytes : sizeof(setup.connection)};
                break;
            case wlan_intf_opcode_channel_number:
                answer = {&setup.channel, sizeof(setup.channel)};
                break;
            case wlan_intf_opcode_rssi:
                answer = {&setup.rssi, sizeof(setup.rssi)};
                break;
            default:
                return ERROR_NOT_SUPPORTED;
        }
        *size = static_cast<DWORD>(answer.second);
        *data = state.Allocate(answer.first, answer.second);
        return ERROR_SUCCESS;
    });
}

DWORD WINAPI WlanConnect(HANDLE handle, const GUID*, const PWLAN_CONNECTION_PARAMETERS parameters,
                         PVOID) {
    return WithHandle(handle, [&](Double& state) {
        auto& last = state.report.lastConnect;
        last = {};
        ++state.report.connects;
        last.mode = parameters->wlanConnectionMode;
        if (parameters->strProfile) {
            wcsncpy(last.profile, parameters->strProfile, std::size(last.profile) - 1);
        }
        last.ssidGiven = parameters->pDot11Ssid != nullptr;
        if (const DOT11_BSSID_LIST* list = parameters->pDesiredBssidList) {
            last.bssidListGiven = 1;
            // The first address is read only when the list says it holds one.
            std::memcpy(&last.bssids, list, offsetof(DOT11_BSSID_LIST, BSSIDs));
            if (list->uTotalNumOfEntries > 0) {
                std::memcpy(last.bssids.BSSIDs[0], list->BSSIDs[0], sizeof(DOT11_MAC_ADDRESS));
            }
        }
        return ERROR_SUCCESS;
    });
}

DWORD WINAPI WlanDisconnect(HANDLE handle, const GUID*, PVOID) {
    return WithHandle(handle, [&](Double& state) {
        ++state.report.disconnects;
        return ERROR_SUCCESS;
    });
}

DWORD WINAPI WlanRegisterNotification(HANDLE handle, DWORD sources, WINBOOL,
                                      WLAN_NOTIFICATION_CALLBACK callback, PVOID context, PVOID,
                                      PDWORD previous) {
    return WithHandle(handle, [&](Double& state) -> DWORD {
        if (state.setup.registerError) {
            return state.setup.registerError;
        }
        Registration& registration = state.open[handle];
        if (previous) {
            *previous = registration.sources;
        }
        registration = {sources, sources ? callback : nullptr, context};
        return ERROR_SUCCESS;
    });
}

int CkWlanConfigure(const CkWlanSetup* setup, CkWlanReport* report) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (setup) {
        if (setup->interfaceCount > 2 || setup->bssCount > 4) {
            return 1;
        }
        state.setup = *setup;
        CkWlanReport fresh{};
        fresh.openHandles = state.report.openHandles;
        fresh.outstandingAllocations = state.report.outstandingAllocations;
        state.report = fresh;
    }
    if (report) {
        *report = state.report;
    }
    return 0;
}

int CkWlanNotify(DWORD source, DWORD code, const void* data, DWORD size) {
    auto& state = State();
    std::vector<Registration> targets;
    WLAN_NOTIFICATION_DATA notification{};
    {
        std::lock_guard<std::mutex> lock(state.mutex);
        for (const auto& [handle, registration] : state.open) {
            if (registration.callback && (registration.sources & source)) {
                targets.push_back(registration);
            }
        }
        notification.NotificationSource = source;
        notification.NotificationCode = code;
        if (state.setup.interfaceCount > 0) {
            notification.InterfaceGuid = state.setup.interfaces[0].InterfaceGuid;
        }
        notification.dwDataSize = size;
        notification.pData = size ? state.Allocate(data, size) : nullptr;
    }
    for (const auto& target : targets) {
        std::thread([&] { target.callback(&notification, target.context); }).join();
    }
    if (notification.pData) {
        WlanFreeMemory(notification.pData);
    }
    return static_cast<int>(targets.size());
}

}  // extern "C"
