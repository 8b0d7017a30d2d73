// A double of bthprops.cpl (and of DeviceIoControl and CloseHandle for the
// radio handles): the radios and the device a test sets up, behind the
// system library's structures, which it checks by their dwSize as the system
// does. Its handles are tokens only it knows; it counts those still open and
// every close that does not match one.

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>

#include "bthdll/CkBthControl.h"

namespace {

enum class Kind { Radio, RadioSearch, DeviceSearch };

struct Opened {
    Kind kind;
    uint32_t next;  // a radio's index, or a radio search's next radio
};

struct Double {
    CkBthSetup setup{};
    CkBthReport report{};
    std::map<HANDLE, Opened> open;
    uintptr_t nextToken = 0xB7000;

    HANDLE Open(Kind kind, uint32_t next) {
        auto handle = reinterpret_cast<HANDLE>(nextToken += 4);
        open[handle] = {kind, next};
        return handle;
    }
    Opened* Find(HANDLE handle, Kind kind) {
        auto found = open.find(handle);
        return found != open.end() && found->second.kind == kind ? &found->second : nullptr;
    }
    BOOL Close(HANDLE handle, Kind kind) {
        if (!Find(handle, kind)) {
            ++report.badCloses;
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        open.erase(handle);
        return TRUE;
    }
    bool SizeIs(DWORD given, size_t expected) {
        if (given != expected) {
            ++report.badSizes;
            return false;
        }
        return true;
    }
};

std::mutex mutex;
Double state;

}  // namespace

extern "C" {

HBLUETOOTH_RADIO_FIND WINAPI BluetoothFindFirstRadio(BLUETOOTH_FIND_RADIO_PARAMS* parameters,
                                                     HANDLE* radio) {
    std::lock_guard<std::mutex> lock(mutex);
    if (!parameters || !radio || !state.SizeIs(parameters->dwSize, sizeof(*parameters))) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if (state.setup.radioCount == 0) {
        SetLastError(ERROR_NO_MORE_ITEMS);
        return nullptr;
    }
    *radio = state.Open(Kind::Radio, 0);
    return state.Open(Kind::RadioSearch, 1);
}

BOOL WINAPI BluetoothFindNextRadio(HBLUETOOTH_RADIO_FIND search, HANDLE* radio) {
    std::lock_guard<std::mutex> lock(mutex);
    Opened* found = state.Find(search, Kind::RadioSearch);
    if (!found || !radio) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (found->next >= state.setup.radioCount) {
        SetLastError(ERROR_NO_MORE_ITEMS);
        return FALSE;
    }
    uint32_t index = found->next++;
    *radio = state.Open(Kind::Radio, index);
    return TRUE;
}

BOOL WINAPI BluetoothFindRadioClose(HBLUETOOTH_RADIO_FIND search) {
    std::lock_guard<std::mutex> lock(mutex);
    return state.Close(search, Kind::RadioSearch);
}

DWORD WINAPI BluetoothGetRadioInfo(HANDLE radio, PBLUETOOTH_RADIO_INFO info) {
    std::lock_guard<std::mutex> lock(mutex);
    Opened* found = state.Find(radio, Kind::Radio);
    if (!found) {
        return ERROR_INVALID_HANDLE;
    }
    if (!info || !state.SizeIs(info->dwSize, sizeof(*info))) {
        return ERROR_REVISION_MISMATCH;
    }
    const CkBthRadio& given = state.setup.radios[found->next];
    if (given.infoError != 0) {
        return given.infoError;
    }
    *info = given.info;
    info->dwSize = sizeof(*info);
    return ERROR_SUCCESS;
}

HBLUETOOTH_DEVICE_FIND WINAPI BluetoothFindFirstDevice(BLUETOOTH_DEVICE_SEARCH_PARAMS* parameters,
                                                       BLUETOOTH_DEVICE_INFO* info) {
    std::lock_guard<std::mutex> lock(mutex);
    if (!parameters || !info || !state.SizeIs(parameters->dwSize, sizeof(*parameters)) ||
        !state.SizeIs(info->dwSize, sizeof(*info))) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    ++state.report.deviceSearches;
    state.report.lastSearch = *parameters;
    if (!state.setup.deviceFound) {
        SetLastError(ERROR_NO_MORE_ITEMS);
        return nullptr;
    }
    *info = state.setup.device;
    info->dwSize = sizeof(*info);
    return state.Open(Kind::DeviceSearch, 0);
}

BOOL WINAPI BluetoothFindDeviceClose(HBLUETOOTH_DEVICE_FIND search) {
    std::lock_guard<std::mutex> lock(mutex);
    return state.Close(search, Kind::DeviceSearch);
}

// Answers for the radio handles: the control is recorded and its input
// echoed into the output, as far as both buffers go.
BOOL WINAPI CkDeviceIoControl(HANDLE device, DWORD code, LPVOID input, DWORD inputSize,
                              LPVOID output, DWORD outputSize, LPDWORD returned, LPOVERLAPPED) {
    std::lock_guard<std::mutex> lock(mutex);
    if (!state.Find(device, Kind::Radio)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    auto& report = state.report;
    ++report.controlCalls;
    report.controlCode = code;
    report.controlOutputSize = outputSize;
    if (state.setup.controlError != 0) {
        SetLastError(state.setup.controlError);
        return FALSE;
    }
    DWORD echoed = input && output ? std::min(inputSize, outputSize) : 0;
    if (echoed > 0) {
        std::memcpy(output, input, echoed);
    }
    if (returned) {
        *returned = echoed;
    }
    return TRUE;
}

BOOL WINAPI CkCloseHandle(HANDLE handle) {
    std::lock_guard<std::mutex> lock(mutex);
    return state.Close(handle, Kind::Radio);
}

int CkBthConfigure(const CkBthSetup* setup, CkBthReport* report) {
    std::lock_guard<std::mutex> lock(mutex);
    if (setup) {
        if (setup->radioCount > 4) {
            return 1;
        }
        state.setup = *setup;
        state.report = CkBthReport{};
        state.open.clear();
    }
    if (report) {
        *report = state.report;
        report->openHandles = static_cast<uint32_t>(state.open.size());
    }
    return 0;
}

}  // extern "C"
