// The Bluetooth radio through the platform's radio object, its observers,
// and the way back to it through the registry when the platform lists none.
#include "connectkit/BluetoothManage.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "bluetooth/RadioControl.h"
#include "bluetooth/RadioDeviceMgr.h"
#include "bluetooth/RadioObservers.h"
#include "foundation/DebugTrace.h"
#include "foundation/FunctionName.h"
#include "foundation/Guarded.h"
#include "platform/Platform.h"

namespace ConnectKitBluetooth {

using ConnectKit::CAutoLock;
using connectkit::bluetooth::HoldAndSubscribe;
using connectkit::bluetooth::SwitchAnswer;
using connectkit::bluetooth::SwitchRadio;
using connectkit::platform::RadioKind;
using connectkit::platform::RadioState;

namespace {

constexpr int kRadioSearchTries = 3;
constexpr uint32_t kRadioSearchPauseMs = 300;
constexpr uint8_t kWakeTries = 30;
constexpr uint32_t kWakePauseMs = 1000;

void Sleep(uint32_t milliseconds) {
    connectkit::platform::Current().clock().Sleep(milliseconds);
}

}  // namespace

std::atomic<BluetoothManage*> BluetoothManage::bluetoothManage{nullptr};

BluetoothManage::IBluetoothStateChangeNotification::~IBluetoothStateChangeNotification() = default;

BluetoothManage* BluetoothManage::GetInstance() {
    DebugTrace("BluetoothManage::getInstance");
    // Never destroyed: the platform keeps our state handlers for as long as
    // the process lives.
    static BluetoothManage* instance = new BluetoothManage();
    return instance;
}

BluetoothManage::BluetoothManage()
    : radio_(std::make_unique<RadioHolder>()),
      observers_(std::make_unique<
                 connectkit::bluetooth::ObserverList<IBluetoothStateChangeNotification>>()) {
    DebugTrace("BluetoothManage::new sBluetoothManage");
    bluetoothManage = this;
    CAutoLock guard(lock_);
    if (!SetBluetoothRadio()) {
        LogWarnFun("SetBluetoothRadio failed");
    }
}

BluetoothManage::~BluetoothManage() = default;

// The handler reaches us only through the static pointer.
int BluetoothManage::SetBluetoothRadio() {
    if (HoldAndSubscribe(RadioKind::Bluetooth, *radio_, &BluetoothStateChangeCallback,
                         CK_FUNCTION)) {
        return 1;
    }
    LogErrorFun("failed to get bluetooth radio");
    return 0;
}

// On a platform thread.
void BluetoothManage::BluetoothStateChangeCallback(connectkit::platform::Radio& sender) {
    Guarded(CK_FUNCTION, [&sender] {
        if (auto* manage = bluetoothManage.load()) {
            manage->NotifyBluetoothStateChanged(sender.State());
        }
    });
}

EnableBTResult BluetoothManage::EnableBluetooth(int enable) {
    const char* function = CK_FUNCTION;
    if (!radio_->Get()) {
        return EnableBluetoothWithBtPtrIsNull(enable);
    }
    return Guarded(function, ENABLE_BT_FAILED, [&] {
        CAutoLock guard(lock_);
        auto radio = radio_->Get();
        return static_cast<EnableBTResult>(SwitchRadio(*radio, enable, [&] {
            try {
                radio->SetStateAsync(RadioState::On);
                DebugTrace("%s:SetStateAsync test\n", function);
            } catch (...) {
                LogErrorFun("%s: SetStateAsync In Catch", function);
                return SwitchAnswer::Failed;
            }
            return SwitchAnswer::Requested;
        }));
    });
}

EnableBTResult BluetoothManage::EnableBluetoothWithBtPtrIsNull(int enable) {
    const char* function = CK_FUNCTION;
    return Guarded(function, ENABLE_BT_FAILED, [&] {
        CAutoLock guard(lock_);
        if (enable != 1) {
            return ENABLE_BT_FAILED;
        }
        int deviceOn = 0;
        int registryOn = 0;
        GetBluetoothState_Bydevice(&deviceOn);
        int ok = GetBluetoothState_ByRegist(&registryOn);
        LogWarnFun("%s:EnableBT deviceRatio %d, registRatio %d\n", function, deviceOn, registryOn);
        if (!ok) {
            return ENABLE_BT_FAILED;
        }
        if (deviceOn == 1 && registryOn == 1) {
            UpdateBluetoothStateChanged(RadioState::On);
            return ENABLE_BT_REQUESTED;
        }
        if (!EnableBluetooth_ByRegist(1)) {
            LogWarnFun("%s:EnableBluetooth EnableBluetooth_ByRegist fail\n", function);
            return ENABLE_BT_FAILED;
        }
        LogWarnFun("%s:EnableBluetooth start SetBluetoothRadio\n", function);
        for (int i = 0; i < kRadioSearchTries; ++i) {
            RadioDeviceMgr::GetInstance()->LoadRadios();
            if (SetBluetoothRadio() == 1) {
                break;
            }
            Sleep(kRadioSearchPauseMs);
        }
        if (auto radio = radio_->Get()) {
            try {
                if (radio->State() == RadioState::Off) {
                    radio->SetStateAsync(RadioState::On);
                }
            } catch (...) {
                LogErrorFun("%s catch unknown exception...\n", function);
            }
        }
        UpdateBluetoothStateChanged(RadioState::On);
        LogWarnFun("%s:EnableBluetooth succes\n", function);
        return ENABLE_BT_REQUESTED;
    });
}

BluetoothState BluetoothManage::GetBluetoothState() {
    const char* function = CK_FUNCTION;
    return Guarded(function, BT_STATE_UNKNOWN, [&] {
        CAutoLock guard(lock_);
        if (!radio_->Get()) {
            if (!SetBluetoothRadio()) {
                int registryOn = 0;
                int deviceOn = 0;
                GetBluetoothState_ByRegist(&registryOn);
                GetBluetoothState_Bydevice(&deviceOn);
                return registryOn && deviceOn ? BT_STATE_ON : BT_STATE_OFF;
            }
            if (auto radio = radio_->Get()) {
                NotifyBluetoothStateChanged(radio->State());
            }
        }
        auto radio = radio_->Get();
        return radio ? static_cast<BluetoothState>(radio->State()) : BT_STATE_UNKNOWN;
    });
}

BluetoothState BluetoothManage::GetBluetoothState2() {
    const char* function = CK_FUNCTION;
    return Guarded(function, BT_STATE_UNKNOWN, [&] {
        if (auto radio = radio_->Get()) {
            return static_cast<BluetoothState>(radio->State());
        }
        LogWarnFun("get BT state failed, current BT device is null, return off state.");
        int registryOn = 0;
        int deviceOn = 0;
        GetBluetoothState_ByRegist(&registryOn);
        GetBluetoothState_Bydevice(&deviceOn);
        LogWarnFun("%s: deviceRatio %d, registRatio %d\n", function, deviceOn, registryOn);
        return registryOn && deviceOn ? BT_STATE_ON : BT_STATE_OFF;
    });
}

bool BluetoothManage::IsBluetoothAvailable() {
    CAutoLock guard(lock_);
    return radio_->Get() != nullptr;
}

int BluetoothManage::RegistBluetoothStateChangeCallback(
    IBluetoothStateChangeNotification* observer) {
    lock_.Lock();
    if (!observer) {
        return 0;
    }
    int result = Guarded(CK_FUNCTION, 0, [this, observer] {
        observers_->Add(observer);
        return 1;
    });
    lock_.Unlock();
    return result;
}

int BluetoothManage::UnRegistBluetoothStateChangeCallback(
    IBluetoothStateChangeNotification* observer) {
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

void BluetoothManage::NotifyBluetoothStateChanged(RadioState state) {
    if (state == RadioState::On && !IsRadioAvailable()) {
        return;
    }
    DebugTrace("%s: NotifyBluetoothStateChanged status %d\n", CK_FUNCTION, static_cast<int>(state));
    UpdateBluetoothStateChanged(state);
}

void BluetoothManage::UpdateBluetoothStateChanged(RadioState state) {
    DebugTrace("%s: UpdateBluetoothStateChanged status %d\n", CK_FUNCTION, static_cast<int>(state));
    observers_->Deliver("ConnectKitBluetooth::BluetoothManage::OnBluetoothStateChanged",
                        [state](auto& observer) { observer.OnBluetoothStateChanged(state); });
}

void BluetoothManage::setradio() {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        int registryOn = 0;
        if (!GetBluetoothState_ByRegist(&registryOn)) {
            DebugTrace("%s:setradio GetBluetoothState_ByRegist fail...\n", function);
        }
        DebugTrace("%s:setradio ratio=%d...\n", function, registryOn);
        uint8_t count = 0;
        for (; count < kWakeTries; ++count) {
            DebugTrace("%s:EnableBluetooth try %u...\n", function, count);
            int result = EnableBluetooth(1);
            DebugTrace("%s:EnableBluetooth try %u result=%d\n", function, count, result);
            if (result == ENABLE_BT_REQUESTED || result == ENABLE_BT_ALREADY) {
                DebugTrace("%s:EnableBluetooth try %u success\n", function, count);
                if (registryOn == 0) {
                    DebugTrace("%s:EnableBluetooth false start\n", function);
                    if (EnableBluetooth(1) != ENABLE_BT_REQUESTED) {
                        LogWarnFun("EnableBluetooth false failed");
                    }
                    DebugTrace("%s:EnableBluetooth false end\n", function);
                }
                NotifyBluetoothStateChanged(registryOn == 1 ? RadioState::On : RadioState::Off);
                break;
            }
            Sleep(kWakePauseMs);
        }
        DebugTrace("%s:EnableBluetooth try end count=%d\n", function, count);
        if (registryOn == 0) {
            DebugTrace("%s:EnableBluetooth false start\n", function);
            EnableBluetooth(0);
            DebugTrace("%s:EnableBluetooth false end\n", function);
        }
    });
}

}  // namespace ConnectKitBluetooth
