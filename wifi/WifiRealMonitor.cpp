#include "connectkit/WifiRealMonitor.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <vector>

#include "SDK/Util/LogTool/LogTool.h"
#include "connectkit/DataReport.h"
#include "foundation/FunctionName.h"
#include "foundation/Guarded.h"
#include "platform/LibraryThreads.h"
#include "platform/ModuleLifetime.h"
#include "platform/Platform.h"
#include "platform/ports/Errors.h"
#include "platform/ports/Wlan.h"
#include "platform/ports/WlanRecords.h"
#include "platform/suite/NetworkAdapter.h"
#include "wifi/WlanCallbackScope.h"

namespace platform = connectkit::platform;

namespace {

platform::Wlan& Wlan() {
    return platform::Current().wlan();
}

void MonitorCallback(platform::WlanNotification* notification, void*) {
    const connectkit::wifi::WlanCallbackScope scope;
    try {
        WifiRealMonitor* monitor = WifiRealMonitor::GetInstance();
        platform::WlanConnectionNotificationData data;
        if (notification == nullptr) {
            // Nothing to read.
        } else if (notification->source == platform::kWlanSourceAcm) {
            if (notification->code == platform::kAcmConnectionComplete &&
                platform::DecodeConnectionNotification(notification->data, data)) {
                if (data.reasonCode == 0) {
                    monitor->HandlerConnectComplete(notification);
                } else {
                    LogWarnFun("WlanSourceACMCallBack Connect Not Really Complete");
                }
            }
        } else if (notification->source == platform::kWlanSourceMsm) {
            if (notification->code == platform::kMsmRoamingStart) {
                monitor->HandlerRoamingStart();
            } else if (notification->code == platform::kMsmRoamingEnd) {
                monitor->HandlerRoamingEnd(notification);
            } else if (notification->code == platform::kMsmDisconnected) {
                monitor->HandlerDisconnect();
            }
        }
    } catch (const std::exception& error) {
        LogErrorFun("%s catch exception: %.200s", "WifiRealMonitor::Callback", error.what());
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", "WifiRealMonitor::Callback");
    }
}

// The SSID's bytes up to its first zero, never past its 32-byte field.
size_t SsidTextLength(const platform::Dot11Ssid& ssid) {
    const auto end = std::find(ssid.bytes.begin(), ssid.bytes.end(), 0);
    return static_cast<size_t>(end - ssid.bytes.begin());
}

}  // namespace

WifiRealMonitor::WifiRealMonitor()
    : ssid{},
      channel(0),
      rssi(0),
      quality(0),
      wifiType{},
      manuType(0),
      handle(nullptr),
      socketsStarted(1),
      running(0),
      listener(nullptr) {}

WifiRealMonitor* WifiRealMonitor::GetInstance() {
    static WifiRealMonitor instance;
    return &instance;
}

void WifiRealMonitor::init() {
    Guarded(CK_FUNCTION, [this] {
        manuType = static_cast<int32_t>(NetworkAdapter::GetWifiManuType());
        const char* text = "Unknown";
        const char* error = "WifiRealMonitor::init memcpy_s unexpectedlly set Unknown Error!";
        if (manuType == WIFI_CARD_INTEL) {
            text = "Intel";
            error = "WifiRealMonitor::init memcpy_s unexpectedlly set intel Error!";
        } else if (manuType == WIFI_CARD_REALTEK) {
            text = "Realtek";
            error = "WifiRealMonitor::init memcpy_s unexpectedlly set Realtek Error!";
        }
        const size_t length = std::strlen(text) + 1;
        if (length > sizeof(wifiType)) {
            LogErrorFun("%s", error);
            return;
        }
        std::memcpy(wifiType, text, length);
    });
}

