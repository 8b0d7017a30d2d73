#include "connectkit/LegacyAP.h"

#include <algorithm>
#include <mutex>

#include "SDK/Util/LogTool/LogTool.h"
#include "channel/CommonAPI.h"
#include "foundation/FunctionName.h"
#include "hotspot/LegacyAPSteps.h"
#include "platform/ModuleLifetime.h"
#include "platform/Platform.h"
#include "platform/ports/Errors.h"
#include "platform/suite/DEString.h"
#include "platform/suite/Firewall.h"

namespace ConnectKit {

using connectkit::platform::PublisherStatus;
using connectkit::platform::PublisherStatusChange;

namespace {

constexpr uint32_t kStartWaitMs = 60000;
constexpr uint32_t kStopWaitCapMs = 5000;
constexpr uint64_t kStartPacingMs = 2000;

connectkit::platform::WiFiDirect& WiFiDirectPort() {
    return connectkit::platform::Current().wifiDirect();
}

unsigned long long Identity(const void* object) {
    return static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(object));
}

bool ValidPurpose(EGoPurpose purpose) {
    return purpose == E_GO_PURPOSE_GENERAL || purpose == E_GO_PURPOSE_SOFTAP;
}

// What WPA2 and 802.11 accept: an SSID of at most 32 bytes and a pass phrase
// of 8 to 63 printable ASCII characters. Anything else the driver would
// refuse only after the 60-second start wait.
bool AcceptableSsid(const std::wstring& ssid) {
    return DE::UnicodeToUTF8(ssid).size() <= 32;
}

bool AcceptablePassphrase(const std::wstring& passphrase) {
    return passphrase.size() >= 8 && passphrase.size() <= 63 &&
           std::all_of(passphrase.begin(), passphrase.end(),
                       [](wchar_t c) { return c >= 0x20 && c <= 0x7e; });
}

}  // namespace

LegacyAP* LegacyAP::GetInstance() {
    // Never destroyed: detached notification threads may still run while the
    // process exits. Its calls wait up to a minute for the platform, so a
    // host that unloads meanwhile must not take the code from under them.
    connectkit::platform::KeepModuleLoaded();
    static LegacyAP* instance = new LegacyAP();
    return instance;
}

LegacyAP::LegacyAP()
    : statusChangedToken_(0),
      connectionRequestedToken_(0),
      ssidSet_(false),
      passphraseSet_(false),
      lastStartTick_(0),
      ssidPrefix_(L"DIRECT-"),
      ssidSuffix_(L"veltra"),
      started_(false),
      aborted_(false),
      succCount_(0),
      failCount_(0),
      totalCount_(0),
      continueFailCount_(0),
      restartWiFiDirectVirtualAdapterCount_(0),
      continueRestartCount_(0),
      needed_{false, false},
      reserved_(false) {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start", function);
    auto& clock = connectkit::platform::Current().clock();
    lock_ = std::make_unique<CCriticalSection>();
    handlesMutex_ = clock.NewMutex(false, 0);
    statusSemaphore_ = clock.NewSemaphore(0, 1);
    if (!statusSemaphore_) {
        LogErrorFun("%s CreateSemaphore failed", function);
    }
    try {
        passphraseCredential_ = WiFiDirectPort().NewPasswordCredential();
    } catch (const std::exception& error) {
        LogErrorFun("%s new PasswordCredential() failed: %.200s", function, error.what());
    }
    LogWarnFun("%s end", function);
}

LegacyAP::~LegacyAP() = default;

void LegacyAP::SetSSID(const std::wstring& ssid) {
    CAutoLock guard(*lock_);
    advertisedSsid_ = ssidPrefix_ + ssid + L"-" + ssidSuffix_;
    ssid_ = ssid;
    ssidSet_ = true;
}

void LegacyAP::SetPassphrase(const std::wstring& passphrase) {
    const char* function = CK_FUNCTION;
    CAutoLock guard(*lock_);
    passphraseSet_ = true;
    try {
        if (!passphraseCredential_) {
            passphraseCredential_ = WiFiDirectPort().NewPasswordCredential();
        }
        if (passphraseCredential_) {
            passphraseCredential_->SetPassword(passphrase);
        } else {
            LogErrorFun("%s new PasswordCredential() failed", function);
        }
    } catch (const std::exception& error) {
        LogErrorFun("%s put_Password failed: %.200s", function, error.what());
    }
    passphrase_ = passphrase;
}

