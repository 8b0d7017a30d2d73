#pragma once
// The Bluetooth controller's vendor LE multi-advertising feature: HCI command
// bytes in, HCI event bytes out, each instance's parameters, data, scan
// response and enabled state kept. Nothing here knows the simulated world
// (no clock, no air), so the Windows test double of bthprops builds it as it
// is; the simulated PC waits the latencies it answers and puts the enabled
// instances on its air.
//
// The command is opcode 0xFD54 with a sub-opcode as its first parameter byte
// (layouts in platform/ports/BluetoothHci.h):
//   1 set parameters: 24 bytes, the rtk::MultiAdvParam block after the
//     sub-opcode;
//   2 set advertising data, 3 set scan response: 34 bytes, the data length,
//     31 bytes of data, the instance;
//   5 enable: 3 bytes, enable (0 or 1), the instance.
// The controller checks them as a controller does and answers the status in
// a command-complete event:
//   - another opcode or sub-opcode: unknown command (0x01);
//   - a length other than the table's, an instance outside 1..instances, a
//     data length above 31, an enable byte other than 0 or 1, an interval
//     minimum below 0x20 (20 ms) or above the maximum, a channel map without
//     any of the three channels: invalid parameters (0x12);
//   - enabling an instance whose parameters were never set: command
//     disallowed (0x0C).
// A refused command changes nothing. The event is command complete: 0x0E,
// parameter length 5, one command packet allowed, the opcode, the status,
// then the sub-opcode (as Broadcom's controllers append it; readers that take
// the status at its usual place are not affected).
//
// Around it, IOCTL_BTH_HCI_VENDOR_COMMAND as the Bluetooth stack answers it
// (VendorCommand): the BTH_VENDOR_SPECIFIC_COMMAND header must name the
// radio's manufacturer (or the command is not supported, error 50), the
// opcode, and a total parameter length that the input holds (its LMP version
// is not looked at); at least one BTH_VENDOR_PATTERN must follow, whole (else error 87).
// The stack waits for an event that matches a pattern (any one when the
// header asks for a single match, every one otherwise); the command-complete
// event matches the pattern {offset 1, size 2, 0x54 0xFD}. An event that no
// pattern matches, or none at all, leaves the call waiting until the stack
// gives up: ERROR_SEM_TIMEOUT (121) after `noAnswerWaitMs`. The answer is
// BTH_VENDOR_EVENT_INFO: the local address, EventSize and the event; an
// output buffer too small for it answers ERROR_INSUFFICIENT_BUFFER (122).
//
// Scripted faults, per sub-opcode (0: any), for `times` commands (0: every
// one): an answer of command disallowed or unknown command; no answer; an
// event of another code (command status) or of another opcode, which the
// pattern does not catch, so the stack hands it over only when the pattern
// was not the caller's one (the library must still refuse it); an EventSize
// larger than the bytes that came back. Each command takes `latencyMs` of
// its sub-opcode (virtual time in the simulated PC).

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/ports/VendorBluetooth.h"

namespace connectkit::sim {

struct SimHciFault {
    enum class Kind { Disallowed, Unknown, Silent, WrongEvent, WrongOpcode, OversizedEvent };
    uint8_t subOpcode = 0;
    Kind kind = Kind::Disallowed;
    uint32_t times = 0;
};

struct SimHciSettings {
    uint8_t instances = 5;
    // Virtual milliseconds each command of a sub-opcode takes.
    std::map<uint8_t, uint32_t> latencyMs;
    // How long the stack waits for an event before it gives up.
    uint32_t noAnswerWaitMs = 5000;
    std::vector<SimHciFault> faults;
};

struct SimHciInstance {
    bool parametersSet = false;
    platform::rtk::MultiAdvParam parameters{};
    std::vector<uint8_t> data;
    std::vector<uint8_t> scanResponse;
    bool enabled = false;
};

// One command the controller saw and its answer (empty: none).
struct SimHciExchange {
    std::vector<uint8_t> command;
    std::vector<uint8_t> event;
};

class SimHciController {
public:
    explicit SimHciController(SimHciSettings settings = {}) : settings_(std::move(settings)) {}

    // Forgets every instance and exchange and takes new settings.
    void Configure(SimHciSettings settings);

    struct Answer {
        // Code, parameter length, parameters; empty when none comes.
        std::vector<uint8_t> event;
        uint32_t latencyMs = 0;
        bool oversized = false;
    };
    // An HCI command packet: opcode (little-endian), parameter length,
    // parameters.
    Answer Command(const std::vector<uint8_t>& packet);

    // IOCTL_BTH_HCI_VENDOR_COMMAND for a radio of `manufacturer` at
    // `address`: the Win32 result; `output` holds the bytes returned.
    // `waitMs` is how long the call took (the command's latency, or the
    // stack's wait when no event came).
    uint32_t VendorCommand(uint16_t manufacturer, uint64_t address,
                           const std::vector<uint8_t>& input, std::vector<uint8_t>& output,
                           uint32_t outputSize, uint32_t& waitMs);

    // Instances 1..instances, at index instance - 1.
    std::vector<SimHciInstance> Instances() const;
    std::vector<SimHciExchange> Exchanges() const;

private:
    std::vector<uint8_t> Decode(uint16_t opcode, const std::vector<uint8_t>& parameters);
    uint8_t Apply(const std::vector<uint8_t>& parameters);
    bool TakeFault(uint8_t subOpcode, SimHciFault::Kind& kind);

    mutable std::mutex mutex_;
    SimHciSettings settings_;
    std::map<uint8_t, SimHciInstance> instances_;
    std::vector<SimHciExchange> exchanges_;
};

// The fields of BTH_LOCAL_RADIO_INFO that IOCTL_BTH_GET_LOCAL_INFO answers.
struct SimLocalRadio {
    uint64_t address = 0;
    uint32_t classOfDevice = 0;
    std::string name;  // UTF-8, cut at 247 bytes
    uint16_t manufacturer = 0;
    uint16_t lmpSubversion = 0;
    uint8_t lmpVersion = 0;
};

// IOCTL_BTH_GET_LOCAL_INFO: fills `output` (BTH_LOCAL_RADIO_INFO, 292
// bytes); ERROR_INSUFFICIENT_BUFFER when `outputSize` is smaller.
uint32_t SimLocalInfo(const SimLocalRadio& radio, std::vector<uint8_t>& output,
                      uint32_t outputSize);

}  // namespace connectkit::sim
