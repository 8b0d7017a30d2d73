// A double of bthprops.cpl (and of DeviceIoControl and CloseHandle for the
// radio handles): the radios and the device a test sets up, behind the
// system library's structures, which it checks by their dwSize as the system
// does. Its handles are tokens only it knows; it counts those still open and
// every close that does not match one.

#include <algorithm>
#include <map>
#include <mutex>
#include <vector>

#include "bthdll/CkHciModel.h"
#include "platform/ports/BluetoothHci.h"

namespace {

enum class Kind { Radio, RadioSearch, DeviceSearch };

struct Opened {
    Kind kind;
    uint32_t next;  // a radio's index, or a radio search's next radio
};

std::mutex mutex;
CkBthSetup setup{};
CkBthReport report{};
std::map<HANDLE, Opened> open;
uintptr_t nextToken = 0xB7000;
connectkit::sim::SimHciController controller;

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

// False, with the system's error set, for a structure of the wrong size.
bool SizeIs(DWORD given, size_t expected) {
    if (given != expected) {
        ++report.badSizes;
        SetLastError(ERROR_REVISION_MISMATCH);
        return false;
    }
    return true;
}

// The two control codes of the controller model: its Win32 answer, the
// bytes it returned in `answer`.
uint32_t Model(const CkBthRadio& radio, DWORD code, const std::vector<uint8_t>& input,
               std::vector<uint8_t>& answer, DWORD outputSize) {
    namespace sim = connectkit::sim;
    if (code == connectkit::platform::hci::kIoctlVendorCommand) {
        uint32_t waitMs = 0;
        return controller.VendorCommand(radio.info.manufacturer, radio.info.address.ullLong, input,
                                        answer, outputSize, waitMs);
    }
    sim::SimLocalRadio local;
    local.address = radio.info.address.ullLong;
    local.classOfDevice = radio.info.ulClassofDevice;
    for (const WCHAR* letter = radio.info.szName; *letter && local.name.size() < 247; ++letter) {
        local.name.push_back(static_cast<char>(*letter));
    }
    local.manufacturer = radio.info.manufacturer;
    local.lmpSubversion = radio.info.lmpSubversion;
    local.lmpVersion = radio.lmpVersion;
    return sim::SimLocalInfo(local, answer, outputSize);
}

}  // namespace

extern "C" {

HBLUETOOTH_RADIO_FIND WINAPI BluetoothFindFirstRadio(BLUETOOTH_FIND_RADIO_PARAMS* parameters,
                                                     HANDLE* radio) {
    std::lock_guard<std::mutex> lock(mutex);
    if (!SizeIs(parameters->dwSize, sizeof(*parameters))) {
        return nullptr;
    }
    if (setup.radioCount == 0) {
        SetLastError(ERROR_NO_MORE_ITEMS);
        return nullptr;
    }
    *radio = Open(Kind::Radio, 0);
    return Open(Kind::RadioSearch, 1);
}

BOOL WINAPI BluetoothFindNextRadio(HBLUETOOTH_RADIO_FIND search, HANDLE* radio) {
    std::lock_guard<std::mutex> lock(mutex);
    Opened* found = Find(search, Kind::RadioSearch);
    if (!found || found->next >= setup.radioCount) {
        SetLastError(found ? ERROR_NO_MORE_ITEMS : ERROR_INVALID_HANDLE);
        return FALSE;
    }
    *radio = Open(Kind::Radio, found->next++);
    return TRUE;
}

BOOL WINAPI BluetoothFindRadioClose(HBLUETOOTH_RADIO_FIND search) {
    std::lock_guard<std::mutex> lock(mutex);
    return Close(search, Kind::RadioSearch);
}

DWORD WINAPI BluetoothGetRadioInfo(HANDLE radio, PBLUETOOTH_RADIO_INFO info) {
    std::lock_guard<std::mutex> lock(mutex);
    Opened* found = Find(radio, Kind::Radio);
    if (!found) {
        return ERROR_INVALID_HANDLE;
    }
    if (!SizeIs(info->dwSize, sizeof(*info))) {
        return ERROR_REVISION_MISMATCH;
    }
    const CkBthRadio& given = setup.radios[found->next];
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
    if (!SizeIs(parameters->dwSize, sizeof(*parameters)) || !SizeIs(info->dwSize, sizeof(*info))) {
        return nullptr;
    }
    report.lastSearch = *parameters;
    if (!setup.deviceFound) {
        SetLastError(ERROR_NO_MORE_ITEMS);
        return nullptr;
    }
    *info = setup.device;
    info->dwSize = sizeof(*info);
    return Open(Kind::DeviceSearch, 0);
}

BOOL WINAPI BluetoothFindDeviceClose(HBLUETOOTH_DEVICE_FIND search) {
    std::lock_guard<std::mutex> lock(mutex);
    return Close(search, Kind::DeviceSearch);
}

// Answers for the radio handles: the control is recorded; the vendor
// command and the local information go to the controller model, any other
// code has its input echoed into the output, as far as both buffers go.
BOOL WINAPI CkDeviceIoControl(HANDLE device, DWORD code, LPVOID input, DWORD inputSize,
                              LPVOID output, DWORD outputSize, LPDWORD returned, LPOVERLAPPED) {
    std::lock_guard<std::mutex> lock(mutex);
    Opened* found = Find(device, Kind::Radio);
    if (!found) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    report.controlCode = code;
    report.controlOutputSize = outputSize;
    if (setup.controlError != 0) {
        SetLastError(setup.controlError);
        return FALSE;
    }
    const auto* bytes = static_cast<const uint8_t*>(input);
    if (code != connectkit::platform::hci::kIoctlVendorCommand &&
        code != connectkit::platform::hci::kIoctlGetLocalInfo) {
        *returned = bytes && output ? std::min(inputSize, outputSize) : 0;
        std::copy_n(bytes, *returned, static_cast<uint8_t*>(output));
        return TRUE;
    }
    std::vector<uint8_t> answer;
    uint32_t error = ERROR_GEN_FAILURE;
    try {
        error =
            Model(setup.radios[found->next], code,
                  bytes ? std::vector<uint8_t>(bytes, bytes + inputSize) : std::vector<uint8_t>(),
                  answer, outputSize);
    } catch (...) {
        // The model's failure answers as the stack's own.
    }
    if (error != ERROR_SUCCESS || (!output && !answer.empty())) {
        SetLastError(error != ERROR_SUCCESS ? error : ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    *returned = static_cast<DWORD>(std::min<size_t>(answer.size(), outputSize));
    std::copy_n(answer.begin(), *returned, static_cast<uint8_t*>(output));
    return TRUE;
}

BOOL WINAPI CkCloseHandle(HANDLE handle) {
    std::lock_guard<std::mutex> lock(mutex);
    return Close(handle, Kind::Radio);
}

int CkBthConfigure(const CkBthSetup* given, CkBthReport* answer) {
    std::lock_guard<std::mutex> lock(mutex);
    if (given) {
        if (given->radioCount > 4) {
            return 1;
        }
        setup = *given;
        report = CkBthReport{};
        open.clear();
        controller.Configure(connectkit::bthdll::HciSettings(setup.hciFaults, setup.hciFaultCount));
    }
    if (answer) {
        *answer = report;
        answer->openHandles = static_cast<uint32_t>(open.size());
        connectkit::bthdll::Report(controller, answer->hciCommands, answer->hciEnabled);
    }
    return 0;
}

}  // extern "C"