bool WifiRealMonitor::WifiRealMonitorRegist() {
    return Guarded(CK_FUNCTION, false, [this] {
        if (running == 1) {
            LogWarnFun(" is already running");
            return true;
        }
        if (platform::Current().sockets().Startup(platform::kWinsockVersion22) != 0) {
            LogErrorFun("WifiRealMonitor::WifiRealMonitorRegist WSAStartup Error");
            socketsStarted = 0;
            running = 0;
            return false;
        }
        uint32_t version = 0;
        platform::WlanHandle opened = nullptr;
        uint32_t result = Wlan().OpenHandle(platform::kWlanClientVersion, version, opened);
        if (result != platform::kErrorSuccess) {
            LogErrorFun("WlanOpenHandle failed,dwRet=%u", result);
            running = 0;
            return false;
        }
        handle = opened;
        // The platform calls back into this module: it stays loaded from here on.
        platform::KeepModuleLoaded();
        result =
            Wlan().RegisterNotification(handle, platform::kWlanSourceAcm | platform::kWlanSourceMsm,
                                        true, &MonitorCallback, nullptr, nullptr);
        if (result != platform::kErrorSuccess) {
            LogErrorFun("WlanRegisterNotification failed,dwRet=%u", result);
            running = 0;
        } else {
            running = 1;
        }
        return running == 1;
    });
}

void WifiRealMonitor::unInit() {
    Guarded(CK_FUNCTION, [this] {
        if (handle != nullptr) {
            Wlan().RegisterNotification(handle, platform::kWlanSourceNone, true, &MonitorCallback,
                                        nullptr, nullptr);
            platform::WlanHandle closing = handle;
            if (connectkit::wifi::WlanCallbackScope::Active()) {
                platform::StartDetachedLibraryThread([closing] { Wlan().CloseHandle(closing); });
            } else {
                Wlan().CloseHandle(closing);
            }
            handle = nullptr;
        }
        // The flag starts at 1, so a monitor that never started Winsock still
        // cleans it up; Winsock answers that with an error of its own.
        if (socketsStarted == 1) {
            platform::Current().sockets().Cleanup();
        }
        // `running` stays set: a later WifiRealMonitorRegist only says so.
    });
}

void WifiRealMonitor::RegistWifiStateChangeCallBack(WifiRealMonitorStateCallBack* callback) {
    listener = callback;
}

bool WifiRealMonitor::GetInfoByWlanQueryInterface(void* wlanHandle,
                                                  platform::WlanNotification* notification,
                                                  platform::WlanIntfOpcode opcode,
                                                  platform::WlanInterfaceAnswer& data) {
    return Guarded(CK_FUNCTION, false, [&] {
        if (notification == nullptr ||
            Wlan().QueryInterface(wlanHandle, notification->interfaceGuid, opcode, data) !=
                platform::kErrorSuccess) {
            LogErrorFun(
                "WifiRealMonitor::GetInfoByWlanQueryInterface WlanQueryInterface unexceptlly  "
                "get null");
            return false;
        }
        return true;
    });
}

bool WifiRealMonitor::CheckWifiConnectSuccess(platform::WlanNotification* data) {
    return Guarded(CK_FUNCTION, false, [&] {
        if (data == nullptr) {
            LogErrorFun("WifiRealMonitor::CheckWifiConnectSuccessnotificationData is NULL");
            return false;
        }
        platform::WlanInterfaceAnswer answer;
        if (!GetInfoByWlanQueryInterface(handle, data, platform::WlanIntfOpcode::CurrentConnection,
                                         answer) ||
            answer.connection.state != platform::WlanInterfaceState::Connected) {
            return false;
        }
        quality = answer.connection.signalQuality;
        const size_t length = SsidTextLength(answer.connection.ssid);
        std::memcpy(ssid, answer.connection.ssid.bytes.data(), length);
        ssid[length] = '\0';
        return true;
    });
}

void WifiRealMonitor::UpdateWifiSsid(platform::WlanNotification* data) {
    Guarded(CK_FUNCTION, [&] {
        platform::WlanConnectionNotificationData record;
        if (data == nullptr || !platform::DecodeConnectionNotification(data->data, record)) {
            return;
        }
        if (record.ssid.length >= sizeof(ssid)) {
            return;
        }
        // No terminator: a shorter name leaves the tail of a longer one, which a
        // disconnect clears. A length beyond the 32-byte field is cut to it.
        const size_t length = std::min<size_t>(record.ssid.length, record.ssid.bytes.size());
        if (length < record.ssid.length) {
            LogWarnFun("%s SSID length %u is beyond its field", CK_FUNCTION, record.ssid.length);
        }
        std::memcpy(ssid, record.ssid.bytes.data(), length);
    });
}

