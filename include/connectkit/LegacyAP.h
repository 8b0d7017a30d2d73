#pragma once
// The PC's Wi-Fi Direct group owner in "legacy" mode: an access point with an
// SSID and a WPA2 pass phrase that an ordinary phone joins as a Wi-Fi client.
//
// Start and Stop are synchronous: they hold the object's lock across the
// publisher's start (up to 60 s), its stop (up to 5 s) and the start pacing
// (up to 2 s). Two users can need the access point at once, one per
// EGoPurpose; it is torn down only when neither needs it any more.
//
// Notification objects are called with the lock held, on detached threads or
// platform threads, never on the thread that called Start or Stop (except for
// the "started" and "stopped" notices that Start and Stop give themselves).
// The lock is recursive, so a notification may call back into LegacyAP; it
// must not wait for another LegacyAP event, which needs the lock on another
// thread.
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "connectkit/CriticalSection.h"
#include "connectkit/Export.h"

class SoftAPManager;

namespace connectkit::platform {
class Mutex;
class PasswordCredential;
class Semaphore;
class WiFiDirectConnectionListener;
class WiFiDirectConnectionRequest;
class WiFiDirectDevice;
class WiFiDirectPublisher;
struct PublisherStatusChange;
enum class AsyncStatus : int32_t;
}  // namespace connectkit::platform

namespace ConnectKit {

// Which user of the access point asks for it; each has its own "needed" flag.
enum EGoPurpose { E_GO_PURPOSE_GENERAL = 0, E_GO_PURPOSE_SOFTAP = 1 };

// The publisher's status, as the platform reports it.
enum LegacyAPAdvertisemenStatus {
    LEGACY_AP_CREATED = 0,
    LEGACY_AP_STARTED = 1,
    LEGACY_AP_STOPPED = 2,
    LEGACY_AP_ABORTED = 3,
};

enum LegacyAPDeviceConnectionStatus {
    LEGACY_AP_DEVICE_DISCONNECTED = 0,
    LEGACY_AP_DEVICE_CONNECTED = 1,
};

struct CONNECTKIT_API LegacyAPDeviceInformation {
    // The platform's Wi-Fi Direct device id.
    std::wstring deviceId;
    // The phone's address; empty unless it is connected.
    std::wstring ipAddress;
};

class CONNECTKIT_API LegacyAP {
public:
    // Observers of the access point. Every operation has an empty default.
    class CONNECTKIT_API ILegacyAPNotification {
    public:
        ILegacyAPNotification();
        ILegacyAPNotification(const ILegacyAPNotification&);
        ILegacyAPNotification& operator=(const ILegacyAPNotification&);
        virtual void OnLegacyAPAdvertiserStatusChanged(LegacyAPAdvertisemenStatus status);
        // No path of this library raises it; derived classes may.
        virtual void OnLegacyAPConnectionRequested(LegacyAPDeviceInformation device);
        virtual void OnLegacyAPConnectionStatusChanged(LegacyAPDeviceConnectionStatus status,
                                                       LegacyAPDeviceInformation device);
        virtual ~ILegacyAPNotification();
    };

    static LegacyAP* GetInstance();

    // The SSID is advertised as "DIRECT-" + ssid + "-veltra".
    void SetSSID(const std::wstring& ssid);
    void SetPassphrase(const std::wstring& passphrase);
    // As the caller gave them.
    std::wstring GetSSID() const;
    std::wstring GetPassphrase() const;

    // Stops everything and closes the status semaphore: later starts fail.
    void Release();
    // 0 when the access point runs for `purpose`, -1 on failure.
    int Start(EGoPurpose purpose);
    // Always 0. `ignoredFlag` and `ignoredValue` are accepted for callers
    // that pass them; `waitMs` is capped at 5000.
    int Stop(bool releaseGo, bool notify, bool ignoredFlag, unsigned int ignoredValue,
             unsigned int waitMs, EGoPurpose purpose);
    LegacyAPAdvertisemenStatus GetLegacyAPStatus();
    bool IsLegacyAPNeed();
    bool IsLegacyAPReady();
    void ClearLegacyAPFlag();

