#pragma once
// The vendor LE multi-advertising command (opcode 0xFD54) as the library
// sends it through the Bluetooth stack's vendor-command control code, and
// the answer it accepts.
//
// Parameters, sub-opcode first (platform/ports/BluetoothHci.h names the
// numbers):
//   1 set parameters  24 bytes: the 23-byte block of rtk::MultiAdvParam
//   2 set data        34 bytes: length, 31 bytes zero padded, instance
//   3 scan response   34 bytes: as 2
//   5 enable           3 bytes: enable (1 on, 0 off), instance
// Stopping an instance is the enable command with 0: the controller keeps
// the instance's parameters and data, so the next start sends them again
// anyway. Wireshark's vendor dissector decodes 1 and 5 field by field; it
// reads 2 and 3 without the data-length byte that this controller family
// takes, so those show correctly only as raw bytes.
//
// The control code's input (BTH_VENDOR_SPECIFIC_COMMAND): the radio's
// manufacturer, LMP version 0 (any), match-any-single-pattern 1, the
// opcode, the parameter length, the parameters, then one 4-byte pattern
// (offset 1, size 2, 0x54 0xFD) that picks the command-complete event of
// 0xFD54 out of the controller's events: its opcode sits at offset 1 of
// the event's parameters, after the packet count.
//
// The answer (BTH_VENDOR_EVENT_INFO) comes from the driver and is believed
// only as far as the bytes returned reach.

#include <cstdint>
#include <string>
#include <vector>

#include "bluetooth/AdvPayload.h"
#include "platform/ports/VendorBluetooth.h"

namespace connectkit::bluetooth {

// The block both paths send: the caller's interval as minimum and maximum,
// scannable undirected (2) with a scan response else non-connectable
// undirected (3), own address random only when `randomAddress` is set,
// channels 37-39, no filter, power 0.
platform::rtk::MultiAdvParam MultiAdvParameters(uint16_t interval, bool withScanResponse,
                                                bool randomAddress, const uint8_t (&address)[6],
                                                uint8_t instance);

std::vector<uint8_t> SetParametersCommand(const platform::rtk::MultiAdvParam& parameters);
// Sub-opcode 2 or 3; `length` bytes of `data` count, the rest is padding.
std::vector<uint8_t> SetDataCommand(uint8_t subOpcode, const AdvBuffer& data, uint8_t length,
                                    uint8_t instance);
std::vector<uint8_t> EnableCommand(bool enable, uint8_t instance);

// The HCI command packet as it goes to the controller: opcode
// little-endian, parameter length, parameters.
std::vector<uint8_t> HciCommandPacket(const std::vector<uint8_t>& parameters);

// The control code's input for `parameters` (at most 255 bytes).
std::vector<uint8_t> VendorCommandInput(uint16_t manufacturer,
                                        const std::vector<uint8_t>& parameters);

// The control code's output, read within its bytes.
struct VendorAnswer {
    // The HCI event as far as it lies within the output (for the capture);
    // empty when not even its header does.
    std::vector<uint8_t> event;
    // A command-complete event of 0xFD54 was found; `status` is its status.
    bool complete = false;
    uint8_t status = 0;
    // Why the answer is not a command complete of 0xFD54.
    std::string fault;
};
VendorAnswer ReadVendorAnswer(const std::vector<uint8_t>& output);

// The bytes as "0e 04 01 ..." for a log line, at most the first 48.
std::string HexBytes(const std::vector<uint8_t>& bytes);

}  // namespace connectkit::bluetooth
