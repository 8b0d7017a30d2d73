#pragma once
// The suite's entry into the hotspot: open the Wi-Fi Direct legacy access
// point for the phone and hand back what the phone needs to join it.
//
// CreateSoftAP's results are named in SoftAPResult.h. A non-zero channel
// refresh error is kept for GetSoftApError even when the result is 0.
#include <atomic>
#include <memory>
#include <string>

#include "connectkit/Export.h"
#include "connectkit/LegacyAP.h"
#include "connectkit/SoftAPResult.h"

namespace connectkit::platform {
class Mutex;
}

struct CONNECTKIT_API SoftAPInfo {
    // "DIRECT-" + SSID part + "-veltra".
    std::string ssid;
    std::string passphrase;
    unsigned char mac[6] = {};
    unsigned char channel = 0;
    // In: handed to the channel planner (see ChannelSelect::SetAPFrequence).
    bool apFlag = false;
    std::string ip;
};

// The suite's observer of phones joining (1) and leaving (0).
class CONNECTKIT_API ISoftApConnectStatus {
public:
    virtual void OnSoftApConnectStatus(int status) = 0;
    virtual ~ISoftApConnectStatus();
};

class CONNECTKIT_API SoftAPManager : public ConnectKit::LegacyAP::ILegacyAPNotification {
public:
    static SoftAPManager* GetInstance();
    // Does nothing: the manager lives as long as the process.
    static void DestroyInstance();

    int CreateSoftAP(SoftAPInfo& info);
    // Returns what the legacy AP's Stop returns; `info` is not used.
    int DestroySoftAP(SoftAPInfo& info);
    unsigned char RefreshSoftAPChannel();
    bool CheckSoftAPExist();
    bool CheckMySoftAPExist();
    bool CheckOtherSoftAPExist();
    void RefreshSSIDAndPasswd(std::string& ssidPart, std::string& passphrase);
    // The next creation makes a new SSID part and pass phrase.
    void ChangeSSIDAndPasswd();
    bool GetRestartMobileHotpotFlag();
    void SetRestartMobileHotpotFlag(bool restart);
    int GetLastError();
    // Replaces the one observer; null clears it. Not owned.
    void RegistSoftApConnectStatus(ISoftApConnectStatus* observer);

    void OnLegacyAPAdvertiserStatusChanged(ConnectKit::LegacyAPAdvertisemenStatus status) override;
    void OnLegacyAPConnectionStatusChanged(ConnectKit::LegacyAPDeviceConnectionStatus status,
                                           ConnectKit::LegacyAPDeviceInformation device) override;

    SoftAPManager(const SoftAPManager&) = delete;
    SoftAPManager& operator=(const SoftAPManager&) = delete;

private:
    SoftAPManager();
    ~SoftAPManager() override;
    int StartFailed(bool restarted);
    bool WaitForMac(unsigned char mac[6]);
    int NoMac(unsigned char mac[6]);

    std::atomic<bool> restartMobileHotspot;
    bool changeCredentials;
    bool credentialsKept;
    std::string ssidPart;
    std::string passphrase;
    std::string ssidPrefix;
    std::string ssidSuffix;
    std::atomic<int> lastError;
    std::atomic<ISoftApConnectStatus*> connectStatus;
    // Guards changeCredentials, ssidPart and passphrase only, and is never
    // held across a call out of the manager: a suite observer called under
    // the legacy AP's lock may call straight back in.
    std::unique_ptr<connectkit::platform::Mutex> credentialsMutex;
};

CONNECTKIT_API int SystemCreateSoftAP(SoftAPInfo& info);
CONNECTKIT_API int SystemDestroySoftAP(SoftAPInfo& info);
CONNECTKIT_API unsigned char SystemRefreshSoftAPChannel();
CONNECTKIT_API int GetSoftApError();
// The channel the channel planner last recorded.
CONNECTKIT_API unsigned char GetSoftAPChannel();
CONNECTKIT_API void RegistSoftApConnectStatus(ISoftApConnectStatus* observer);
CONNECTKIT_API bool GetRestartMobileHotpotFlag();
CONNECTKIT_API void SetRestartMobileHotpotFlag(bool restart);
// Checks and restarts nothing; always true.
CONNECTKIT_API bool CheckAndRestartWifiVirtualAdapter();
