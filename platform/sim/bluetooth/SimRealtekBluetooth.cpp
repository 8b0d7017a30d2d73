#include "platform/sim/bluetooth/SimRealtekBluetooth.h"

#include <cstring>
#include <mutex>

#include "platform/ports/BluetoothHci.h"

namespace connectkit::sim {
namespace {

namespace hci = platform::hci;
using platform::rtk::Device;

// The handle the library hands out while its device is open.
const Device kOpenHandle = reinterpret_cast<Device>(uintptr_t{0x5A17});
constexpr size_t kMostData = 31;

struct LibraryState {
    std::mutex mutex;
    SimRealtekBluetoothSettings settings;
    SimHciSend send;
    SimRealtekBluetoothLog log;
};

LibraryState& State() {
    // Never destroyed: a library the loader deliberately never frees may
    // still be called while the process winds down.
    static auto* state = new LibraryState();
    return *state;
}

// Logs the call; false when it answers busy instead.
bool Admit(const char* entry) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    state.log.calls.push_back(entry);
    auto busy = state.settings.busy.find(entry);
    if (busy == state.settings.busy.end() || busy->second == 0) {
        return true;
    }
    --busy->second;
    return false;
}

bool IsOpen(Device device) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    return state.log.open && device == kOpenHandle;
}

// Sends one multi-advertising command: 0 or why not. The controller is
// called without the library's lock, since it may take its time.
int Send(const std::vector<uint8_t>& parameters) {
    SimHciSend send;
    {
        auto& state = State();
        std::lock_guard<std::mutex> lock(state.mutex);
        send = state.send;
    }
    if (!send) {
        return kRtkNoAnswer;
    }
    std::vector<uint8_t> packet(3 + parameters.size());
    packet[0] = static_cast<uint8_t>(hci::kOpMultiAdvertising);
    packet[1] = static_cast<uint8_t>(hci::kOpMultiAdvertising >> 8);
    packet[2] = static_cast<uint8_t>(parameters.size());
    std::memcpy(packet.data() + 3, parameters.data(), parameters.size());
    auto event = send(packet);
    // Command complete: code, length, packets, opcode (2), status.
    if (event.size() < 6 || event[0] != hci::kEventCommandComplete) {
        return kRtkNoAnswer;
    }
    return event[5] == hci::kStatusSuccess ? platform::rtk::kRtkSuccess : kRtkRefused + event[5];
}

std::vector<uint8_t> DataCommand(uint8_t subOpcode, uint8_t instance, const uint8_t* data,
                                 uint8_t length) {
    std::vector<uint8_t> parameters(hci::kSetDataLength, 0);
    parameters[0] = subOpcode;
    parameters[1] = length;
    if (length > 0) {
        std::memcpy(parameters.data() + 2, data, length);
    }
    parameters[hci::kSetDataLength - 1] = instance;
    return parameters;
}

}  // namespace

void ConfigureSimRealtekBluetooth(const SimRealtekBluetoothSettings& settings, SimHciSend send) {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    state.settings = settings;
    state.send = std::move(send);
    state.log = {};
}

SimRealtekBluetoothLog RealtekBluetoothLog() {
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    return state.log;
}

namespace rtkbt {

int RtkApplOpenDevice(Device* device) {
    if (!Admit(platform::rtk::kOpenDevice)) {
        return platform::rtk::kRtkBusy;
    }
    if (!device) {
        return kRtkFailure;
    }
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    if (state.settings.failingOpens > 0) {
        --state.settings.failingOpens;
        *device = platform::rtk::InvalidDevice();
        return kRtkFailure;
    }
    state.log.open = true;
    *device = kOpenHandle;
    return platform::rtk::kRtkSuccess;
}

int RtkApplCloseDevice(Device device) {
    if (!Admit(platform::rtk::kCloseDevice)) {
        return platform::rtk::kRtkBusy;
    }
    if (!IsOpen(device)) {
        return kRtkFailure;
    }
    auto& state = State();
    std::lock_guard<std::mutex> lock(state.mutex);
    state.log.open = false;
    return platform::rtk::kRtkSuccess;
}

int RtkSendHciLeSetMultiAdvParam(Device device, const platform::rtk::MultiAdvParam* parameters) {
    if (!Admit(platform::rtk::kSetMultiAdvParam)) {
        return platform::rtk::kRtkBusy;
    }
    if (!IsOpen(device) || !parameters) {
        return kRtkFailure;
    }
    std::vector<uint8_t> command(hci::kSetParametersLength, 0);
    command[0] = hci::kSubSetParameters;
    std::memcpy(command.data() + 1, parameters, sizeof(*parameters));
    return Send(command);
}

int RtkApplSendAdv(uint8_t instance, const uint8_t* data, uint8_t dataLength,
                   const uint8_t* scanResponse, uint8_t scanResponseLength, Device device) {
    if (!Admit(platform::rtk::kSendAdv)) {
        return platform::rtk::kRtkBusy;
    }
    if (!IsOpen(device) || dataLength > kMostData || scanResponseLength > kMostData ||
        (!data && dataLength > 0) || (!scanResponse && scanResponseLength > 0)) {
        return kRtkFailure;
    }
    for (const auto& command :
         {DataCommand(hci::kSubSetData, instance, data, dataLength),
          DataCommand(hci::kSubSetScanResponse, instance, scanResponse, scanResponseLength),
          std::vector<uint8_t>{hci::kSubEnable, 1, instance}}) {
        if (int result = Send(command)) {
            return result;
        }
    }
    return platform::rtk::kRtkSuccess;
}

int RtkApplCloseAdv(uint8_t instance, Device device) {
    if (!Admit(platform::rtk::kCloseAdv)) {
        return platform::rtk::kRtkBusy;
    }
    if (!IsOpen(device)) {
        return kRtkFailure;
    }
    return Send({hci::kSubEnable, 0, instance});
}

}  // namespace rtkbt
}  // namespace connectkit::sim
