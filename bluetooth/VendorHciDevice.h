#pragma once
// The library's own way to the controller's multi-advertising commands: the
// first Bluetooth radio's handle, and vendor commands sent through the
// stack's vendor-command control code on it (bluetooth/VendorHciCommand.h).
//
// Opening: BluetoothClassic::FindFirstRadio gives the handle (the search
// itself is closed at once), its information gives the manufacturer that
// every command's header names, and the process enables
// SeLoadDriverPrivilege, without which the stack refuses vendor commands.
// A failed step logs its line and leaves the device closed.
//
// Version check, once per opening: the controller's LMP version
// (IOCTL_BTH_GET_LOCAL_INFO) and the OS build. Bluetooth 5.0 or later on
// build 19041 (release 2004) or later is where an extended-advertising
// variant would be chosen. It cannot be sent here: the control code
// carries only vendor-specific opcodes (OGF 0x3F) to the controller, and
// the OS's own stack owns the controller's standard LE advertising sets.
// So that choice is logged and the multi-advertising commands go out all
// the same; an unreadable version logs "commpareBtVersion error" and takes
// the same commands.
//
// Results: 0; the control call's Win32 error; kHciStatusBase | the
// controller's non-zero status; kErrorBadAnswer for an answer that is not
// the command complete of 0xFD54; kErrorInvalidHandle when not open;
// kErrorInvalidParameter for data over 31 bytes. Every command and every
// answer goes through HciCapture.
//
// No lock: the owner (VendorMultiAdv) serialises its calls.

#include <cstdint>
#include <memory>
#include <vector>

#include "bluetooth/AdvPayload.h"
#include "platform/ports/VendorBluetooth.h"

namespace connectkit::platform {
class BluetoothRadio;
}

namespace connectkit::bluetooth {

inline constexpr uint32_t kErrorInvalidHandle = 6;
inline constexpr uint32_t kErrorBadAnswer = 13;  // ERROR_INVALID_DATA
inline constexpr uint32_t kErrorInvalidParameter = 87;
// Application-defined Win32 codes have bit 29 set.
inline constexpr uint32_t kHciStatusBase = 0x20000000;

class VendorHciDevice {
public:
    VendorHciDevice();
    ~VendorHciDevice();

    // 0, or the failed step's error.
    uint32_t Open();
    void Close();
    bool IsOpen() const { return radio_ != nullptr; }

    // Set parameters, data, scan response (when `respLength` is not 0) and
    // enable, stopping at the first failure.
    uint32_t SendAdvertise(const platform::rtk::MultiAdvParam& parameters, const AdvBuffer& adv,
                           size_t advLength, const AdvBuffer& resp, size_t respLength);
    // The enable command with 0.
    uint32_t CloseAdvertise(uint8_t instance);

private:
    uint32_t Send(const std::vector<uint8_t>& parameters);
    void CheckVersion();

    std::unique_ptr<platform::BluetoothRadio> radio_;
    uint16_t manufacturer_ = 0;
    bool extendedChosen_ = false;
};

}  // namespace connectkit::bluetooth