std::wstring LegacyAP::GetSSID() const {
    CAutoLock guard(*lock_);
    return ssid_;
}

std::wstring LegacyAP::GetPassphrase() const {
    CAutoLock guard(*lock_);
    return passphrase_;
}

void LegacyAP::Release() {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start", function);
    {
        std::lock_guard<connectkit::platform::Mutex> handles(*handlesMutex_);
        statusSemaphore_.reset();
    }
    ClearLegacyAPFlag();
    Stop(true, false, false, 0, kStartWaitMs, E_GO_PURPOSE_GENERAL);
    LogWarnFun("%s end", function);
}

int LegacyAP::Start(EGoPurpose purpose) {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start", function);
    if (!ValidPurpose(purpose)) {
        LogErrorFun("%s unknown purpose %d", function, static_cast<int>(purpose));
        return -1;
    }
    try {
        CAutoLock guard(*lock_);
        auto& clock = connectkit::platform::Current().clock();
        if (publisher_) {
            auto status = publisher_->Status();
            LogWarnFun("%s 0.1 go already created and Status:%d", function,
                       static_cast<int>(status));
            unsigned char mac[6] = {};
            if (status == PublisherStatus::Started && CommonAPI::GetSoftapAdapterIndex(mac) > 0) {
                LogWarnFun("%s 0.1 go already created  and sure use it.", function);
                needed_[purpose] = true;
                Steps::NotifyAdvertiserStatus(*this, LEGACY_AP_STARTED);
                return 0;
            }
            ClearLegacyAPFlag();
            LogWarnFun("%s 0.1 go already created but do not use it and stop it..", function);
            Stop(true, false, true, 0, kStartWaitMs, E_GO_PURPOSE_GENERAL);
            LogWarnFun("%s 0.1 go already created but do not use it and stop it..", function);
        }

        if ((ssidSet_ && !AcceptableSsid(advertisedSsid_)) ||
            (passphraseSet_ && !AcceptablePassphrase(passphrase_))) {
            LogErrorFun(
                "%s SSID or pass phrase not acceptable (SSID %zu characters, pass phrase %zu)",
                function, advertisedSsid_.size(), passphrase_.size());
            return -1;
        }

        uint64_t sinceLastStart = clock.TickCount64() - lastStartTick_;
        if (sinceLastStart < kStartPacingMs) {
            auto delay = static_cast<unsigned>(kStartPacingMs - sinceLastStart);
            LogWarnFun("[LegacyAP]Start LegacyAP advertise need delay:%u", delay);
            clock.Sleep(delay);
        }

        if (!publisher_) {
            LogWarnFun("%s 1", function);
            publisher_ = WiFiDirectPort().NewPublisher();
            if (!publisher_) {
                LogErrorFun("%s 1.1 new WiFiDirectAdvertisementPublisher() failed", function);
                return -1;
            }
            LogWarnFun("%s 2 Status:%d", function, static_cast<int>(publisher_->Status()));
            statusChangedToken_ = publisher_->AddStatusChanged(
                [this](connectkit::platform::WiFiDirectPublisher& sender,
                       const PublisherStatusChange& change) {
                    NotifyLegacyAPAdvertiseStateChanged(sender, change);
                });
            LogWarnFun("%s 3 Status:%d", function, static_cast<int>(publisher_->Status()));
        }

        bool signalled = false;
        try {
            publisher_->SetAutonomousGroupOwnerEnabled(true);
            publisher_->SetLegacyEnabled(true);
            publisher_->SetLegacySsid(advertisedSsid_);
            publisher_->SetLegacyPassphrase(passphraseCredential_);
            Steps::WaitForStatus(*this, 0);
            started_ = false;
            aborted_ = false;
            LogWarnFun("%s 4 start() start", function);
            publisher_->Start();
            LogWarnFun("%s 5 start() end", function);
            signalled = Steps::WaitForStatus(*this, kStartWaitMs);
        } catch (const std::exception& error) {
            // A publisher that cannot be configured or started failed to
            // start, like one that aborted.
            LogErrorFun("%s catch exception: %.200s", function, error.what());
        }

        uint64_t now = clock.TickCount64();
        if (signalled && started_) {
            lastStartTick_ = now;
            needed_[purpose] = true;
            continueFailCount_ = 0;
            continueRestartCount_ = 0;
            ++succCount_;
            ++totalCount_;
            LogWarnFun(
                "%s 6 Starting soft AP success,totalCount=%llu,succCount=%llu,failCount=%llu,    "
                "            continueFailCount=%u, restartWiFiDirectVirtualAdapterCount=%u, "
                "continueRestartCount=%u\n",
                function, static_cast<unsigned long long>(totalCount_),
                static_cast<unsigned long long>(succCount_),
                static_cast<unsigned long long>(failCount_), continueFailCount_,
                restartWiFiDirectVirtualAdapterCount_, continueRestartCount_);
            LogWarnFun("%s end", function);
            return 0;
        }
        Steps::FailStart(*this, now);
        return -1;
    } catch (const std::exception& error) {
        LogErrorFun("%s catch exception: %.200s", function, error.what());
        return -1;
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", function);
        return -1;
    }
}

