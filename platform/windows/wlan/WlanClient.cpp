#include "platform/windows/wlan/WlanClient.h"

#include <utility>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/ModuleLifetime.h"
#include "platform/windows/wlan/WlanStructures.h"

namespace connectkit::win {

uint32_t WlanClient::Register(uint32_t sources, bool ignoreDuplicate,
                              platform::WlanNotificationCallback callback, void* context,
                              uint32_t* previousSources) {
    if (sources != platform::kWlanSourceNone) {
        platform::KeepModuleLoaded();
    }
    // The new callback takes over before wlanapi delivers for the new
    // sources; the old one comes back if wlanapi refuses.
    platform::WlanNotificationCallback oldCallback;
    void* oldContext;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        oldCallback = std::exchange(callback_, callback);
        oldContext = std::exchange(context_, context);
    }
    DWORD previous = 0;
    const DWORD result =
        entries_->registerNotification(handle_, sources, ignoreDuplicate ? TRUE : FALSE,
                                       &WlanClient::Deliver, this, nullptr, &previous);
    if (result != ERROR_SUCCESS) {
        std::lock_guard<std::mutex> lock(mutex_);
        callback_ = oldCallback;
        context_ = oldContext;
    } else if (sources != platform::kWlanSourceNone) {
        std::lock_guard<std::mutex> lock(mutex_);
        self_ = shared_from_this();
    }
    if (previousSources) {
        *previousSources = previous;
    }
    return result;
}

uint32_t WlanClient::Close() {
    const DWORD result = entries_->closeHandle(handle_, nullptr);
    // No callback runs any more: the self-reference may go. The caller
    // holds its own.
    std::lock_guard<std::mutex> lock(mutex_);
    callback_ = nullptr;
    self_.reset();
    return result;
}

VOID WINAPI WlanClient::Deliver(PWLAN_NOTIFICATION_DATA data, PVOID context) {
    auto* client = static_cast<WlanClient*>(context);
    if (!data || !client) {
        return;
    }
    try {
        platform::WlanNotificationCallback callback;
        void* callbackContext;
        {
            std::lock_guard<std::mutex> lock(client->mutex_);
            callback = client->callback_;
            callbackContext = client->context_;
        }
        if (!callback) {
            return;
        }
        platform::WlanNotification notification;
        notification.source = data->NotificationSource;
        notification.code = data->NotificationCode;
        notification.interfaceGuid = FromWin(data->InterfaceGuid);
        if (data->pData && data->dwDataSize > 0) {
            const auto* bytes = static_cast<const uint8_t*>(data->pData);
            notification.data.assign(bytes, bytes + data->dwDataSize);
        }
        callback(&notification, callbackContext);
    } catch (...) {
        LogErrorFun("[WLAN] a notification handler threw (source %lu, code %lu); dropped",
                    static_cast<unsigned long>(data->NotificationSource),
                    static_cast<unsigned long>(data->NotificationCode));
    }
}

}  // namespace connectkit::win
