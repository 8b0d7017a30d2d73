// A double of wlanapi.dll: the interfaces, networks and connection a test
// sets up, behind the system library's structures. Everything it hands out
// ends right before a page the process may not read, so a caller that reads
// past what it was given faults at once; it counts what is not given back
// to WlanFreeMemory, the handles left open and calls with unknown handles.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>
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

    bool Known(HANDLE handle) {
        if (open.count(handle) == 0) {
            ++report.badHandles;
            return false;
        }
        return true;
    }

    // `bytes` from `source`, the rest of the block zero, the block's end
    // against a page that faults.
    void* Allocate(const void* source, size_t bytes) {
        const size_t rounded = std::max<size_t>((bytes + 7) & ~size_t{7}, 8);
        const size_t pages = (rounded + kPage - 1) / kPage;
        auto* base = static_cast<uint8_t*>(
            VirtualAlloc(nullptr, (pages + 1) * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        if (!base) {
            return nullptr;
        }
        DWORD old = 0;
        VirtualProtect(base + pages * kPage, kPage, PAGE_NOACCESS, &old);
        auto* block = base + pages * kPage - rounded;
        if (source) {
            std::memcpy(block, source, bytes);
        }
        allocations[block] = base;
        ++report.outstandingAllocations;
        return block;
    }
};

Double& State() {
    static Double state;
    return state;
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
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (!state.Known(handle)) {
        return ERROR_INVALID_HANDLE;
    }
    state.open.erase(handle);
    --state.report.openHandles;
    return ERROR_SUCCESS;
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
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (!state.Known(handle)) {
        return ERROR_INVALID_HANDLE;
    }
    const size_t header = offsetof(WLAN_INTERFACE_INFO_LIST, InterfaceInfo);
    const size_t entries = state.setup.interfaceCount * sizeof(WLAN_INTERFACE_INFO);
    *list = static_cast<PWLAN_INTERFACE_INFO_LIST>(state.Allocate(nullptr, header + entries));
    (*list)->dwNumberOfItems = state.setup.interfaceCount;
    std::memcpy(reinterpret_cast<uint8_t*>(*list) + header, state.setup.interfaces, entries);
    return ERROR_SUCCESS;
}

DWORD WINAPI WlanScan(HANDLE handle, const GUID*, const PDOT11_SSID ssid,
                      const PWLAN_RAW_DATA ieData, PVOID) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (!state.Known(handle)) {
        return ERROR_INVALID_HANDLE;
    }
    ++state.report.scans;
    state.report.scanSsidLength = ssid ? ssid->uSSIDLength : 0xFFFFFFFF;
    state.report.scanIeBytes = ieData ? ieData->dwDataSize : 0;
    return ERROR_SUCCESS;
}

DWORD WINAPI WlanGetNetworkBssList(HANDLE handle, const GUID*, const PDOT11_SSID, DOT11_BSS_TYPE,
                                   WINBOOL, PVOID, PWLAN_BSS_LIST* list) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (!state.Known(handle)) {
        return ERROR_INVALID_HANDLE;
    }
    const size_t header = offsetof(WLAN_BSS_LIST, wlanBssEntries);
    const size_t entries = state.setup.bssCount * sizeof(WLAN_BSS_ENTRY);
    *list = static_cast<PWLAN_BSS_LIST>(state.Allocate(nullptr, header + entries));
    (*list)->dwTotalSize = static_cast<DWORD>(header + entries);
    (*list)->dwNumberOfItems =
        state.setup.bssClaimed ? state.setup.bssClaimed : state.setup.bssCount;
    std::memcpy(reinterpret_cast<uint8_t*>(*list) + header, state.setup.bss, entries);
    return ERROR_SUCCESS;
}

DWORD WINAPI WlanQueryInterface(HANDLE handle, const GUID*, WLAN_INTF_OPCODE opcode, PVOID,
                                PDWORD size, PVOID* data, PWLAN_OPCODE_VALUE_TYPE) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (!state.Known(handle)) {
        return ERROR_INVALID_HANDLE;
    }
    const void* source = nullptr;
    size_t bytes = 0;
    switch (opcode) {
        case wlan_intf_opcode_current_connection:
            source = &state.setup.connection;
            bytes = state.setup.connectionBytes ? state.setup.connectionBytes
                                                : sizeof(state.setup.connection);
            break;
        case wlan_intf_opcode_channel_number:
            source = &state.setup.channel;
            bytes = sizeof(state.setup.channel);
            break;
        case wlan_intf_opcode_rssi:
            source = &state.setup.rssi;
            bytes = sizeof(state.setup.rssi);
            break;
        default:
            return ERROR_NOT_SUPPORTED;
    }
    *size = static_cast<DWORD>(bytes);
    *data = state.Allocate(source, bytes);
    return ERROR_SUCCESS;
}

DWORD WINAPI WlanConnect(HANDLE handle, const GUID*, const PWLAN_CONNECTION_PARAMETERS parameters,
                         PVOID) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (!state.Known(handle)) {
        return ERROR_INVALID_HANDLE;
    }
    auto& last = state.report.lastConnect;
    last = {};
    ++state.report.connects;
    last.mode = parameters->wlanConnectionMode;
    if (parameters->strProfile) {
        last.profileLength = static_cast<uint32_t>(wcslen(parameters->strProfile));
        wcsncpy(last.profile, parameters->strProfile, std::size(last.profile) - 1);
    }
    last.ssidGiven = parameters->pDot11Ssid != nullptr;
    last.bssType = parameters->dot11BssType;
    last.flags = parameters->dwFlags;
    if (const DOT11_BSSID_LIST* list = parameters->pDesiredBssidList) {
        last.bssidListGiven = 1;
        last.header = list->Header;
        last.numberOfEntries = list->uNumOfEntries;
        last.totalNumberOfEntries = list->uTotalNumOfEntries;
        // What the caller says it allocated is read, as wlanapi may.
        const auto* addresses = reinterpret_cast<const uint8_t*>(list->BSSIDs);
        for (ULONG i = 0; i < std::min<ULONG>(list->uTotalNumOfEntries, 2); ++i) {
            std::memcpy(last.bssids[i], addresses + 6 * i, 6);
        }
    }
    return ERROR_SUCCESS;
}

DWORD WINAPI WlanDisconnect(HANDLE handle, const GUID*, PVOID) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (!state.Known(handle)) {
        return ERROR_INVALID_HANDLE;
    }
    ++state.report.disconnects;
    return ERROR_SUCCESS;
}

DWORD WINAPI WlanRegisterNotification(HANDLE handle, DWORD sources, WINBOOL,
                                      WLAN_NOTIFICATION_CALLBACK callback, PVOID context, PVOID,
                                      PDWORD previous) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (!state.Known(handle)) {
        return ERROR_INVALID_HANDLE;
    }
    if (state.setup.registerError) {
        return state.setup.registerError;
    }
    Registration& registration = state.open[handle];
    if (previous) {
        *previous = registration.sources;
    }
    registration = {sources, sources ? callback : nullptr, context};
    return ERROR_SUCCESS;
}

int CkWlanConfigure(const CkWlanSetup* setup, CkWlanReport* report) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (setup) {
        if (setup->interfaceCount > 2 || setup->bssCount > 4) {
            return 1;
        }
        state.setup = *setup;
        const uint32_t open = state.report.openHandles;
        const uint32_t outstanding = state.report.outstandingAllocations;
        state.report = {};
        state.report.openHandles = open;
        state.report.outstandingAllocations = outstanding;
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