// The stage names of the last three lines are what field logs have always
// shown; they stay.
void LegacyAP::Steps::FailStart(LegacyAP& ap, uint64_t now) {
    const char* function = "ConnectKit::LegacyAP::Start";
    ap.lastStartTick_ = now;
    ++ap.continueFailCount_;
    ++ap.failCount_;
    ++ap.totalCount_;
    LogErrorFun(
        "%s 5.1 Starting soft AP failed,totalCount=%llu,succCount=%llu,failCount=%llu,      "
        "          continueFailCount=%u, restartWiFiDirectVirtualAdapterCount=%u, "
        "continueRestartCount=%u,                 started:%d, aborted:%d",
        function, static_cast<unsigned long long>(ap.totalCount_),
        static_cast<unsigned long long>(ap.succCount_),
        static_cast<unsigned long long>(ap.failCount_), ap.continueFailCount_,
        ap.restartWiFiDirectVirtualAdapterCount_, ap.continueRestartCount_, ap.started_ ? 1 : 0,
        ap.aborted_ ? 1 : 0);
    LogWarnFun("%s 5.2 stop() start", function);
    ap.Stop(true, false, true, 500, 500, E_GO_PURPOSE_GENERAL);
    LogWarnFun("%s 5.3 StopPublisher() start", function);
    ap.StopPublisher();
    LogWarnFun("%s 5.4 StopPublisher() start", function);
    if (ap.continueFailCount_ >= 2) {
        CommonAPI::RestartWiFiDirectVirtualAdapter(false);
        ++ap.restartWiFiDirectVirtualAdapterCount_;
        ++ap.continueRestartCount_;
        ap.continueFailCount_ = 0;
        LogWarnFun("%s 5.5 StopPublisher() start", function);
    }
}

int LegacyAP::Stop(bool releaseGo, bool notify, bool, unsigned int, unsigned int waitMs,
                   EGoPurpose purpose) {
    const char* function = CK_FUNCTION;
    CAutoLock guard(*lock_);
    LogWarnFun("%s start  publisher 0x%x, releaseGo %d", function,
               static_cast<unsigned>(Identity(publisher_.get())), releaseGo ? 1 : 0);
    if (ValidPurpose(purpose)) {
        needed_[purpose] = false;
    } else {
        LogErrorFun("%s unknown purpose %d", function, static_cast<int>(purpose));
    }
    if (IsLegacyAPNeed()) {
        if (notify) {
            Steps::NotifyAdvertiserStatus(*this, LEGACY_AP_STOPPED);
        }
        return 0;
    }
    if (publisher_ && releaseGo) {
        try {
            auto status = publisher_->Status();
            LogWarnFun("%s 1 Status:%d, start:%d", function, static_cast<int>(status),
                       started_ ? 1 : 0);
            if (status == PublisherStatus::Started || started_) {
                Steps::WaitForStatus(*this, 0);
                LogWarnFun("%s 2  stop() start", function);
                publisher_->Stop();
                LogWarnFun("%s 3  stop() end", function);
                if (!Steps::WaitForStatus(*this, std::min<uint32_t>(waitMs, kStopWaitCapMs))) {
                    LogErrorFun("%s 3.1 WaitForSingleObject timeout,LegacyAPStatus:%d\n", function,
                                static_cast<int>(publisher_->Status()));
                }
            }
        } catch (...) {
            LogErrorFun("%s 1.1  catch Exception...", function);
        }
        LogWarnFun("%s 4  StopListener", function);
        StopListener();
        LogWarnFun("%s 5  StopPublisher", function);
        StopPublisher();
        started_ = false;
    }
    LogWarnFun("%s 6", function);
    if (notify) {
        Steps::NotifyAdvertiserStatus(*this, LEGACY_AP_STOPPED);
    }
    LogWarnFun("%s 7", function);
    if (releaseGo) {
        LogWarnFun("%s 8 Remove firewall rules: destroy GO", function);
        Firewall::RemoveDHCPRules();
    }
    LogWarnFun("%s end", function);
    return 0;
}

