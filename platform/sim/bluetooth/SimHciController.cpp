#include "platform/sim/bluetooth/SimHciController.h"

#include <algorithm>
#include <cstring>

#include "platform/ports/BluetoothHci.h"

namespace connectkit::sim {
namespace {

namespace hci = platform::hci;

constexpr uint32_t kErrorInvalidParameter = 87;
constexpr uint32_t kErrorNotSupported = 50;
constexpr uint32_t kErrorSemTimeout = 121;
constexpr uint32_t kErrorInsufficientBuffer = 122;
// Advertising data and scan responses hold at most 31 bytes.
constexpr size_t kMostData = 31;
constexpr uint16_t kLeastInterval = 0x20;
constexpr uint8_t kAllChannels = 7;

uint16_t Word(const uint8_t* bytes) {
    return static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
}

std::vector<uint8_t> CommandComplete(uint16_t opcode, uint8_t status, uint8_t subOpcode) {
    return {hci::kEventCommandComplete,        5,      1,        static_cast<uint8_t>(opcode),
            static_cast<uint8_t>(opcode >> 8), status, subOpcode};
}

struct Pattern {
    uint8_t offset;
    std::vector<uint8_t> bytes;
};

bool Matches(const Pattern& pattern, const std::vector<uint8_t>& event) {
    size_t start = 2 + size_t{pattern.offset};
    return event.size() >= start + pattern.bytes.size() &&
           std::equal(pattern.bytes.begin(), pattern.bytes.end(), event.begin() + start);
}

// The patterns after the parameters; false when one is cut short or none is
// there.
bool ReadPatterns(const std::vector<uint8_t>& input, size_t at, std::vector<Pattern>& patterns) {
    while (at < input.size()) {
        if (input.size() - at < hci::pattern::kBytes) {
            return false;
        }
        uint8_t size = input[at + hci::pattern::kSize];
        size_t bytes = at + hci::pattern::kBytes;
        if (input.size() - bytes < size) {
            return false;
        }
        patterns.push_back({input[at + hci::pattern::kOffset],
                            {input.begin() + bytes, input.begin() + bytes + size}});
        at = bytes + size;
    }
    return !patterns.empty();
}

}  // namespace

void SimHciController::Configure(SimHciSettings settings) {
    std::lock_guard<std::mutex> lock(mutex_);
    settings_ = std::move(settings);
    instances_.clear();
    exchanges_.clear();
}

bool SimHciController::TakeFault(uint8_t subOpcode, SimHciFault::Kind& kind) {
    for (auto it = settings_.faults.begin(); it != settings_.faults.end(); ++it) {
        if (it->subOpcode != 0 && it->subOpcode != subOpcode) {
            continue;
        }
        kind = it->kind;
        if (it->times == 1) {
            settings_.faults.erase(it);
        } else if (it->times > 1) {
            --it->times;
        }
        return true;
    }
    return false;
}

SimHciController::Answer SimHciController::Command(const std::vector<uint8_t>& packet) {
    Answer answer;
    std::lock_guard<std::mutex> lock(mutex_);
    if (packet.size() < 3 || packet.size() - 3 != packet[2]) {
        exchanges_.push_back({packet, {}});
        return answer;
    }
    uint16_t opcode = Word(packet.data());
    std::vector<uint8_t> parameters(packet.begin() + 3, packet.end());
    uint8_t subOpcode = parameters.empty() ? 0 : parameters[0];
    auto latency = settings_.latencyMs.find(subOpcode);
    answer.latencyMs = latency == settings_.latencyMs.end() ? 0 : latency->second;
    SimHciFault::Kind fault;
    if (opcode != hci::kOpMultiAdvertising || !TakeFault(subOpcode, fault)) {
        answer.event = Decode(opcode, parameters);
    } else if (fault == SimHciFault::Kind::Disallowed) {
        answer.event = CommandComplete(opcode, hci::kStatusCommandDisallowed, subOpcode);
    } else if (fault == SimHciFault::Kind::Unknown) {
        answer.event = CommandComplete(opcode, hci::kStatusUnknownCommand, subOpcode);
    } else if (fault == SimHciFault::Kind::WrongEvent) {
        answer.event = {hci::kEventCommandStatus,     4,
                        hci::kStatusSuccess,          1,
                        static_cast<uint8_t>(opcode), static_cast<uint8_t>(opcode >> 8)};
    } else if (fault == SimHciFault::Kind::WrongOpcode) {
        answer.event = CommandComplete(opcode + 1, hci::kStatusSuccess, subOpcode);
    } else if (fault == SimHciFault::Kind::OversizedEvent) {
        answer.event = Decode(opcode, parameters);
        answer.oversized = true;
    }
    exchanges_.push_back({packet, answer.event});
    return answer;
}

std::vector<uint8_t> SimHciController::Decode(uint16_t opcode,
                                              const std::vector<uint8_t>& parameters) {
    uint8_t subOpcode = parameters.empty() ? 0 : parameters[0];
    if (opcode != hci::kOpMultiAdvertising) {
        return CommandComplete(opcode, hci::kStatusUnknownCommand, subOpcode);
    }
    return CommandComplete(opcode, Apply(parameters), subOpcode);
}

uint8_t SimHciController::Apply(const std::vector<uint8_t>& parameters) {
    if (parameters.empty()) {
        return hci::kStatusInvalidParameters;
    }
    uint8_t subOpcode = parameters[0];
    auto validInstance = [&](uint8_t instance) {
        return instance >= 1 && instance <= settings_.instances;
    };
    switch (subOpcode) {
        case hci::kSubSetParameters: {
            platform::rtk::MultiAdvParam block;
            if (parameters.size() != hci::kSetParametersLength) {
                return hci::kStatusInvalidParameters;
            }
            std::memcpy(&block, parameters.data() + 1, sizeof(block));
            if (!validInstance(block.instance) || block.intervalMin < kLeastInterval ||
                block.intervalMin > block.intervalMax || (block.channelMap & kAllChannels) == 0) {
                return hci::kStatusInvalidParameters;
            }
            auto& instance = instances_[block.instance];
            instance.parameters = block;
            instance.parametersSet = true;
            return hci::kStatusSuccess;
        }
        case hci::kSubSetData:
        case hci::kSubSetScanResponse: {
            if (parameters.size() != hci::kSetDataLength || parameters[1] > kMostData ||
                !validInstance(parameters[hci::kSetDataLength - 1])) {
                return hci::kStatusInvalidParameters;
            }
            auto& instance = instances_[parameters[hci::kSetDataLength - 1]];
            auto& target = subOpcode == hci::kSubSetData ? instance.data : instance.scanResponse;
            target.assign(parameters.begin() + 2, parameters.begin() + 2 + parameters[1]);
            return hci::kStatusSuccess;
        }
        case hci::kSubEnable: {
            if (parameters.size() != hci::kEnableLength || parameters[1] > 1 ||
                !validInstance(parameters[2])) {
                return hci::kStatusInvalidParameters;
            }
            auto& instance = instances_[parameters[2]];
            if (parameters[1] == 1 && !instance.parametersSet) {
                return hci::kStatusCommandDisallowed;
            }
            instance.enabled = parameters[1] == 1;
            return hci::kStatusSuccess;
        }
        default:
            return hci::kStatusUnknownCommand;
    }
}

uint32_t SimHciController::VendorCommand(uint16_t manufacturer, uint64_t address,
                                         const std::vector<uint8_t>& input,
                                         std::vector<uint8_t>& output, uint32_t outputSize,
                                         uint32_t& waitMs) {
    namespace command = hci::command;
    output.clear();
    waitMs = 0;
    if (input.size() < command::kData) {
        return kErrorInvalidParameter;
    }
    uint32_t manufacturerId = 0;
    std::memcpy(&manufacturerId, input.data() + command::kManufacturerId, 4);
    size_t length = input[command::kTotalParameterLength];
    std::vector<Pattern> patterns;
    if (input.size() - command::kData < length ||
        !ReadPatterns(input, command::kData + length, patterns)) {
        return kErrorInvalidParameter;
    }
    if (manufacturerId != manufacturer) {
        return kErrorNotSupported;
    }
    std::vector<uint8_t> packet(input.begin() + command::kOpCode,
                                input.begin() + command::kData + length);
    Answer answer = Command(packet);
    bool anyOne = input[command::kMatchAnySinglePattern] != 0;
    auto matches = [&](const Pattern& pattern) { return Matches(pattern, answer.event); };
    bool caught = anyOne ? std::any_of(patterns.begin(), patterns.end(), matches)
                         : std::all_of(patterns.begin(), patterns.end(), matches);
    bool garbage = !answer.event.empty() && (answer.event[0] != hci::kEventCommandComplete ||
                                             Word(answer.event.data() + 3) != Word(packet.data()));
    if (answer.event.empty() || (!caught && !garbage)) {
        std::lock_guard<std::mutex> lock(mutex_);
        waitMs = settings_.noAnswerWaitMs;
        return kErrorSemTimeout;
    }
    waitMs = answer.latencyMs;
    size_t bytes = hci::event::kEventInfo + answer.event.size();
    if (outputSize < bytes) {
        return kErrorInsufficientBuffer;
    }
    output.assign(bytes, 0);
    std::memcpy(output.data() + hci::event::kAddress, &address, 8);
    uint32_t eventSize = static_cast<uint32_t>(answer.event.size()) + (answer.oversized ? 64 : 0);
    std::memcpy(output.data() + hci::event::kEventSize, &eventSize, 4);
    std::copy(answer.event.begin(), answer.event.end(), output.begin() + hci::event::kEventInfo);
    return 0;
}

std::vector<SimHciInstance> SimHciController::Instances() const {
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<SimHciInstance> instances(settings_.instances);
    for (const auto& [number, instance] : instances_) {
        instances[number - 1] = instance;
    }
    return instances;
}

std::vector<SimHciExchange> SimHciController::Exchanges() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return exchanges_;
}

