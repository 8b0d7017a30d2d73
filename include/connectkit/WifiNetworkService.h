#pragma once
// The PC as a Wi-Fi client of the phone's access point: a temporary WLAN
// profile, the connection through Native Wi-Fi, the connection state that
// Native Wi-Fi notifications move, and the DHCP address of the Wi-Fi adapter.
//
// Observers are called with the observer lock held, on the thread that
// reports: the caller of Connect, or a Native Wi-Fi notification thread. An
// observer that throws is logged and the others are still called. The
// client handle is opened by the first Connect, DisConnnect or Scan and is
// never closed: closing waits for notification callbacks in flight, which
// must never happen under the loader lock or inside a callback, and the
// module stays loaded from that moment anyway (platform/ModuleLifetime.h).
#include <atomic>
#include <cstdint>
#include <list>
#include <mutex>
#include <string>
#include <vector>

#include "connectkit/Export.h"

namespace connectkit::platform {
struct Guid;
struct NetworkAdapterInfo;
struct WlanConnectionNotificationData;
struct WlanNotification;
}  // namespace connectkit::platform

namespace WifiConnectManage {

enum WifiConnectState : int32_t {
    WifiStateIdle = 0,
    WifiConnecting = 1,
    WifiConnected = 2,
    WifiConnectIncomplete = 3,
    WifiDisConnected = 4,
    WifiConnectFailed = 5,
};

// The network to join. `ssid` names the profile too.
struct ApInfo {
    std::wstring ssid;
    std::wstring key;  // empty for an open network
    std::wstring authentication;
    std::wstring encryption;
};

class CONNECTKIT_API WifiNetworkService {
public:
    class CONNECTKIT_API IWifiNetworkServiceObserver {
    public:
        virtual void OnWifiStateChanged(std::wstring ssid, WifiConnectState state) = 0;
    };

    static WifiNetworkService* GetInstance();

    // Scans until the network shows (at most 50 passes of 100 ms), then joins
    // it with a temporary profile. True once the attempt is under way; its
    // outcome comes as state changes.
    bool Connect(std::wstring ssid, std::wstring key, bool waitForScan, int channel,
                 std::vector<char> bssid, bool useScanFilter);
    bool DisConnnect();
    bool Scan();
    std::list<std::string> getScanResults();
    bool RegistObserver(IWifiNetworkServiceObserver* observer);
    bool UnregistObserver(IWifiNetworkServiceObserver* observer);
    WifiConnectState GetCurentWifiState();
    static std::wstring StateToString(WifiConnectState state);
    // Starts a console command without a window and does not wait for it.
    bool exec(wchar_t* commandLine, int mode);

    // 1 when the Wi-Fi Direct virtual adapter has an IPv4 address.
    int Getadapter() const;
    // A usable DHCP address of the Wi-Fi adapter in `ip`: 0, or -1.
    int GetDynamicIP(std::string& ip);

    static WifiNetworkService* wifiNetworkService;

private:
    friend class WifiNetworkServiceInspector;

    WifiNetworkService();

    void InstanceHandle();
    bool RegisterNotificationCallback(void* handle,
                                      void (*callback)(connectkit::platform::WlanNotification*,
                                                       void*));
    bool UnregisterNotificationCallback(void* handle,
                                        void (*callback)(connectkit::platform::WlanNotification*,
                                                         void*));
    bool IsConnected(void* handle, std::wstring profileName,
                     connectkit::platform::Guid& interfaceGuid, bool& interfaceFound,
                     bool disconnectOther);
    std::wstring CreateProfile(const ApInfo& info);
    std::wstring GetHexString(std::wstring text);
    void setfilter(std::string ssid, int channel, std::string reserved1, const unsigned char* bssid,
                   std::string reserved2, std::string reserved3);

    static void OnNotificationReceived(connectkit::platform::WlanNotification* notification,
                                       void* context);
    void OnNotificationReceived_(connectkit::platform::WlanNotification* notification,
                                 void* context);
    void AcmNotificationDispatch(connectkit::platform::WlanNotification* notification,
                                 connectkit::platform::WlanConnectionNotificationData* data);
    void MsmNotificationDispatch(connectkit::platform::WlanNotification* notification,
                                 connectkit::platform::WlanConnectionNotificationData* data);
    void NotifyWifiStateChanged(std::wstring ssid, WifiConnectState state);
    static void WifiStateChangeCallback(std::wstring ssid, WifiConnectState state);

    int GetCurrentIP();
    bool VerifyDynamicIP(std::string& ip);
    void IPhandle(bool renew);
    int GetIndex();
    std::wstring GetFriendlyName();
    // The adapter-information list; a Win32 code, the list empty on failure.
    unsigned long getAdapt(std::vector<connectkit::platform::NetworkAdapterInfo>& list) const;

    std::list<std::string> scanResults_;
    std::list<IWifiNetworkServiceObserver*> observers_;
    // Recursive, so that an observer may register or unregister from inside
    // its call; observers are called over a copy of the list.
    std::recursive_mutex observerMutex_;
    // Written on notification threads, read on the host's.
    std::atomic<WifiConnectState> state_{WifiStateIdle};
    // Opening is serialised; notification threads read the handle.
    std::mutex handleMutex_;
    std::atomic<void*> handle_{nullptr};
    std::string currentIp_ = "0.0.0.0";
};

}  // namespace WifiConnectManage
