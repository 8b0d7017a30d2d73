#pragma once
// The PC's Bluetooth radio: its state, switching it on and off, its address
// and name, renaming it, and observers of its state changes.
//
// Three ways to the radio, in this order: the platform's radio object (state,
// changes, switching); the Win32 Bluetooth radio (presence, address, name);
// and, when the platform lists no radio (switched off hard), the controller's
// device node with its "Device Parameters" registry key and the class
// installer.
//
// Observers are called on the thread that caused the change: a platform
// thread for the radio's own changes, the caller's thread for
// GetBluetoothState, EnableBluetoothWithBtPtrIsNull and setradio (then with
// the object's lock held; it is recursive, so an observer may call back in).
// What an observer throws is caught and logged at its call; the others still
// hear. An observer may unregister itself during delivery. Unregistration
// from any other thread returns once no delivery to that observer is under
// way (waiting at most 5 s), so the observer may be destroyed then unless it
// is registered once more (each registration is an entry of its own and one
// unregistration removes one); from inside its own delivery it returns at
// once (bluetooth/RadioObservers.h).
//
// Decisions of our own:
// - The radio is held in a RadioHolder (bluetooth/RadioDeviceMgr.h), which
//   exists as long as this object does; "a radio is held" means the holder
//   has one. It is read under a lock of its own, so the unlocked readers
//   (EnableBluetooth's first test, GetBluetoothState2) never race the
//   look-up that fills it.
// - Each subscription to the radio's StateChanged is a handler that reaches
//   this object only through the static `bluetoothManage`; its token is
//   dropped and it is never removed. Before the first one is handed to the
//   platform the module pins itself in the process (platform/ModuleLifetime.h),
//   so a handler never runs in an unloaded module. For the same reason the
//   object is never destroyed.
// - The progress traces ("...start", "try %u...") are formatted and dropped
//   (foundation/DebugTrace.h), as the suite's release builds do; warnings
//   and errors go to the logger.
// - Hardened input: registry values of the wrong type or over their buffer
//   (RadioState as text, DeviceAddressCache that is not at most 6 bytes of
//   hexadecimal text, Local Name over 256 bytes) count as unreadable, with a
//   log line; a Local Name that is not UTF-8 is taken with replacement
//   characters and logged; SetBTName refuses a name whose UTF-8 is over 256
//   bytes or that holds a NUL (12); a radio that throws is a failure result.
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "connectkit/CriticalSection.h"
#include "connectkit/Export.h"

namespace connectkit::platform {
class Radio;
// Windows.Devices.Radios.RadioState: 0 unknown, 1 on, 2 off, 3 disabled, as
// BluetoothState (compare through static_cast<int>).
enum class RadioState : int32_t;
}  // namespace connectkit::platform
namespace connectkit::bluetooth {
template <typename Observer>
class ObserverList;
}  // namespace connectkit::bluetooth

class RadioHolder;

namespace ConnectKitBluetooth {

// BLUETOOTH_ADDRESS in the low 6 bytes, least significant byte first.
struct CONNECTKIT_API BT_ADDRESS {
    uint64_t address = 0;
    std::wstring name;
};

enum BluetoothState {
    BT_STATE_UNKNOWN = 0,
    BT_STATE_ON = 1,
    BT_STATE_OFF = 2,
    BT_STATE_DISABLED = 3,
};

enum EnableBTResult {
    // Switch requested (or found on through the fallback).
    ENABLE_BT_REQUESTED = 0,
    // Already in the requested state.
    ENABLE_BT_ALREADY = 1,
    ENABLE_BT_DISABLED = 2,
    // Unknown state, a platform failure, a failed fallback, or the fallback
    // asked to switch off.
    ENABLE_BT_FAILED = 3,
};

class CONNECTKIT_API BluetoothManage {
public:
    class CONNECTKIT_API IBluetoothStateChangeNotification {
    public:
        virtual void OnBluetoothStateChanged(connectkit::platform::RadioState state) = 0;
        virtual ~IBluetoothStateChangeNotification();
    };

    static BluetoothManage* GetInstance();
    // Set once the object exists; read by the platform's state handler.
    static std::atomic<BluetoothManage*> bluetoothManage;

    // 1 asks for on, anything else for off.
    EnableBTResult EnableBluetooth(int enable);
    // On through the registry and the device node; off is refused (3).
    EnableBTResult EnableBluetoothWithBtPtrIsNull(int enable);
    BluetoothState GetBluetoothState();
    // No lock, no new look-up, no notification.
    BluetoothState GetBluetoothState2();
    // Points at this object's own copy, which every call overwrites. Null
    // when a radio's information cannot be read.
    const BT_ADDRESS* GetBtMacAndName();
    std::wstring GetBtName();
    // 0, or 12 when the name cannot be written.
    int SetBTName(const std::wstring& name);
    bool IsBluetoothAvailable();
    bool IsRadioAvailable();
    // Makes the radio run a short inquiry; the devices found are not used.
    void BluetoothScan();
    // 1, or 0 for a null observer. A null observer leaves this object's lock
    // held by the calling thread, as the suite's callers know it.
    int RegistBluetoothStateChangeCallback(IBluetoothStateChangeNotification* observer);
    int UnRegistBluetoothStateChangeCallback(IBluetoothStateChangeNotification* observer);
    // Drops an "on" while the Win32 API finds no radio.
    void NotifyBluetoothStateChanged(connectkit::platform::RadioState state);
    void UpdateBluetoothStateChanged(connectkit::platform::RadioState state);
    // Wakes the radio: up to 30 tries a second apart, then back to the
    // registry's setting (a radio the registry has off goes on and off).
    void setradio();

    BluetoothManage(const BluetoothManage&) = delete;
    BluetoothManage& operator=(const BluetoothManage&) = delete;

private:
    friend class BluetoothManageInspector;

    BluetoothManage();
    ~BluetoothManage();

    int SetBluetoothRadio();
    int EnableBluetooth_ByRegist(int enable);
    int GetBluetoothState_ByRegist(int* on);
    int GetBluetoothState_Bydevice(int* on);
    int GetBtmac_ByRegist(char* out, int size);
    int GetBtname_ByRegist(std::wstring& name);
    // Disables and re-enables the controller when `ok` is non-zero; `ok`
    // ends as the class installer's last answer.
    void SwitchBtController(int& ok, const std::wstring& instanceId);
    static void BluetoothStateChangeCallback(connectkit::platform::Radio& sender);

    BT_ADDRESS address_;
    std::unique_ptr<RadioHolder> radio_;
    // With a lock of its own: delivery walks a snapshot without this
    // object's lock, as the platform thread must never wait for a caller
    // that holds it across a radio listing.
    std::unique_ptr<connectkit::bluetooth::ObserverList<IBluetoothStateChangeNotification>>
        observers_;
    ConnectKit::CCriticalSection lock_;
};

}  // namespace ConnectKitBluetooth