void WifiRealMonitor::UpdateWifiRssi(platform::WlanNotification* data) {
    Guarded(CK_FUNCTION, [&] {
        platform::WlanInterfaceAnswer answer;
        if (GetInfoByWlanQueryInterface(handle, data, platform::WlanIntfOpcode::Rssi, answer)) {
            SetRssiValue(answer.rssi);
        }
    });
}

void WifiRealMonitor::UpdateWifiChannel(platform::WlanNotification* data) {
    Guarded(CK_FUNCTION, [&] {
        platform::WlanInterfaceAnswer answer;
        if (GetInfoByWlanQueryInterface(handle, data, platform::WlanIntfOpcode::ChannelNumber,
                                        answer)) {
            channel = answer.channel;
        }
    });
}

void WifiRealMonitor::SetRssiValue(long value) {
    rssi = static_cast<int32_t>(value);
}

void WifiRealMonitor::ClearParas() {
    ssid[0] = '\0';
    channel = 0;
    rssi = 0;
    quality = 0;
}

struct WifiRealMonitor::Steps {
    // A connection or roam that completed: the link's values, the report,
    // then the listener. `handler` names the caller in the log.
    static void ReportLinkUp(WifiRealMonitor& monitor, platform::WlanNotification* data,
                             const char* state, const char* handler) {
        if (monitor.handle == nullptr || data == nullptr) {
            LogErrorFun("%swlanHander or notificationData is NULL", handler);
            return;
        }
        if (monitor.CheckWifiConnectSuccess(data)) {
            monitor.UpdateWifiSsid(data);
            monitor.UpdateWifiRssi(data);
            monitor.UpdateWifiChannel(data);
        }
        monitor.UploadData(state);
        if (monitor.listener != nullptr) {
            try {
                monitor.listener->OnWifiChannelChanged(monitor.channel);
            } catch (...) {
                LogErrorFun("%s listener threw", handler);
            }
        }
    }
};

void WifiRealMonitor::HandlerConnectComplete(platform::WlanNotification* data) {
    Guarded(CK_FUNCTION, [&] {
        Steps::ReportLinkUp(*this, data, "ConnectComplete",
                            "WifiRealMonitor::HandlerConnectComplete");
    });
}

void WifiRealMonitor::HandlerRoamingEnd(platform::WlanNotification* data) {
    Guarded(CK_FUNCTION, [&] {
        Steps::ReportLinkUp(*this, data, "RoamingEnd", "WifiRealMonitor::HandlerRoamingEnd");
    });
}

void WifiRealMonitor::HandlerDisconnect() {
    Guarded(CK_FUNCTION, [&] {
        ClearParas();
        UploadData("Disconnected");
    });
}

void WifiRealMonitor::HandlerRoamingStart() {
    Guarded(CK_FUNCTION, [&] {
        ClearParas();
        UploadData("RoamingStart");
    });
}

void WifiRealMonitor::UploadData(const std::string& state) {
    Guarded(CK_FUNCTION, [&] {
        const std::string ssidText(ssid, strnlen(ssid, sizeof(ssid)));
        const std::string typeText(wifiType, strnlen(wifiType, sizeof(wifiType)));
        LogWarnFun(
            "WifiRealMonitor::UploadData wifiType:%s,state:%s,ssid:%s,rssi:%d,channel:%d,"
            "quality:%d",
            typeText.c_str(), state.c_str(), ssidText.c_str(), static_cast<int>(rssi),
            static_cast<int>(channel), static_cast<int>(quality));
        SynergyDataReportClass::GetInstance()->ReportValues(
            SYNERGY_REPORT_WIFI_REAL_MONITOR, typeText, state, ssidText, rssi, channel, quality);
    });
}

bool StartWifiRealMonitor() {
    try {
        WifiRealMonitor* monitor = WifiRealMonitor::GetInstance();
        monitor->init();
        const bool monitoring = monitor->WifiRealMonitorRegist();
        LogWarnFun(monitoring ? "StartWifiRealMonitor is on monitoring"
                              : "StartWifiRealMonitor fail to monitor");
        return monitoring;
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", "StartWifiRealMonitor");
        return false;
    }
}

void StopWifiRealMonitor() {
    try {
        WifiRealMonitor::GetInstance()->unInit();
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", "StopWifiRealMonitor");
    }
}
