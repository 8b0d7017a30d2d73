#include "connectkit/SoftAPManager.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <random>

#include "SDK/Util/LogTool/LogTool.h"
#include "channel/ChannelSelect.h"
#include "channel/CommonAPI.h"
#include "connectkit/ErrorStatus.h"
#include "connectkit/WifiAPI.h"
#include "foundation/FunctionName.h"
#include "platform/Platform.h"
#include "platform/suite/DEString.h"
#include "platform/suite/NetworkAdapter.h"

using ConnectKit::LegacyAP;

namespace {

constexpr int kMacTries = 30;
constexpr uint32_t kMacTryIntervalMs = 100;
constexpr size_t kSsidPartLength = 2;
constexpr size_t kPassphraseLength = 8;

// Digits, then lower case, then upper case: 62 symbols.
constexpr char kAlphabet[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

// One engine for the process, seeded once from the system's entropy source;
// each character is drawn uniformly from the alphabet.
std::string RandomText(size_t length) {
    static std::mutex mutex;
    static std::mt19937 engine{std::random_device{}()};
    std::uniform_int_distribution<size_t> pick(0, sizeof(kAlphabet) - 2);
    std::lock_guard<std::mutex> lock(mutex);
    std::string text;
    for (size_t i = 0; i < length; ++i) {
        text.push_back(kAlphabet[pick(engine)]);
    }
    return text;
}

bool AllZero(const unsigned char mac[6]) {
    return std::all_of(mac, mac + 6, [](unsigned char byte) { return byte == 0; });
}

// memcpy_s: fails on a null destination or source.
int CopyMac(unsigned char* destination, size_t size, const unsigned char* source) {
    if (!destination || !source || size < 6) {
        return -1;
    }
    std::memcpy(destination, source, 6);
    return 0;
}

// Under the legacy AP's lock: our group owner runs already, or a new one is
// planned, given the kept credentials and started. Start's result.
int StartOrReuse(SoftAPManager& manager, bool apFlag) {
    const char* function = "SoftAPManager::CreateSoftAP";
    if (manager.CheckMySoftAPExist()) {
        LogWarnFun("%s 1.1 CheckMySoftAPExist true,not create new softap", function);
        return 0;
    }
    auto* legacyAP = LegacyAP::GetInstance();
    LogWarnFun("%s 1 CheckMySoftAPExist false, create new softap", function);
    ChannelSelect::SetAPFrequence(apFlag, true);
    std::string newSsidPart;
    std::string newPassphrase;
    manager.RefreshSSIDAndPasswd(newSsidPart, newPassphrase);
    LogWarnFun("%s ap:(%s,%s)\n", function, newSsidPart.c_str(), newPassphrase.c_str());
    legacyAP->SetSSID(DE::UTF8ToUnicode(newSsidPart));
    legacyAP->SetPassphrase(DE::UTF8ToUnicode(newPassphrase));
    legacyAP->RegisterLegacyAPNotificationEventCallback(&manager);
    LogWarnFun("%s 2 legacyAP->Start() start", function);
    int status = legacyAP->Start(ConnectKit::E_GO_PURPOSE_SOFTAP);
    LogWarnFun("%s 3 legacyAP->Start() end status %d", function, status);
    return status;
}

}  // namespace

ISoftApConnectStatus::~ISoftApConnectStatus() = default;

SoftAPManager* SoftAPManager::GetInstance() {
    // Never destroyed: the legacy AP may still call it from notification
    // threads while the process exits.
    static SoftAPManager* instance = new SoftAPManager();
    return instance;
}

void SoftAPManager::DestroyInstance() {}

SoftAPManager::SoftAPManager()
    : restartMobileHotspot(false),
      changeCredentials(true),
      credentialsKept(true),
      ssidPrefix("DIRECT-"),
      ssidSuffix("veltra"),
      lastError(0),
      connectStatus(nullptr),
      credentialsMutex(connectkit::platform::Current().clock().NewMutex(false, 0)) {
    LogWarnFun("%s  start new", CK_FUNCTION);
    ChannelSelect::CacheCardMaker(NetworkAdapter::GetWifiManuType());
}

SoftAPManager::~SoftAPManager() = default;

bool SoftAPManager::CheckSoftAPExist() {
    unsigned char mac[6] = {};
    return CommonAPI::GetSoftapAdapterIndex(mac) > 0;
}

bool SoftAPManager::CheckMySoftAPExist() {
    unsigned char mac[6] = {};
    auto* legacyAP = LegacyAP::GetInstance();
    return CommonAPI::GetSoftapAdapterIndex(mac) > 0 && legacyAP->IsLegacyAPReady() &&
           legacyAP->GetLegacyAPStatus() == ConnectKit::LEGACY_AP_STARTED;
}

bool SoftAPManager::CheckOtherSoftAPExist() {
    unsigned char mac[6] = {};
    auto* legacyAP = LegacyAP::GetInstance();
    return CommonAPI::GetSoftapAdapterIndex(mac) > 0 &&
           (!legacyAP->IsLegacyAPReady() ||
            legacyAP->GetLegacyAPStatus() != ConnectKit::LEGACY_AP_STARTED);
}

void SoftAPManager::RefreshSSIDAndPasswd(std::string& ssidPartOut, std::string& passphraseOut) {
    std::lock_guard<connectkit::platform::Mutex> credentials(*credentialsMutex);
    if (changeCredentials || !credentialsKept) {
        ssidPart = RandomText(kSsidPartLength);
        passphrase = RandomText(kPassphraseLength);
        changeCredentials = false;
    }
    ssidPartOut = ssidPart;
    passphraseOut = passphrase;
}

void SoftAPManager::ChangeSSIDAndPasswd() {
    std::lock_guard<connectkit::platform::Mutex> credentials(*credentialsMutex);
    changeCredentials = true;
}

bool SoftAPManager::GetRestartMobileHotpotFlag() {
    return restartMobileHotspot;
}

void SoftAPManager::SetRestartMobileHotpotFlag(bool restart) {
    restartMobileHotspot = restart;
}

int SoftAPManager::GetLastError() {
    return lastError;
}

void SoftAPManager::RegistSoftApConnectStatus(ISoftApConnectStatus* observer) {
    connectStatus = observer;
}

int SoftAPManager::CreateSoftAP(SoftAPInfo& info) {
    const char* function = CK_FUNCTION;
    try {
        lastError = 0;
        LogWarnFun("%s start", function);
        auto* legacyAP = LegacyAP::GetInstance();

        bool restarted = false;
        if (CheckOtherSoftAPExist()) {
            LogWarnFun("%s 0.1 go already exist, restart wifi virtual network...\n", function);
            CommonAPI::RestartWiFiDirectVirtualAdapter(true);
            restarted = true;
            if (CheckOtherSoftAPExist()) {
                LogErrorFun("%s, go already exist, restart wifi virtual network failed.\n",
                            function);
                ErrorStatus::GetInstance()->PostNotification(CONNECT_ERROR_GO_ALREADY_EXIST);
                lastError = SOFTAP_FOREIGN_GROUP_OWNER;
                return SOFTAP_FOREIGN_GROUP_OWNER;
            }
        }

        // The legacy AP's own lock, not one of ours: Start holds it for its
        // whole run anyway, and its observers may call back in on this thread
        // or (once it is free) on theirs.
        int status = 0;
        std::wstring keptSsidPart;
        std::wstring keptPassphrase;
        {
            ConnectKit::CAutoLock creation(*legacyAP->lock_);
            status = StartOrReuse(*this, info.apFlag);
            keptSsidPart = legacyAP->GetSSID();
            keptPassphrase = legacyAP->GetPassphrase();
        }
        if (status < 0) {
            return StartFailed(restarted);
        }
        std::string ssid = DE::UnicodeToUTF8(keptSsidPart);
        std::string pass = DE::UnicodeToUTF8(keptPassphrase);
        {
            std::lock_guard<connectkit::platform::Mutex> credentials(*credentialsMutex);
            ssidPart = ssid;
            passphrase = pass;
        }

        unsigned char channel = 0;
        int channelError = ChannelSelect::RefreshAPFrequence(channel);
        if (channelError != 0) {
            lastError = channelError;
            LogWarnFun("%s 4 ChannelSelect::RefreshAPFrequence errCode %d, frequence %d", function,
                       channelError, channel);
        }
        info.ssid = ssidPrefix + ssid + "-" + ssidSuffix;
        info.passphrase = pass;
        info.channel = channel;
        info.ip = CommonAPI::GetLegacyAPIP();

        unsigned char mac[6] = {};
        if (!WaitForMac(mac)) {
            int result = NoMac(mac);
            if (result != 0) {
                return result;
            }
        }
        if (CopyMac(info.mac, sizeof(info.mac), mac) != 0) {
            LogErrorFun("%s GetMacAddress memcpy_s failed!", function);
            lastError = SOFTAP_MAC_COPY_FAILED;
            return SOFTAP_MAC_COPY_FAILED;
        }
        LogWarnFun("%s end", function);
        return SOFTAP_READY;
    } catch (const std::exception& error) {
        LogErrorFun("%s catch exception: %.200s", function, error.what());
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", function);
    }
    lastError = -1;
    return -1;
}

int SoftAPManager::StartFailed(bool restarted) {
    const char* function = "SoftAPManager::CreateSoftAP";
    ConnectKit::WifiAPI::GetInstance()->ResetPreferredChannelSettings();
    LegacyAP::GetInstance()->UnRegisterLegacyAPNotificationEventCallback(this);
    bool adapterMissing = false;
    bool adapterDisabled = false;
    bool checked = CommonAPI::CheckWiFiDirectVirtualAdapterStatus(adapterMissing, adapterDisabled);
    int result = restarted ? SOFTAP_START_FAILED_AFTER_RESTART : SOFTAP_START_FAILED;
    if (checked && adapterMissing) {
        result = SOFTAP_START_FAILED_ADAPTER_MISSING;
    } else if (checked && adapterDisabled) {
        result = SOFTAP_START_FAILED_ADAPTER_DISABLED;
    }
    LogErrorFun("%s start failed, result %d (restarted %d, missing %d, disabled %d)", function,
                result, restarted ? 1 : 0, adapterMissing ? 1 : 0, adapterDisabled ? 1 : 0);
    return result;
}

// Up to 30 tries, 100 ms apart.
bool SoftAPManager::WaitForMac(unsigned char mac[6]) {
    const char* function = "SoftAPManager::CreateSoftAP";
    auto& clock = connectkit::platform::Current().clock();
    bool found = false;
    for (int attempt = 0; attempt < kMacTries; ++attempt) {
        if (CommonAPI::GetMacAddress(mac) && !AllZero(mac)) {
            LogWarnFun("%s GetMacAddress success, time:%d", function, attempt);
            found = true;
            break;
        }
        clock.Sleep(kMacTryIntervalMs);
    }
    LogWarnFun("%s 5 GetMacAddress result:%d", function, found ? 1 : 0);
    return found;
}

// The adapter never showed its MAC: repair its IP interface and look once
// more; otherwise stop the access point. 0 when the retry found the MAC.
int SoftAPManager::NoMac(unsigned char mac[6]) {
    const char* function = "SoftAPManager::CreateSoftAP";
    lastError = SOFTAP_NO_MAC;
    if (CommonAPI::NetshInterfaceIp()) {
        LogWarnFun("%s 5.1 NetshInterfaceIp success", function);
    } else {
        LogWarnFun("%s 5.1 NetshInterfaceIp failed", function);
    }
    LogWarnFun("%s 5.2 GetMacAddress after NetshInterfaceIp", function);
    if (CommonAPI::GetMacAddress(mac) && !AllZero(mac)) {
        LogWarnFun("%s 5.3 retry GetMacAddress success\n", function);
        return 0;
    }
    LogErrorFun("%s 5.2.1 retry GetMacAddress failed\n", function);
    lastError = CommonAPI::IsIPPresent(CommonAPI::GetLegacyAPIP()) ? SOFTAP_NO_MAC_IP_PRESENT
                                                                   : SOFTAP_NO_MAC_IP_ABSENT;
    LogErrorFun("%s  5.2.2 stop() start", function);
    LegacyAP::GetInstance()->Stop(true, false, false, 0, 10000, ConnectKit::E_GO_PURPOSE_SOFTAP);
    LogErrorFun("%s  5.2.2 stop() end", function);
    return lastError;
}

int SoftAPManager::DestroySoftAP(SoftAPInfo&) {
    const char* function = CK_FUNCTION;
    auto* legacyAP = LegacyAP::GetInstance();
    LogWarnFun("%s before legacyAP->Stop() start", function);
    int result = legacyAP->Stop(true, false, false, 0, 10000, ConnectKit::E_GO_PURPOSE_SOFTAP);
    LogWarnFun("%s after legacyAP->Stop() end, ret %d", function, result);
    ConnectKit::WifiAPI::GetInstance()->ResetPreferredChannelSettings();
    legacyAP->UnRegisterLegacyAPNotificationEventCallback(this);
    return result;
}

unsigned char SoftAPManager::RefreshSoftAPChannel() {
    const char* function = CK_FUNCTION;
    unsigned char channel = 0;
    int error = ChannelSelect::RefreshAPFrequence(channel);
    if (error != 0) {
        lastError = error;
    }
    LogWarnFun("%s ChannelSelect::RefreshAPFrequence errCode %d, frequence %d", function,
               static_cast<int>(lastError), channel);
    return channel;
}

void SoftAPManager::OnLegacyAPAdvertiserStatusChanged(
    ConnectKit::LegacyAPAdvertisemenStatus status) {
    LogWarnFun("%s status=%d\n", CK_FUNCTION, static_cast<int>(status));
}

void SoftAPManager::OnLegacyAPConnectionStatusChanged(
    ConnectKit::LegacyAPDeviceConnectionStatus status, ConnectKit::LegacyAPDeviceInformation) {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start status=%d\n", function, static_cast<int>(status));
    ISoftApConnectStatus* observer = connectStatus;
    if (status == ConnectKit::LEGACY_AP_DEVICE_CONNECTED) {
        LogWarnFun("%s status=Connected\n", function);
        if (observer) {
            observer->OnSoftApConnectStatus(1);
        }
    } else if (status == ConnectKit::LEGACY_AP_DEVICE_DISCONNECTED) {
        LogWarnFun("%s status=Disconnected\n", function);
        if (observer) {
            observer->OnSoftApConnectStatus(0);
        }
    } else {
        LogWarnFun("%s unknown status=%d\n", function, static_cast<int>(status));
    }
    LogWarnFun("%s end\n", function);
}
