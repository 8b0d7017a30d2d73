#pragma once
// The simulated Realtek Bluetooth application library (RealtekBTVeltra.dll):
// its five entry points (platform/ports/VendorBluetooth.h) with process-wide
// state, as the real library has. The simulated PC maps them into its loader
// and hands what they send to its controller; the Windows test double
// exports them under the real names and sends to a controller of its own.
// Nothing here knows the simulated world, so both can build it.
//
// - One device at a time: RtkApplOpenDevice hands out the same handle until
//   RtkApplCloseDevice takes it back; a call with any other handle (the
//   all-ones one included) answers kRtkFailure. `failingOpens` opens fail
//   first, leaving the handle all ones.
// - RtkSendHciLeSetMultiAdvParam sends set-parameters (sub-opcode 1) with the
//   block as it is; RtkApplSendAdv sends the advertising data (2), the scan
//   response (3, also when empty, so an earlier one does not linger) and
//   enable (5); RtkApplCloseAdv sends enable 0. The first command the
//   controller refuses ends the call with kRtkRefused + its status; one it
//   does not answer, with kRtkNoAnswer. Data over 31 bytes, or null data
//   with a length, answers kRtkFailure before anything is sent.
// - `busy` (by export name): that many calls answer kRtkBusy first and do
//   nothing, as the library does while the controller is taken.

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/ports/VendorBluetooth.h"

namespace connectkit::sim {

inline constexpr int kRtkFailure = 1;
inline constexpr int kRtkRefused = 0x100;
inline constexpr int kRtkNoAnswer = 0x200;

struct SimRealtekBluetoothSettings {
    std::map<std::string, uint32_t> busy;
    uint32_t failingOpens = 0;
};

// What the library was asked; tests read it back.
struct SimRealtekBluetoothLog {
    // Export names in call order, busy answers included.
    std::vector<std::string> calls;
    bool open = false;
};

// Sends an HCI command packet to the controller: the event packet it
// answers, empty when none came.
using SimHciSend = std::function<std::vector<uint8_t>(const std::vector<uint8_t>& packet)>;

// Replaces the settings and the controller, closes the device and starts a
// fresh log.
void ConfigureSimRealtekBluetooth(const SimRealtekBluetoothSettings& settings, SimHciSend send);
SimRealtekBluetoothLog RealtekBluetoothLog();

namespace rtkbt {

int RtkApplOpenDevice(platform::rtk::Device* device);
int RtkApplCloseDevice(platform::rtk::Device device);
int RtkSendHciLeSetMultiAdvParam(platform::rtk::Device device,
                                 const platform::rtk::MultiAdvParam* parameters);
int RtkApplSendAdv(uint8_t instance, const uint8_t* data, uint8_t dataLength,
                   const uint8_t* scanResponse, uint8_t scanResponseLength,
                   platform::rtk::Device device);
int RtkApplCloseAdv(uint8_t instance, platform::rtk::Device device);

}  // namespace rtkbt
}  // namespace connectkit::sim
