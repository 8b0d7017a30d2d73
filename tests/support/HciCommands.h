#pragma once
// The vendor multi-advertising commands as the library writes them, for
// tests that play the library's part against a simulated controller.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/ports/BluetoothHci.h"

namespace connectkit::test::hcicmd {

namespace hci = platform::hci;
using Bytes = std::vector<uint8_t>;

// An HCI command packet: opcode, parameter length, parameters.
inline Bytes Packet(const Bytes& parameters, uint16_t opcode = hci::kOpMultiAdvertising) {
    Bytes packet{static_cast<uint8_t>(opcode), static_cast<uint8_t>(opcode >> 8),
                 static_cast<uint8_t>(parameters.size())};
    for (uint8_t byte : parameters) {
        packet.push_back(byte);
    }
    return packet;
}

inline Bytes SetParameters(uint8_t instance, uint16_t interval = 80, uint8_t channels = 7,
                           uint8_t type = 3) {
    Bytes block(hci::kSetParametersLength, 0);
    block[0] = hci::kSubSetParameters;
    block[1] = block[3] = static_cast<uint8_t>(interval);
    block[2] = block[4] = static_cast<uint8_t>(interval >> 8);
    block[5] = type;
    block[20] = channels;
    block[22] = instance;
    return block;
}

inline Bytes SetData(uint8_t subOpcode, uint8_t instance, const Bytes& data) {
    Bytes block(hci::kSetDataLength, 0);
    block[0] = subOpcode;
    block[1] = static_cast<uint8_t>(data.size());
    std::copy_n(data.begin(), std::min<size_t>(data.size(), 31), block.begin() + 2);
    block[33] = instance;
    return block;
}

inline Bytes Enable(uint8_t instance, uint8_t enable = 1) {
    return {hci::kSubEnable, enable, instance};
}

// BTH_VENDOR_SPECIFIC_COMMAND carrying `parameters`, with `pattern` after
// them (the library's own by default).
inline Bytes VendorInput(const Bytes& parameters, uint32_t manufacturer = 2,
                         const Bytes& pattern = {1, 2, 0x54, 0xFD}) {
    Bytes input(hci::command::kData + parameters.size() + pattern.size(), 0);
    std::memcpy(input.data() + hci::command::kManufacturerId, &manufacturer, 4);
    input[hci::command::kMatchAnySinglePattern] = 1;
    input[hci::command::kOpCode] = 0x54;
    input[hci::command::kOpCode + 1] = 0xFD;
    input[hci::command::kTotalParameterLength] = static_cast<uint8_t>(parameters.size());
    std::copy(parameters.begin(), parameters.end(), input.begin() + hci::command::kData);
    std::copy(pattern.begin(), pattern.end(),
              input.begin() + hci::command::kData + parameters.size());
    return input;
}

}  // namespace connectkit::test::hcicmd
