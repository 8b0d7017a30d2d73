// The legacy AP's events: publisher status changes, phones asking to
// connect, and connected phones changing state, carried to the registered
// notification objects.
#include <algorithm>
#include <mutex>

#include "SDK/Util/LogTool/LogTool.h"
#include "connectkit/LegacyAP.h"
#include "foundation/FunctionName.h"
#include "hotspot/LegacyAPSteps.h"
#include "platform/LibraryThreads.h"
#include "platform/Platform.h"

namespace ConnectKit {

using connectkit::platform::AsyncStatus;
using connectkit::platform::PublisherStatus;
using connectkit::platform::PublisherStatusChange;
using connectkit::platform::WiFiDirectConnectionStatus;
using connectkit::platform::WiFiDirectDevice;

LegacyAP::ILegacyAPNotification::ILegacyAPNotification() = default;
LegacyAP::ILegacyAPNotification::ILegacyAPNotification(const ILegacyAPNotification&) = default;
LegacyAP::ILegacyAPNotification& LegacyAP::ILegacyAPNotification::operator=(
    const ILegacyAPNotification&) = default;
LegacyAP::ILegacyAPNotification::~ILegacyAPNotification() = default;
void LegacyAP::ILegacyAPNotification::OnLegacyAPAdvertiserStatusChanged(
    LegacyAPAdvertisemenStatus) {}
void LegacyAP::ILegacyAPNotification::OnLegacyAPConnectionRequested(LegacyAPDeviceInformation) {}
void LegacyAP::ILegacyAPNotification::OnLegacyAPConnectionStatusChanged(
    LegacyAPDeviceConnectionStatus, LegacyAPDeviceInformation) {}

int LegacyAP::RegisterLegacyAPNotificationEventCallback(ILegacyAPNotification* callback) {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start", function);
    if (!callback) {
        LogWarnFun("%s end", function);
        return 0;
    }
    CAutoLock guard(*lock_);
    if (std::find(notifications_.begin(), notifications_.end(), callback) == notifications_.end()) {
        notifications_.push_back(callback);
    }
    return 0;
}

int LegacyAP::UnRegisterLegacyAPNotificationEventCallback(ILegacyAPNotification* callback) {
    CAutoLock guard(*lock_);
    notifications_.erase(std::remove(notifications_.begin(), notifications_.end(), callback),
                         notifications_.end());
    return 0;
}

// Under the lock. The list is walked over a copy, and an object that a
// notification unregistered is skipped: the caller may destroy it right
// after unregistering. What an observer throws stops at its own call, so it
// can neither escape Start or Stop nor keep the others from hearing.
template <typename Call>
void LegacyAP::ForEachNotification(const Call& call) {
    CAutoLock guard(*lock_);
    auto snapshot = notifications_;
    for (auto* notification : snapshot) {
        if (std::find(notifications_.begin(), notifications_.end(), notification) ==
            notifications_.end()) {
            continue;
        }
        try {
            call(*notification);
        } catch (...) {
            LogErrorFun("%s catch unknown exception...\n",
                        "ConnectKit::LegacyAP::ForEachNotification");
        }
    }
}

void LegacyAP::Steps::NotifyAdvertiserStatus(LegacyAP& ap, LegacyAPAdvertisemenStatus status) {
    ap.ForEachNotification([status](ILegacyAPNotification& notification) {
        notification.OnLegacyAPAdvertiserStatusChanged(status);
    });
}

// On a platform thread, without the lock: Start and Stop hold it while they
// wait for exactly this event.
void LegacyAP::NotifyLegacyAPAdvertiseStateChanged(
    connectkit::platform::WiFiDirectPublisher& sender, const PublisherStatusChange& change) {
    const char* function = CK_FUNCTION;
    auto publisher = static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(&sender));
    LogWarnFun("%s start Status:%d", function, static_cast<int>(change.status));
    switch (change.status) {
        case PublisherStatus::Created:
            LogWarnFun("%s Created, publisher=0x%08llx", function, publisher);
            break;
        case PublisherStatus::Started:
            LogWarnFun("%s Started, publisher=0x%08llx", function, publisher);
            started_ = true;
            aborted_ = false;
            Steps::ReleaseStatusSemaphore(*this);
            break;
        case PublisherStatus::Stopped:
            LogWarnFun("%s Stopped, publisher=0x%08llx", function, publisher);
            started_ = false;
            Steps::ReleaseStatusSemaphore(*this);
            break;
        case PublisherStatus::Aborted:
            LogErrorFun("%s Aborted, publisher=0x%08llx, status %d, error %d", function, publisher,
                        static_cast<int>(change.status), static_cast<int>(change.error));
            started_ = false;
            aborted_ = true;
            Steps::ReleaseStatusSemaphore(*this);
            break;
        default:
            LogWarnFun("%s UnknownStatus[%d], publisher=0x%08llx", function,
                       static_cast<int>(change.status), publisher);
            break;
    }
    try {
        connectkit::platform::StartDetachedLibraryThread(
            [this, change] { NotifyStatusChangeed(change); });
    } catch (const std::exception& error) {
        LogErrorFun("%s starting the notification thread failed: %.200s", function, error.what());
    }
    LogWarnFun("%s end", function);
}

