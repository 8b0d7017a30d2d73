// The Wi-Fi radio through the platform's radio object.
#include "connectkit/WifiManage.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "bluetooth/RadioControl.h"
#include "bluetooth/RadioDeviceMgr.h"
#include "bluetooth/RadioObservers.h"
#include "foundation/DebugTrace.h"
#include "foundation/FunctionName.h"
#include "foundation/Guarded.h"
#include "platform/Platform.h"

namespace ConnectKitWifi {

using ConnectKit::CAutoLock;
using connectkit::bluetooth::HoldAndSubscribe;
using connectkit::bluetooth::SwitchAnswer;
using connectkit::bluetooth::SwitchRadio;
using connectkit::platform::RadioKind;
using connectkit::platform::RadioState;

std::atomic<WifiManage*> WifiManage::wifiManage{nullptr};

WifiManage* WifiManage::GetInstance() {
    DebugTrace("WifiManage::getInstance");
    // Never destroyed: the platform keeps our state handler for as long as
    // the process lives.
    static WifiManage* instance = new WifiManage();
    return instance;
}

WifiManage::WifiManage()
    : radio_(std::make_unique<RadioHolder>()),
      observers_(
          std::make_unique<connectkit::bluetooth::ObserverList<IWifiStateChangeNotification>>()) {
    const char* function = CK_FUNCTION;
    DebugTrace("WifiManage:: new WifiManage()");
    wifiManage = this;
    CAutoLock guard(lock_);
    if (!SetWifiRadio()) {
        LogErrorFun("%s:SetWifiRadio is false\n", function);
    }
}

WifiManage::~WifiManage() = default;

int WifiManage::SetWifiRadio() {
    if (HoldAndSubscribe(RadioKind::WiFi, *radio_, &WifiStateChangeCallback, CK_FUNCTION)) {
        return 1;
    }
    LogErrorFun("failed to get wifi radio");
    return 0;
}

EnableWifiResult WifiManage::EnableWifi(int enable) {
    return Guarded(CK_FUNCTION, ENABLE_WIFI_FAILED, [this, enable] {
        CAutoLock guard(lock_);
        if (!radio_->Get()) {
            LogWarnFun("wifi == nullptr");
            RadioDeviceMgr::GetInstance()->LoadRadios();
            if (!SetWifiRadio()) {
                LogErrorFun("SetWifiRadio is false");
                return ENABLE_WIFI_FAILED;
            }
        }
        auto radio = radio_->Get();
        return static_cast<EnableWifiResult>(SwitchRadio(*radio, enable, [&] {
            radio->SetStateAsync(RadioState::On);
            return SwitchAnswer::Requested;
        }));
    });
}

WifiState WifiManage::GetWifiState() {
    const char* function = CK_FUNCTION;
    return Guarded(function, WIFI_STATE_UNKNOWN, [this, function] {
        CAutoLock guard(lock_);
        if (!radio_->Get() && !SetWifiRadio()) {
            LogWarnFun("%s:GetWifiState is Unknown ", function);
            return WIFI_STATE_UNKNOWN;
        }
        return static_cast<WifiState>(radio_->Get()->State());
    });
}

int WifiManage::RegistWifiStateChangeCallback(IWifiStateChangeNotification* observer) {
    return Guarded(CK_FUNCTION, 0, [this, observer] {
        CAutoLock guard(lock_);
        if (!observer) {
            return 0;
        }
        observers_->Add(observer);
        return 1;
    });
}

int WifiManage::UnRegistWifiStateChangeCallback(IWifiStateChangeNotification* observer) {
    {
        CAutoLock guard(lock_);
        if (!observer) {
            return 0;
        }
    }
    // The wait for a delivery under way runs without our lock: the observer
    // may be calling back in.
    const char* function = CK_FUNCTION;
    Guarded(function, [&] { observers_->Remove(observer, function); });
    return 1;
}

// On a platform thread.
void WifiManage::WifiStateChangeCallback(connectkit::platform::Radio& sender) {
    Guarded(CK_FUNCTION, [&sender] {
        if (auto* manage = wifiManage.load()) {
            manage->NotifyWifiStateChanged(sender.State());
        }
    });
}

void WifiManage::NotifyWifiStateChanged(RadioState state) {
    DebugTrace("WifiManage:: NotifyWifiStateChanged status = %d", static_cast<int>(state));
    observers_->Deliver("ConnectKitWifi::WifiManage::OnWifiStateChanged",
                        [state](auto& observer) { observer.OnWifiStateChanged(state); });
}

}  // namespace ConnectKitWifi
