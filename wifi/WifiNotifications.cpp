// Native Wi-Fi notifications of the WLAN network service: they arrive on a
// platform thread and move the connection state that observers see.
#include <exception>

#include "SDK/Util/LogTool/LogTool.h"
#include "connectkit/WifiNetworkService.h"
#include "foundation/FunctionName.h"
#include "platform/ports/Wlan.h"
#include "platform/ports/WlanRecords.h"
#include "wifi/WlanCallbackScope.h"

namespace WifiConnectManage {

namespace platform = connectkit::platform;

void WifiNetworkService::OnNotificationReceived(platform::WlanNotification* notification,
                                                void* context) {
    // Runs on the platform's thread: nothing may escape into it.
    const connectkit::wifi::WlanCallbackScope scope;
    try {
        GetInstance()->OnNotificationReceived_(notification, context);
    } catch (const std::exception& error) {
        LogErrorFun("%s catch exception: %.200s", CK_FUNCTION, error.what());
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", CK_FUNCTION);
    }
}

void WifiNetworkService::OnNotificationReceived_(platform::WlanNotification* notification, void*) {
    const char* function = CK_FUNCTION;
    if (notification == nullptr) {
        LogWarnFun("%s error:connectionNotifyData null & notifyData null\n", function);
        return;
    }
    // Data too short for a connection record counts as none: reading it would
    // go past what the platform handed over.
    platform::WlanConnectionNotificationData data;
    if (!platform::DecodeConnectionNotification(notification->data, data)) {
        LogWarnFun(
            "%s error:connectionNotifyData null but NotificationSource=%d "
            "NotificationCode=%d\n",
            function, static_cast<int>(notification->source), static_cast<int>(notification->code));
        return;
    }
    LogWarnFun(
        "%s step - 2, NotificationSource:%u, NotificationCode:%d, "
        "WLAN_NOTIFICATION_SOURCE_ACM:%u,             WLAN_NOTIFICATION_SOURCE_MSM:%u\n",
        function, notification->source, static_cast<int>(notification->code),
        platform::kWlanSourceAcm, platform::kWlanSourceMsm);
    if (notification->source == platform::kWlanSourceAcm) {
        AcmNotificationDispatch(notification, &data);
    } else if (notification->source == platform::kWlanSourceMsm) {
        MsmNotificationDispatch(notification, &data);
    } else {
        LogWarnFun("%s step - 31, NotificationCode=%u\n", function, notification->code);
    }
}

// MSM records are read as connection records too: their profile names lie
// at the same place, and that is all the service takes from them.
void WifiNetworkService::AcmNotificationDispatch(platform::WlanNotification* notification,
                                                 platform::WlanConnectionNotificationData* data) {
    const std::wstring& profileName = data->profileName;
    switch (notification->code) {
        case platform::kAcmConnectionComplete: {
            // 4 after a good connection as after a disconnection: the suite's
            // receivers read the sequence of values, not each alone.
            platform::Guid guid;
            bool found = false;
            if (IsConnected(handle_, profileName, guid, found, false)) {
                state_ = WifiDisConnected;
                NotifyWifiStateChanged(profileName, WifiDisConnected);
            } else {
                state_ = WifiConnectIncomplete;
                NotifyWifiStateChanged(profileName, WifiConnectIncomplete);
            }
            break;
        }
        case platform::kAcmConnectionAttemptFail:
            // The reason comes with the data; nothing is reported for it.
            break;
        case platform::kAcmDisconnecting:
        case platform::kAcmDisconnected:
            NotifyWifiStateChanged(profileName, WifiDisConnected);
            state_ = WifiDisConnected;
            break;
        default:
            LogWarnFun("%s step - 11, NotificationCode=%u\n", CK_FUNCTION, notification->code);
            break;
    }
}

void WifiNetworkService::MsmNotificationDispatch(platform::WlanNotification* notification,
                                                 platform::WlanConnectionNotificationData* data) {
    if (notification->code <= platform::kMsmAuthenticating) {
        NotifyWifiStateChanged(data->profileName, WifiConnecting);
        state_ = WifiConnecting;
        return;
    }
    LogWarnFun("%s step - 21, NotificationCode=%u\n", CK_FUNCTION, notification->code);
}

}  // namespace WifiConnectManage
