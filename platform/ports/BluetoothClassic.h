#pragma once
// Classic Bluetooth through the Win32 API (bthprops): radios, their
// information, device inquiries and control codes sent to a radio. Results
// are Win32 error codes. Search and radio objects close their handles when
// destroyed, so no caller closes a handle by hand.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace connectkit::platform {

inline constexpr uint32_t kErrorNoMoreItems = 259;

// BLUETOOTH_RADIO_INFO, reduced to its values.
struct BluetoothRadioInfo {
    // BLUETOOTH_ADDRESS: the device address in the low 6 bytes, least
    // significant byte first.
    uint64_t address = 0;
    std::wstring name;
    uint32_t classOfDevice = 0;
    uint16_t lmpSubversion = 0;
    uint16_t manufacturer = 0;
};

// BLUETOOTH_DEVICE_INFO, reduced to its values.
struct BluetoothDeviceInfo {
    uint64_t address = 0;
    std::wstring name;
    uint32_t classOfDevice = 0;
    bool connected = false;
    bool remembered = false;
    bool authenticated = false;
};

// BLUETOOTH_DEVICE_SEARCH_PARAMS without its size and radio handle (null:
// every radio).
struct BluetoothDeviceSearch {
    bool returnAuthenticated = false;
    bool returnRemembered = false;
    bool returnUnknown = false;
    bool returnConnected = false;
    bool issueInquiry = false;
    // Inquiry length in units of 1.28 s.
    uint8_t timeoutMultiplier = 0;
};

// An open radio handle.
class BluetoothRadio {
public:
    virtual ~BluetoothRadio() = default;
    // BluetoothGetRadioInfo.
    virtual uint32_t Info(BluetoothRadioInfo& info) = 0;
    // DeviceIoControl on the radio handle. `output` is resized to
    // `outputSize` before the call and to the bytes returned after it.
    virtual uint32_t Control(uint32_t code, const std::vector<uint8_t>& input,
                             std::vector<uint8_t>& output, uint32_t outputSize) = 0;
};

// An open BluetoothFindFirstRadio search.
class BluetoothRadioSearch {
public:
    virtual ~BluetoothRadioSearch() = default;
    // BluetoothFindNextRadio: the next radio, or null with kErrorNoMoreItems
    // (or another error) in `error`.
    virtual std::unique_ptr<BluetoothRadio> Next(uint32_t& error) = 0;
};

class BluetoothClassic {
public:
    virtual ~BluetoothClassic() = default;
    // BluetoothFindFirstRadio: the search and its first radio, or null (and
    // `first` null) with the reason in `error`.
    virtual std::unique_ptr<BluetoothRadioSearch> FindFirstRadio(
        std::unique_ptr<BluetoothRadio>& first, uint32_t& error) = 0;
    // BluetoothFindFirstDevice followed at once by BluetoothFindDeviceClose:
    // runs the search (and the inquiry it asks for) and answers the first
    // device found. kErrorNoMoreItems when none was.
    virtual uint32_t FindFirstDevice(const BluetoothDeviceSearch& search,
                                     BluetoothDeviceInfo& first) = 0;
};

}  // namespace connectkit::platform
