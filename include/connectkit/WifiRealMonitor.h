#pragma once
// Watches the PC's own Wi-Fi link (to any network) through Native Wi-Fi
// notifications and sends one record per connection, disconnection and roam
// to the suite's data-reporting service (type 10300: Wi-Fi type, state, SSID,
// RSSI, channel, link quality).
//
// Handlers run on the Native Wi-Fi notification thread. The listener is
// called there too; what it throws is logged and goes no further. unInit
// closes the client handle, which waits for notifications in flight: when it
// is called from inside one of the library's Wi-Fi notifications (a listener,
// or an observer of WifiNetworkService, that stops the monitor), the close is
// left to a thread of its own instead of deadlocking.
#include <cstdint>
#include <string>

#include "connectkit/Export.h"

namespace connectkit::platform {
struct WlanInterfaceAnswer;
struct WlanNotification;
enum class WlanIntfOpcode : uint32_t;
}  // namespace connectkit::platform

class WifiRealMonitorStateCallBack {
public:
    // After a connection or a roam has completed, with the new channel.
    virtual void OnWifiChannelChanged(uint32_t channel) = 0;
};

class CONNECTKIT_API WifiRealMonitor {
public:
    static WifiRealMonitor* GetInstance();

    void init();
    bool WifiRealMonitorRegist();
    void unInit();
    void RegistWifiStateChangeCallBack(WifiRealMonitorStateCallBack* callback);

    bool CheckWifiConnectSuccess(connectkit::platform::WlanNotification* data);
    void HandlerConnectComplete(connectkit::platform::WlanNotification* data);
    void HandlerDisconnect();
    void HandlerRoamingStart();
    void HandlerRoamingEnd(connectkit::platform::WlanNotification* data);
    void UpdateWifiChannel(connectkit::platform::WlanNotification* data);
    void UpdateWifiRssi(connectkit::platform::WlanNotification* data);
    void UpdateWifiSsid(connectkit::platform::WlanNotification* data);
    void SetRssiValue(long rssi);
    void ClearParas();
    void UploadData(const std::string& state);
    // Asks the interface named in the notification; true with `data` filled
    // for the opcode when the platform answered.
    bool GetInfoByWlanQueryInterface(void* handle,
                                     connectkit::platform::WlanNotification* notification,
                                     connectkit::platform::WlanIntfOpcode opcode,
                                     connectkit::platform::WlanInterfaceAnswer& data);

private:
    WifiRealMonitor();
    // Steps of its own, in a nested class so they stay out of the exports.
    struct Steps;

    char ssid[100];
    uint32_t channel;
    int32_t rssi;
    uint32_t quality;
    char wifiType[10];
    int32_t manuType;
    void* handle;
    uint8_t socketsStarted;
    uint8_t running;
    WifiRealMonitorStateCallBack* listener;
};

// Starts monitoring; false when it could not.
CONNECTKIT_API bool StartWifiRealMonitor();
CONNECTKIT_API void StopWifiRealMonitor();
