#pragma once
// The Realtek Bluetooth application library (RealtekBTVeltra.dll), loaded
// through the Loader port by name, never linked: its five entry points and
// the parameter block they share. The simulated library and the Windows test
// double export the same shapes, so all three name them here.
//
// Every entry answers 0 on success, kRtkBusy when the controller could not
// take the command yet (the caller repeats it), any other value on failure.

#include <cstdint>

namespace connectkit::platform::rtk {

inline constexpr wchar_t kLibraryName[] = L"RealtekBTVeltra.dll";
inline constexpr int kRtkSuccess = 0;
inline constexpr int kRtkBusy = 5;

// The library's device handle; all ones when no device is open.
using Device = void*;
inline Device InvalidDevice() {
    return reinterpret_cast<Device>(~uintptr_t{0});
}

// The multi-advertising parameters, laid out as the vendor command's
// set-parameters block after its sub-opcode (23 bytes, packed).
#pragma pack(push, 1)
struct MultiAdvParam {
    uint16_t intervalMin;  // units of 0.625 ms
    uint16_t intervalMax;
    uint8_t advertisingType;  // 2 scannable undirected, 3 non-connectable
    uint8_t ownAddressType;   // 0 public, 1 random
    uint8_t ownAddress[6];
    uint8_t directAddressType;
    uint8_t directAddress[6];
    uint8_t channelMap;  // 7: channels 37, 38 and 39
    uint8_t filterPolicy;
    uint8_t instance;
    int8_t transmitPower;
};
#pragma pack(pop)
static_assert(sizeof(MultiAdvParam) == 23, "the vendor block is 23 bytes");

// Opens the controller: fills `device`, or leaves it invalid.
using OpenDeviceFn = int (*)(Device* device);
using CloseDeviceFn = int (*)(Device device);
using SetMultiAdvParamFn = int (*)(Device device, const MultiAdvParam* parameters);
// Advertising data and scan response (each at most 31 bytes; the response
// may be absent with length 0) for `instance`, then enables it.
using SendAdvFn = int (*)(uint8_t instance, const uint8_t* data, uint8_t dataLength,
                          const uint8_t* scanResponse, uint8_t scanResponseLength, Device device);
using CloseAdvFn = int (*)(uint8_t instance, Device device);

inline constexpr char kOpenDevice[] = "RtkApplOpenDevice";
inline constexpr char kCloseDevice[] = "RtkApplCloseDevice";
inline constexpr char kSetMultiAdvParam[] = "RtkSendHciLeSetMultiAdvParam";
inline constexpr char kSendAdv[] = "RtkApplSendAdv";
inline constexpr char kCloseAdv[] = "RtkApplCloseAdv";

}  // namespace connectkit::platform::rtk