LegacyAPAdvertisemenStatus LegacyAP::GetLegacyAPStatus() {
    const char* function = CK_FUNCTION;
    CAutoLock guard(*lock_);
    LogWarnFun("[LegacyAP]GetLegacyAPStatus at step 2");
    // Without a publisher nothing is advertised: that reads as stopped.
    auto status = LEGACY_AP_STOPPED;
    try {
        if (publisher_) {
            status = static_cast<LegacyAPAdvertisemenStatus>(publisher_->Status());
        }
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", function);
    }
    LogWarnFun("%s end Status:%d", function, static_cast<int>(status));
    return status;
}

bool LegacyAP::IsLegacyAPNeed() {
    CAutoLock guard(*lock_);
    return needed_[0] || needed_[1];
}

bool LegacyAP::IsLegacyAPReady() {
    return started_;
}

void LegacyAP::ClearLegacyAPFlag() {
    CAutoLock guard(*lock_);
    needed_[0] = false;
    needed_[1] = false;
}

bool LegacyAP::StartListener() {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start 1", function);
    if (listener_) {
        return true;
    }
    try {
        auto listener = WiFiDirectPort().NewConnectionListener();
        if (!listener) {
            LogErrorFun("%s new WiFiDirectConnectionListener() failed", function);
            return false;
        }
        connectionRequestedToken_ = listener->AddConnectionRequested(
            [this](std::shared_ptr<connectkit::platform::WiFiDirectConnectionRequest> request) {
                NotifyLegacyAPConnectionRequested(request);
            });
        listener_ = std::move(listener);
        std::lock_guard<connectkit::platform::Mutex> handles(*handlesMutex_);
        keepDevices_ = true;
    } catch (const std::exception& error) {
        LogErrorFun("%s new WiFiDirectConnectionListener() failed: %.200s", function, error.what());
        return false;
    }
    LogWarnFun("%s start 2", function);
    return true;
}

void LegacyAP::StopListener() {
    const char* function = CK_FUNCTION;
    if (listener_) {
        try {
            listener_->RemoveConnectionRequested(connectionRequestedToken_);
        } catch (...) {
            LogErrorFun("%s remove_ConnectionRequested failed", function);
        }
        listener_.reset();
        connectionRequestedToken_ = 0;
    }
    std::vector<std::shared_ptr<KeptDevice>> devices;
    {
        std::lock_guard<connectkit::platform::Mutex> handles(*handlesMutex_);
        keepDevices_ = false;
        devices.swap(devices_);
    }
    for (auto& kept : devices) {
        try {
            kept->device->RemoveConnectionStatusChanged(kept->token);
            kept->device->Close();
        } catch (...) {
            LogErrorFun("%s closing a device failed", function);
        }
    }
}

void LegacyAP::StopPublisher() {
    const char* function = CK_FUNCTION;
    if (!publisher_) {
        return;
    }
    try {
        publisher_->RemoveStatusChanged(statusChangedToken_);
    } catch (...) {
        LogErrorFun("%s remove_StatusChanged failed", function);
    }
    statusChangedToken_ = 0;
    publisher_.reset();
}

bool LegacyAP::Steps::WaitForStatus(LegacyAP& ap, uint32_t timeoutMs) {
    std::shared_ptr<connectkit::platform::Semaphore> semaphore;
    {
        std::lock_guard<connectkit::platform::Mutex> handles(*ap.handlesMutex_);
        semaphore = ap.statusSemaphore_;
    }
    if (!semaphore) {
        LogErrorFun("[LegacyAP] status semaphore is closed");
        return false;
    }
    return semaphore->Wait(timeoutMs) == connectkit::platform::WaitResult::Signaled;
}

void LegacyAP::Steps::ReleaseStatusSemaphore(LegacyAP& ap) {
    std::lock_guard<connectkit::platform::Mutex> handles(*ap.handlesMutex_);
    if (ap.statusSemaphore_) {
        ap.statusSemaphore_->Release();
    }
}

}  // namespace ConnectKit
