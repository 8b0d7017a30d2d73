#pragma once
// Classic Bluetooth through the Win32 API of bthprops.cpl, reached through
// a table of entries resolved on first use (BluetoothEntries.h says why).
// Nothing is loaded before a call needs it; a library or entry that cannot
// be found makes every call answer that Win32 error. Radios and searches
// hold the table, so the libraries stay loaded while any of them lives.

#include <memory>
#include <mutex>

#include "platform/ports/BluetoothClassic.h"
#include "platform/windows/bluetooth/BluetoothEntries.h"

namespace connectkit::win {

class WinBluetoothClassic final : public platform::BluetoothClassic {
public:
    explicit WinBluetoothClassic(BluetoothLibraries libraries = {})
        : libraries_(std::move(libraries)) {}

    std::unique_ptr<platform::BluetoothRadioSearch> FindFirstRadio(
        std::unique_ptr<platform::BluetoothRadio>& first, uint32_t& error) override;
    uint32_t FindFirstDevice(const platform::BluetoothDeviceSearch& search,
                             platform::BluetoothDeviceInfo& first) override;

private:
    std::shared_ptr<const BluetoothEntries> Entries(uint32_t& error);

    BluetoothLibraries libraries_;
    std::mutex mutex_;
    std::shared_ptr<const BluetoothEntries> entries_;
};

}  // namespace connectkit::win
