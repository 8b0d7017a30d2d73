#pragma once
// A btsnoop recording of the vendor HCI traffic the library exchanges with
// the controller, for Wireshark: version 1, datalink 1002 (HCI UART, H4),
// each record starting with its H4 packet type (0x01 command, 0x04 event),
// flagged as command sent or event received, time-stamped from the clock
// port. Command and Event are no-ops while nothing is recorded, and safe
// from any thread. The file is written with std::ofstream, as the library
// writes nothing else; a record that cannot be written ends the recording
// with a log line rather than leaving half a record behind unnoticed.

#include <cstdint>
#include <string>
#include <vector>

namespace connectkit::bluetooth {

class HciCapture {
public:
    // Starts a new file at `path` (replacing it); an earlier recording ends
    // first. False, with a log line, when the file cannot be written.
    static bool Start(const std::wstring& path);
    static void Stop();
    // An HCI command packet as sent: opcode little-endian, parameter
    // length, parameters.
    static void Command(const std::vector<uint8_t>& packet);
    // An HCI event packet as answered: code, length, parameters.
    static void Event(const std::vector<uint8_t>& packet);
};

}  // namespace connectkit::bluetooth