    // A null or already registered object changes nothing. Both return 0.
    int RegisterLegacyAPNotificationEventCallback(ILegacyAPNotification* callback);
    int UnRegisterLegacyAPNotificationEventCallback(ILegacyAPNotification* callback);

    LegacyAP(const LegacyAP&) = delete;
    LegacyAP& operator=(const LegacyAP&) = delete;

private:
    friend class LegacyAPInspector;
    // Creation holds this object's lock from its existence check through the
    // start and the read-back of the SSID and pass phrase, so two creators
    // never mix their pairs.
    friend class ::SoftAPManager;
    // A phone's device, kept while its status subscription is needed.
    struct KeptDevice {
        std::shared_ptr<connectkit::platform::WiFiDirectDevice> device;
        int64_t token = 0;
    };

    LegacyAP();
    ~LegacyAP();

    bool StartListener();
    void StopListener();
    void StopPublisher();
    void NotifyLegacyAPAdvertiseStateChanged(
        connectkit::platform::WiFiDirectPublisher& sender,
        const connectkit::platform::PublisherStatusChange& change);
    void NotifyStatusChangeed(connectkit::platform::PublisherStatusChange change);
    void NotifyLegacyAPConnectionRequested(
        const std::shared_ptr<connectkit::platform::WiFiDirectConnectionRequest>& request);
    void NotifyLegacyAPConnected(
        connectkit::platform::AsyncStatus status,
        const std::shared_ptr<connectkit::platform::WiFiDirectDevice>& device);
    void NotifyLegacyAPConnectionStatusChanged(connectkit::platform::WiFiDirectDevice& device);
    void HandConnectionStatusCallBack(connectkit::platform::WiFiDirectDevice& device,
                                      const LegacyAPDeviceInformation& information);
    void NotifyAdvertiserStatus(LegacyAPAdvertisemenStatus status);
    template <typename Call>
    void ForEachNotification(const Call& call);
    bool WaitForStatus(uint32_t timeoutMs);
    void ReleaseStatusSemaphore();
    void DropDevice(connectkit::platform::WiFiDirectDevice& device);
    void FailStart(uint64_t now);

    std::shared_ptr<connectkit::platform::WiFiDirectPublisher> publisher_;
    std::shared_ptr<connectkit::platform::WiFiDirectConnectionListener> listener_;
    int64_t statusChangedToken_;
    int64_t connectionRequestedToken_;
    std::vector<ILegacyAPNotification*> notifications_;
    std::wstring advertisedSsid_;
    bool ssidSet_;
    std::shared_ptr<connectkit::platform::PasswordCredential> passphraseCredential_;
    bool passphraseSet_;
    std::unique_ptr<CBaseLock> lock_;
    std::shared_ptr<connectkit::platform::Semaphore> statusSemaphore_;
    uint64_t lastStartTick_;
    std::wstring ssid_;
    std::wstring passphrase_;
    std::wstring ssidPrefix_;
    std::wstring ssidSuffix_;
    std::atomic<bool> started_;
    std::atomic<bool> aborted_;
    uint64_t succCount_;
    uint64_t failCount_;
    uint64_t totalCount_;
    uint32_t continueFailCount_;
    uint32_t restartWiFiDirectVirtualAdapterCount_;
    uint32_t continueRestartCount_;
    bool needed_[2];
    bool reserved_;

    // Guards the semaphore handle (the status handler runs without the lock)
    // and the devices kept for their status subscriptions.
    std::unique_ptr<connectkit::platform::Mutex> handlesMutex_;
    std::vector<std::shared_ptr<KeptDevice>> devices_;
    // True while a listener runs: a device that connects later is not kept.
    bool keepDevices_ = false;
};

}  // namespace ConnectKit