uint32_t SimLocalInfo(const SimLocalRadio& radio, std::vector<uint8_t>& output,
                      uint32_t outputSize) {
    namespace info = hci::localInfo;
    output.clear();
    if (outputSize < info::kSize) {
        return kErrorInsufficientBuffer;
    }
    output.assign(info::kSize, 0);
    // BTH_DEVICE_INFO: flags, then the address at 8, the class at 16 and the
    // name at 20 (248 bytes).
    constexpr size_t kAddress = 8;
    constexpr size_t kClass = 16;
    constexpr size_t kName = 20;
    constexpr size_t kMostName = 247;
    std::memcpy(output.data() + kAddress, &radio.address, 8);
    std::memcpy(output.data() + kClass, &radio.classOfDevice, 4);
    std::memcpy(output.data() + kName, radio.name.data(), std::min(radio.name.size(), kMostName));
    output[info::kHciVersion] = radio.lmpVersion;
    std::memcpy(output.data() + info::kHciRevision, &radio.lmpSubversion, 2);
    std::memcpy(output.data() + info::kManufacturer, &radio.manufacturer, 2);
    std::memcpy(output.data() + info::kLmpSubversion, &radio.lmpSubversion, 2);
    output[info::kLmpVersion] = radio.lmpVersion;
    return 0;
}

}  // namespace connectkit::sim
