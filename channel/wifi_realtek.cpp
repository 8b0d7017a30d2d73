#include "channel/wifi_realtek.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "foundation/DebugTrace.h"
#include "platform/Platform.h"

namespace ConnectKit {
namespace {

namespace platform = connectkit::platform;

constexpr uint16_t kGetSupportedChannels = 68;
constexpr uint16_t kSetPreferredChannelSettings = 69;
constexpr uint16_t kResetPreferredChannelSettings = 70;
constexpr uint16_t kGetPreferredChannelSetting = 71;
constexpr uint16_t kSetLegacyGoScanFilter = 72;
constexpr uint16_t kResetLegacyGoScanFilter = 73;
constexpr uint16_t kEnableSoftApShow = 74;
constexpr uint16_t kDisableSoftApShow = 75;
constexpr uint16_t kInitialize = 76;
constexpr uint16_t kDeinitialize = 77;

// The library needs a moment between deinitialising and initialising.
constexpr uint32_t kReinitialisePauseMs = 100;

}  // namespace

WifiRealtekAPI::WifiRealtekAPI() {
    uint32_t error = 0;
    mModule = platform::Current().loader().Load(L"RealtekWiFi.dll", error);
    if (!mModule) {
        LogErrorFun("[WifiRealtekAPI] RealtekWiFi.dll could not be loaded, error %u", error);
    }
    int result = Call(kInitialize);
    LogWarnFun("[WifiRealtekAPI] end Initialize ret = %d ", result);
}

WifiRealtekAPI::~WifiRealtekAPI() {
    int result = Call(kDeinitialize);
    LogWarnFun("[WifiRealtekAPI]  unInitialize end ret = %d", result);
}

int WifiRealtekAPI::CallWith(uint16_t ordinal, void* structure) {
    auto entry =
        mModule ? reinterpret_cast<RealtekWithStructure>(mModule->FindOrdinal(ordinal)) : nullptr;
    if (!entry) {
        LogErrorFun("[WifiRealtekAPI] RealtekWiFi.dll has no ordinal %u", ordinal);
        return -1;
    }
    return entry(structure);
}

int WifiRealtekAPI::Call(uint16_t ordinal) {
    auto entry = mModule ? reinterpret_cast<RealtekPlain>(mModule->FindOrdinal(ordinal)) : nullptr;
    if (!entry) {
        LogErrorFun("[WifiRealtekAPI] RealtekWiFi.dll has no ordinal %u", ordinal);
        return -1;
    }
    return entry();
}

int WifiRealtekAPI::GetSupportedChannels(_GO_SUPPORTTED_CHANNELS* channels) {
    const char* self = "ConnectKit::WifiRealtekAPI::GetSupportedChannels";
    DebugTrace("%s Start ", self);
    int result = CallWith(kGetSupportedChannels, channels);
    if (!channels) {
        DebugTrace("%s para supportedChannel unexcept NULL", self);
        return result;
    }
    if (channels->areaCode == 0 && channels->channelCount == 0) {
        ++mReinitialisations;
        DebugTrace("%s mcc = 0, RealtekWiFiDeinitialize times[%d]", self, mReinitialisations);
        Call(kDeinitialize);
        auto& clock = platform::Current().clock();
        clock.Sleep(kReinitialisePauseMs);
        DebugTrace("%s RealtekWiFiInitialize times[%d]", self, mReinitialisations);
        Call(kInitialize);
        clock.Sleep(kReinitialisePauseMs);
        DebugTrace("%s RealtekWiFiGetSupportedChannels", self);
        result = CallWith(kGetSupportedChannels, channels);
    } else {
        mReinitialisations = 0;
    }
    DebugTrace("%s return %d", self, result);
    return result;
}

int WifiRealtekAPI::Logged(uint16_t ordinal, void* structure, const char* start, const char* end) {
    DebugTrace("%s", start);
    // Ordinals 68 to 72 take the structure; the others take nothing.
    int result = ordinal <= kSetLegacyGoScanFilter ? CallWith(ordinal, structure) : Call(ordinal);
    DebugTrace(end, result);
    return result;
}

int WifiRealtekAPI::GetPreferredChannelSetting(_GO_OPERATION_CHANNEL_SETTING* setting) {
    DebugTrace("[WifiRealtekAPI] GetPreferredChannelSetting start");
    int result = CallWith(kGetPreferredChannelSetting, setting);
    DebugTrace("[WifiRealtekAPI] GetPreferredChannelSetting end ret = %d", result);
    return result == 0 ? 0 : -74;
}

int WifiRealtekAPI::SetPreferredChannelSettings(_INTEL_GO_PREFERRED_CHANNEL* channels) {
    return Logged(kSetPreferredChannelSettings, channels,
                  "[WifiRealtekAPI] SetPreferredChannelSettings start",
                  "[WifiRealtekAPI] SetPreferredChannelSettings end ret = %d");
}

int WifiRealtekAPI::ResetPreferredChannelSettings() {
    return Logged(kResetPreferredChannelSettings, nullptr,
                  "[WifiRealtekAPI] ResetPreferredChannelSettings start",
                  "[WifiRealtekAPI] ResetPreferredChannelSettings end ret = %d");
}

// The library takes no filter: showing the soft AP is all it does.
int WifiRealtekAPI::SetDiscoverFilter(_WIFI_DISCOVER_FILTER*) {
    return Logged(kEnableSoftApShow, nullptr, "[WifiRealtekAPI] RealtekWiFiEnableSoftAPShow start",
                  "[WifiRealtekAPI] RealtekWiFiEnableSoftAPShow end ret = %d");
}

int WifiRealtekAPI::ResetDiscoverFilter() {
    return Logged(kDisableSoftApShow, nullptr,
                  "[WifiRealtekAPI] RealtekWiFiDisableSoftAPShow start",
                  "[WifiRealtekAPI] RealtekWiFiDisableSoftAPShow end ret = %d");
}

int WifiRealtekAPI::SetWifiLegacyGoScanFilter(_WIFI_LEGACY_GO_SCAN_FILTER* filter) {
    return Logged(kSetLegacyGoScanFilter, filter,
                  "[WifiRealtekAPI] SetWifiLegacyGoScanFilter start",
                  "[WifiRealtekAPI] SetWifiLegacyGoScanFilter end ret = %d");
}

int WifiRealtekAPI::ResetLegacyGoScanFilter() {
    return Logged(kResetLegacyGoScanFilter, nullptr,
                  "[WifiRealtekAPI] ResetLegacyGoScanFilter start",
                  "[WifiRealtekAPI] ResetLegacyGoScanFilter end ret = %d");
}

}  // namespace ConnectKit
