#pragma once
// The PC's Wi-Fi radio: its state, switching it on and off, and observers of
// its state changes.
//
// Observers are called on the platform's thread that raised the change,
// without this object's lock; what one throws is caught and logged at its
// call, and the others still hear. An observer may register or unregister
// from inside its call. Unregistration from any other thread returns once no
// delivery to that entry is under way (waiting at most 5 s), so the observer
// may be destroyed then unless it is registered once more (one
// unregistration removes one entry) (bluetooth/RadioObservers.h).
//
// Decisions of our own, as for the Bluetooth radio (BluetoothManage.h): the
// radio lives in a RadioHolder that exists as long as this object; the
// state handler reaches this object through the static `wifiManage` only;
// it is never removed, so the module pins itself before the handler is
// handed over and the object is never destroyed. A
// radio that throws gives the failure result (3, or state 0).
#include <atomic>
#include <cstdint>
#include <memory>

#include "connectkit/CriticalSection.h"
#include "connectkit/Export.h"

namespace connectkit::platform {
class Radio;
// Windows.Devices.Radios.RadioState: 0 unknown, 1 on, 2 off, 3 disabled, as
// WifiState (compare through static_cast<int>).
enum class RadioState : int32_t;
}  // namespace connectkit::platform
namespace connectkit::bluetooth {
template <typename Observer>
class ObserverList;
}  // namespace connectkit::bluetooth

class RadioHolder;

namespace ConnectKitWifi {

enum WifiState {
    WIFI_STATE_UNKNOWN = 0,
    WIFI_STATE_ON = 1,
    WIFI_STATE_OFF = 2,
    WIFI_STATE_DISABLED = 3,
};

enum EnableWifiResult {
    ENABLE_WIFI_REQUESTED = 0,
    ENABLE_WIFI_ALREADY = 1,
    // Cannot be switched from software.
    ENABLE_WIFI_DISABLED = 2,
    // No Wi-Fi radio, or its state is unknown.
    ENABLE_WIFI_FAILED = 3,
};

class CONNECTKIT_API WifiManage {
public:
    class CONNECTKIT_API IWifiStateChangeNotification {
    public:
        virtual void OnWifiStateChanged(connectkit::platform::RadioState state) = 0;

    protected:
        // Not virtual: the interface has the one operation. The library never
        // deletes an observer.
        ~IWifiStateChangeNotification() = default;
    };

    static WifiManage* GetInstance();
    // Set once the object exists; read by the platform's state handler.
    static std::atomic<WifiManage*> wifiManage;

    // 1 asks for on, any other value for off.
    EnableWifiResult EnableWifi(int enable);
    WifiState GetWifiState();
    // 1, or 0 for a null observer. Duplicates are kept: each is called.
    int RegistWifiStateChangeCallback(IWifiStateChangeNotification* observer);
    // Removes one entry. 1, or 0 for a null observer.
    int UnRegistWifiStateChangeCallback(IWifiStateChangeNotification* observer);

    WifiManage(const WifiManage&) = delete;
    WifiManage& operator=(const WifiManage&) = delete;

private:
    WifiManage();
    ~WifiManage();

    int SetWifiRadio();
    void NotifyWifiStateChanged(connectkit::platform::RadioState state);
    static void WifiStateChangeCallback(connectkit::platform::Radio& sender);

    std::unique_ptr<RadioHolder> radio_;
    // With a lock of its own, held only to change or copy the list.
    std::unique_ptr<connectkit::bluetooth::ObserverList<IWifiStateChangeNotification>> observers_;
    ConnectKit::CCriticalSection lock_;
};

}  // namespace ConnectKitWifi
