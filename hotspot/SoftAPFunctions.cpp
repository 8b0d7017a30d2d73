// The exported free functions over the soft-AP manager, for callers that do
// not use the class. Nothing thrown below them reaches the caller.
#include "channel/ChannelSelect.h"
#include "connectkit/SoftAPManager.h"
#include "foundation/Guarded.h"

int SystemCreateSoftAP(SoftAPInfo& info) {
    return Guarded("SystemCreateSoftAP", -1,
                   [&info] { return SoftAPManager::GetInstance()->CreateSoftAP(info); });
}

int SystemDestroySoftAP(SoftAPInfo& info) {
    return Guarded("SystemDestroySoftAP", -1,
                   [&info] { return SoftAPManager::GetInstance()->DestroySoftAP(info); });
}

unsigned char SystemRefreshSoftAPChannel() {
    return Guarded("SystemRefreshSoftAPChannel", static_cast<unsigned char>(0),
                   [] { return SoftAPManager::GetInstance()->RefreshSoftAPChannel(); });
}

int GetSoftApError() {
    return Guarded("GetSoftApError", -1,
                   [] { return SoftAPManager::GetInstance()->GetLastError(); });
}

unsigned char GetSoftAPChannel() {
    return ChannelSelect::GetRecordedAPChannel();
}

void RegistSoftApConnectStatus(ISoftApConnectStatus* observer) {
    Guarded("RegistSoftApConnectStatus", 0, [observer] {
        SoftAPManager::GetInstance()->RegistSoftApConnectStatus(observer);
        return 0;
    });
}

bool GetRestartMobileHotpotFlag() {
    return Guarded("GetRestartMobileHotpotFlag", false,
                   [] { return SoftAPManager::GetInstance()->GetRestartMobileHotpotFlag(); });
}

void SetRestartMobileHotpotFlag(bool restart) {
    LogWarnFun("nearby::SetRestartMobileHotpotFlag  = %d\n", restart ? 1 : 0);
    Guarded("SetRestartMobileHotpotFlag", 0, [restart] {
        SoftAPManager::GetInstance()->SetRestartMobileHotpotFlag(restart);
        return 0;
    });
}

// Kept as a no-op: callers rely on it answering at once without touching any
// adapter.
bool CheckAndRestartWifiVirtualAdapter() {
    LogWarnFun("CheckAndRestartWifiVirtualAdapter..");
    return true;
}
