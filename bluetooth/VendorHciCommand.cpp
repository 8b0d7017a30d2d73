#include "bluetooth/VendorHciCommand.h"

#include <algorithm>
#include <cstdio>

#include "platform/ports/BluetoothHci.h"

namespace connectkit::bluetooth {

namespace hci = platform::hci;
using platform::rtk::MultiAdvParam;

namespace {

constexpr uint8_t kScannableUndirected = 2;
constexpr uint8_t kNonConnectableUndirected = 3;
constexpr uint8_t kAllChannels = 7;
constexpr size_t kHeaderBytes = hci::command::kData;
constexpr uint8_t kPatternOffset = 1;
constexpr uint8_t kPatternSize = 2;
constexpr size_t kCompleteParameters = 4;  // packets, opcode, status
constexpr size_t kHexBytesShown = 48;

void PutLe16(std::vector<uint8_t>& out, uint16_t value) {
    out.push_back(static_cast<uint8_t>(value & 0xFF));
    out.push_back(static_cast<uint8_t>(value >> 8));
}

uint32_t Le32(const std::vector<uint8_t>& bytes, size_t at) {
    return static_cast<uint32_t>(bytes[at]) | static_cast<uint32_t>(bytes[at + 1]) << 8 |
           static_cast<uint32_t>(bytes[at + 2]) << 16 | static_cast<uint32_t>(bytes[at + 3]) << 24;
}

}  // namespace

MultiAdvParam MultiAdvParameters(uint16_t interval, bool withScanResponse, bool randomAddress,
                                 const uint8_t (&address)[6], uint8_t instance) {
    MultiAdvParam block{};
    block.intervalMin = interval;
    block.intervalMax = interval;
    block.advertisingType = withScanResponse ? kScannableUndirected : kNonConnectableUndirected;
    block.ownAddressType = randomAddress ? 1 : 0;
    if (randomAddress) {
        std::copy(std::begin(address), std::end(address), block.ownAddress);
    }
    block.channelMap = kAllChannels;
    block.instance = instance;
    return block;
}

std::vector<uint8_t> SetParametersCommand(const MultiAdvParam& block) {
    std::vector<uint8_t> out{hci::kSubSetParameters};
    PutLe16(out, block.intervalMin);
    PutLe16(out, block.intervalMax);
    out.push_back(block.advertisingType);
    out.push_back(block.ownAddressType);
    out.insert(out.end(), std::begin(block.ownAddress), std::end(block.ownAddress));
    out.push_back(block.directAddressType);
    out.insert(out.end(), std::begin(block.directAddress), std::end(block.directAddress));
    out.push_back(block.channelMap);
    out.push_back(block.filterPolicy);
    out.push_back(block.instance);
    out.push_back(static_cast<uint8_t>(block.transmitPower));
    return out;
}

std::vector<uint8_t> SetDataCommand(uint8_t subOpcode, const AdvBuffer& data, uint8_t length,
                                    uint8_t instance) {
    std::vector<uint8_t> out{subOpcode, length};
    out.insert(out.end(), data.begin(), data.end());
    out.push_back(instance);
    return out;
}

std::vector<uint8_t> EnableCommand(bool enable, uint8_t instance) {
    return {hci::kSubEnable, static_cast<uint8_t>(enable ? 1 : 0), instance};
}

std::vector<uint8_t> HciCommandPacket(const std::vector<uint8_t>& parameters) {
    std::vector<uint8_t> out;
    PutLe16(out, hci::kOpMultiAdvertising);
    out.push_back(static_cast<uint8_t>(parameters.size()));
    out.insert(out.end(), parameters.begin(), parameters.end());
    return out;
}

std::vector<uint8_t> VendorCommandInput(uint16_t manufacturer,
                                        const std::vector<uint8_t>& parameters) {
    std::vector<uint8_t> out(kHeaderBytes, 0);
    out[hci::command::kManufacturerId] = static_cast<uint8_t>(manufacturer & 0xFF);
    out[hci::command::kManufacturerId + 1] = static_cast<uint8_t>(manufacturer >> 8);
    out[hci::command::kLmpVersion] = 0;
    out[hci::command::kMatchAnySinglePattern] = 1;
    out[hci::command::kOpCode] = static_cast<uint8_t>(hci::kOpMultiAdvertising & 0xFF);
    out[hci::command::kOpCode + 1] = static_cast<uint8_t>(hci::kOpMultiAdvertising >> 8);
    out[hci::command::kTotalParameterLength] = static_cast<uint8_t>(parameters.size());
    out.insert(out.end(), parameters.begin(), parameters.end());
    out.insert(out.end(),
               {kPatternOffset, kPatternSize, static_cast<uint8_t>(hci::kOpMultiAdvertising & 0xFF),
                static_cast<uint8_t>(hci::kOpMultiAdvertising >> 8)});
    return out;
}

VendorAnswer ReadVendorAnswer(const std::vector<uint8_t>& output) {
    VendorAnswer answer;
    if (output.size() < hci::event::kEventInfo) {
        answer.fault = "answer shorter than its header";
        return answer;
    }
    const size_t available = output.size() - hci::event::kEventInfo;
    const uint32_t eventSize = Le32(output, hci::event::kEventSize);
    const size_t usable = std::min<size_t>(eventSize, available);
    if (usable >= 2) {
        answer.event.assign(output.begin() + hci::event::kEventInfo,
                            output.begin() + hci::event::kEventInfo + usable);
    }
    if (eventSize > available) {
        answer.fault = "event size beyond the bytes returned";
        return answer;
    }
    const auto& event = answer.event;
    if (event.size() < 2 || event[0] != hci::kEventCommandComplete) {
        answer.fault = "not a command-complete event";
        return answer;
    }
    const size_t parameterLength = event[1];
    if (parameterLength < kCompleteParameters || parameterLength > event.size() - 2) {
        answer.fault = "command-complete event too short";
        return answer;
    }
    const uint16_t opcode = static_cast<uint16_t>(event[3] | event[4] << 8);
    if (opcode != hci::kOpMultiAdvertising) {
        answer.fault = "command complete of another opcode";
        return answer;
    }
    answer.complete = true;
    answer.status = event[5];
    return answer;
}

std::string HexBytes(const std::vector<uint8_t>& bytes) {
    std::string text;
    const size_t shown = std::min(bytes.size(), kHexBytesShown);
    for (size_t i = 0; i < shown; ++i) {
        char two[4];
        std::snprintf(two, sizeof two, i == 0 ? "%02x" : " %02x", bytes[i]);
        text += two;
    }
    if (shown < bytes.size()) {
        text += " ...";
    }
    return text;
}

}  // namespace connectkit::bluetooth