void LegacyAP::NotifyStatusChangeed(PublisherStatusChange change) {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start", function);
    {
        CAutoLock guard(*lock_);
        // A start notice can arrive after the access point was stopped again;
        // a listener opened then would outlive it.
        if (change.status == PublisherStatus::Started && publisher_ && started_) {
            if (!StartListener()) {
                LogErrorFun("%s StartListener error", function);
            }
        }
        Steps::NotifyAdvertiserStatus(*this,
                                      static_cast<LegacyAPAdvertisemenStatus>(change.status));
    }
    LogWarnFun("%s end", function);
}

void LegacyAP::NotifyLegacyAPConnectionRequested(
    const std::shared_ptr<connectkit::platform::WiFiDirectConnectionRequest>& request) {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start", function);
    if (!IsLegacyAPReady()) {
        LogErrorFun("%s warn go isn't ready\n", function);
        return;
    }
    try {
        connectkit::platform::Current().wifiDirect().DeviceFromIdAsync(
            request->DeviceId(),
            [this](AsyncStatus status, std::shared_ptr<WiFiDirectDevice> device) {
                NotifyLegacyAPConnected(status, device);
            });
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", function);
    }
    LogWarnFun("%s end", function);
}

void LegacyAP::NotifyLegacyAPConnected(AsyncStatus status,
                                       const std::shared_ptr<WiFiDirectDevice>& device) {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start AsyncStatus %d", function, static_cast<int>(status));
    if (!IsLegacyAPReady()) {
        LogErrorFun("%s warn go isn't ready\n", function);
        return;
    }
    if (status != AsyncStatus::Completed || !device) {
        LogErrorFun("%s connect error\n", function);
        return;
    }
    try {
        auto kept = std::make_shared<KeptDevice>();
        kept->device = device;
        kept->token = device->AddConnectionStatusChanged(
            [this](WiFiDirectDevice& sender) { NotifyLegacyAPConnectionStatusChanged(sender); });
        bool keep = false;
        {
            std::lock_guard<connectkit::platform::Mutex> handles(*handlesMutex_);
            keep = keepDevices_;
            if (keep) {
                devices_.push_back(kept);
            }
        }
        if (!keep) {
            // The listener stopped while the device was being made.
            device->RemoveConnectionStatusChanged(kept->token);
            device->Close();
            LogErrorFun("%s warn go isn't ready\n", function);
            return;
        }
        connectkit::platform::StartDetachedLibraryThread(
            [this, device] { NotifyLegacyAPConnectionStatusChanged(*device); });
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", function);
    }
    LogWarnFun("%s end", function);
}

void LegacyAP::NotifyLegacyAPConnectionStatusChanged(WiFiDirectDevice& device) {
    const char* function = CK_FUNCTION;
    try {
        auto status = device.ConnectionStatus();
        LogWarnFun("%s start ConnectionStatus %d", function, static_cast<int>(status));
        if (!IsLegacyAPReady()) {
            LogErrorFun("%s warn go isn't ready\n", function);
            return;
        }
        LegacyAPDeviceInformation information;
        information.deviceId = device.DeviceId();
        if (status == WiFiDirectConnectionStatus::Connected) {
            auto pairs = device.ConnectionEndpointPairs();
            if (!pairs.empty()) {
                information.ipAddress = pairs.front().remoteHostName;
            }
        }
        HandConnectionStatusCallBack(device, information);
        if (status == WiFiDirectConnectionStatus::Disconnected) {
            Steps::DropDevice(*this, device);
        }
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", function);
    }
    LogWarnFun("%s end", function);
}

void LegacyAP::HandConnectionStatusCallBack(WiFiDirectDevice& device,
                                            const LegacyAPDeviceInformation& information) {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start", function);
    auto status = static_cast<LegacyAPDeviceConnectionStatus>(device.ConnectionStatus());
    ForEachNotification([status, &information](ILegacyAPNotification& notification) {
        notification.OnLegacyAPConnectionStatusChanged(status, information);
    });
    LogWarnFun("%s end", function);
}

// A phone that left needs no status subscription any more.
void LegacyAP::Steps::DropDevice(LegacyAP& ap, WiFiDirectDevice& device) {
    std::shared_ptr<KeptDevice> dropped;
    {
        std::lock_guard<connectkit::platform::Mutex> handles(*ap.handlesMutex_);
        auto found =
            std::find_if(ap.devices_.begin(), ap.devices_.end(),
                         [&device](const auto& kept) { return kept->device.get() == &device; });
        if (found == ap.devices_.end()) {
            return;
        }
        dropped = *found;
        ap.devices_.erase(found);
    }
    dropped->device->RemoveConnectionStatusChanged(dropped->token);
    dropped->device->Close();
}

}  // namespace ConnectKit
