#pragma once
// The byte layouts that travel through BluetoothRadio::Control for the
// Bluetooth stack's vendor-command and local-information control codes, as
// bthioctl.h declares them (packed, little-endian). The library writes and
// reads them with explicit offsets; the simulated controller and the
// Windows test double decode them with the same offsets, so both sides
// name one layout.

#include <cstddef>
#include <cstdint>

namespace connectkit::platform::hci {

// IOCTL_BTH_HCI_VENDOR_COMMAND: input BTH_VENDOR_SPECIFIC_COMMAND, output
// BTH_VENDOR_EVENT_INFO. The caller needs SeLoadDriverPrivilege.
inline constexpr uint32_t kIoctlVendorCommand = 0x410050;
// IOCTL_BTH_GET_LOCAL_INFO: no input, output BTH_LOCAL_RADIO_INFO.
inline constexpr uint32_t kIoctlGetLocalInfo = 0x410000;

// BTH_VENDOR_SPECIFIC_COMMAND
namespace command {
inline constexpr size_t kManufacturerId = 0;         // ULONG
inline constexpr size_t kLmpVersion = 4;             // UCHAR: 0 sends to any version
inline constexpr size_t kMatchAnySinglePattern = 5;  // BOOLEAN
inline constexpr size_t kOpCode = 6;                 // USHORT (BTH_COMMAND_HEADER)
inline constexpr size_t kTotalParameterLength = 8;   // UCHAR: the parameters only
inline constexpr size_t kData = 9;                   // parameters, then patterns
}  // namespace command

// BTH_VENDOR_PATTERN, following the parameters: offset into the event's
// parameters (after the 2-byte event header), size, then the bytes.
namespace pattern {
inline constexpr size_t kOffset = 0;
inline constexpr size_t kSize = 1;
inline constexpr size_t kBytes = 2;
}  // namespace pattern

// BTH_VENDOR_EVENT_INFO
namespace event {
inline constexpr size_t kAddress = 0;    // BTH_ADDR of the local radio
inline constexpr size_t kEventSize = 8;  // ULONG: bytes of EventInfo, header included
inline constexpr size_t kEventInfo = 12;
}  // namespace event

// HCI events as EventInfo holds them: code, parameter length, parameters.
inline constexpr uint8_t kEventCommandComplete = 0x0E;
inline constexpr uint8_t kEventCommandStatus = 0x0F;

// BTH_LOCAL_RADIO_INFO (292 bytes): packed itself, but its first member,
// BTH_DEVICE_INFO, is declared unpacked in bthdef.h and takes 272 bytes.
// The fields the version check reads:
namespace localInfo {
inline constexpr size_t kHciRevision = 276;    // USHORT
inline constexpr size_t kHciVersion = 278;     // UCHAR
inline constexpr size_t kManufacturer = 287;   // USHORT (BTH_RADIO_INFO.mfg)
inline constexpr size_t kLmpSubversion = 289;  // USHORT
inline constexpr size_t kLmpVersion = 291;     // UCHAR
inline constexpr size_t kSize = 292;
}  // namespace localInfo

// The vendor LE multi-advertising command (OGF 0x3F, OCF 0x154) and its
// sub-opcodes, first byte of the parameters.
inline constexpr uint16_t kOpMultiAdvertising = 0xFD54;
inline constexpr uint8_t kSubSetParameters = 1;
inline constexpr uint8_t kSubSetData = 2;
inline constexpr uint8_t kSubSetScanResponse = 3;
inline constexpr uint8_t kSubEnable = 5;
// Parameter lengths, sub-opcode included.
inline constexpr uint8_t kSetParametersLength = 24;
inline constexpr uint8_t kSetDataLength = 34;
inline constexpr uint8_t kEnableLength = 3;
// HCI status codes a controller answers in the command-complete event.
inline constexpr uint8_t kStatusSuccess = 0x00;
inline constexpr uint8_t kStatusUnknownCommand = 0x01;
inline constexpr uint8_t kStatusInvalidParameters = 0x12;
inline constexpr uint8_t kStatusCommandDisallowed = 0x0C;

}  // namespace connectkit::platform::hci
