// The hotspot's band and channel: gathering what the decision needs from the
// driver and the phone's lists, pinning the card to the decision, and reading
// back the channel in use. The decision itself is PlanChannel (ChannelPlan.h).

#include <algorithm>
#include <cctype>

#include "channel/ChannelLog.h"
#include "channel/ChannelSelect.h"
#include "connectkit/ErrorStatus.h"
#include "connectkit/WifiAPI.h"
#include "foundation/FunctionName.h"

namespace ConnectKit {
namespace {

std::string UpperCase(std::string text) {
    for (auto& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

// Pins the card to the one planned channel. A list of alternatives would let
// the driver move to a channel the decision ruled out for this phone.
int PinChannel(const ChannelPlan& plan) {
    _INTEL_GO_PREFERRED_CHANNEL preferred{};
    preferred.version = kPreferredChannelVersion;
    preferred.channelCount = 1;
    preferred.entries[0].channel = static_cast<uint8_t>(plan.channel);
    preferred.entries[0].band = plan.band == Nearby::FREQUENCE_5G ? kDriverBand5 : kDriverBand24;
    preferred.entries[0].priority = 0;
    return WifiAPI::GetInstance()->SetPreferredChannelSettings(&preferred);
}

void LogPlan(const char* self, const ChannelPlan& plan) {
    CHANNEL_WARN("%s plan band:%s channel:%d reason:%s", self, BandName(plan.band), plan.channel,
                 plan.reason.c_str());
}

}  // namespace

std::set<std::string> ChannelSelect::fiveGBlackList;
ChannelPlan ChannelSelect::lastPlan;
unsigned char ChannelSelect::recordedAPChannel = 0;

bool ChannelSelect::IsIn5GBlackList() {
    if (pairDeviceModelName.empty() || fiveGBlackList.count(pairDeviceModelName) == 0) {
        return false;
    }
    CHANNEL_WARN("LIST === IsIn5GBlackList:true");
    return true;
}

void ChannelSelect::Set5GBlackList(const std::set<std::string>& models) {
    fiveGBlackList.clear();
    for (const auto& model : models) {
        fiveGBlackList.insert(UpperCase(model));
    }
}

ChannelPlanInputs ChannelSelect::GatherPlanInputs(bool apFlag) {
    ChannelPlanInputs inputs;
    GetPCSupportChannelList(inputs.pc24, inputs.pc5, inputs.areaCode);
    size_t before = inputs.pc5.size();
    RemoveIntelChinaIndoorChannel(inputs.pc5);
    inputs.chinaIndoorRemoved = inputs.pc5.size() != before;
    unsigned short areaCode = 0;
    inputs.areaSupports5G = GetAreaIsSupport5GChannel(areaCode);
    inputs.european = IsEuropeanCountries();
    inputs.modelOn5GBlackList = IsIn5GBlackList();
    inputs.phone = phoneChannels;
    inputs.phone24 = phone24Channels;
    inputs.phoneCurrent = phoneCurrentChannel;
    inputs.apFlag = apFlag;
    return inputs;
}

const ChannelPlan& ChannelSelect::LastPlan() {
    return lastPlan;
}

int ChannelSelect::SetAPFrequence(bool apFlag, bool setChannel) {
    const char* self = CK_FUNCTION;
    try {
        CHANNEL_WARN("%s start apFlag:%d setChannel:%d", self, apFlag, setChannel);
        ChannelPlanInputs inputs = GatherPlanInputs(apFlag);
        recordPhoneChannel = inputs.phoneCurrent;
        lastPlan = PlanChannel(inputs);
        LogPlan(self, lastPlan);
        if (lastPlan.channel == 0) {
            CHANNEL_ERROR("%s no channel to set", self);
            return kPlanNoChannel;
        }
        if (!setChannel) {
            return kPlanSet;
        }
        int result = PinChannel(lastPlan);
        if (result == 0) {
            return kPlanSet;
        }
        CHANNEL_ERROR("%s SetPreferredChannelSettings channel:%d failed, ret:%d", self,
                      lastPlan.channel, result);
        if (lastPlan.band != Nearby::FREQUENCE_5G) {
            return kPlanSetFailed;
        }
        ErrorStatus::GetInstance()->PostNotification(CONNECT_ERROR_SET_5G_CHANNEL_FAILED);
        inputs.fiveGhzSetFailed = true;
        lastPlan = PlanChannel(inputs);
        LogPlan(self, lastPlan);
        if (lastPlan.channel == 0) {
            return kPlanSetFailed;
        }
        result = PinChannel(lastPlan);
        if (result != 0) {
            CHANNEL_ERROR("%s fallback channel:%d failed too, ret:%d", self, lastPlan.channel,
                          result);
            return kPlanSetFailed;
        }
        return kPlanSet;
    } catch (...) {
        CHANNEL_ERROR("%s catch unknown exception...\n", self);
        return kPlanInternalError;
    }
}

int ChannelSelect::RefreshAPFrequence(unsigned char& channel) {
    const char* self = CK_FUNCTION;
    try {
        _GO_OPERATION_CHANNEL_SETTING setting{};
        int result = WifiAPI::GetInstance()->GetPreferredChannelSetting(&setting);
        bool named =
            result == 0 && setting.channel <= 255 &&
            GetFrequenceType(static_cast<int>(setting.channel)) != Nearby::FREQUENCE_UNKNOWN;
        int code = 0;
        if (named) {
            channel = static_cast<unsigned char>(setting.channel);
            if (lastPlan.channel != 0 && lastPlan.channel != channel) {
                CHANNEL_WARN("%s driver runs channel %d, not the planned %d", self, channel,
                             lastPlan.channel);
            }
        } else {
            code = result != 0 ? result : kRefreshNoChannel;
            channel = static_cast<unsigned char>(lastPlan.channel);
            CHANNEL_ERROR("%s driver cannot say (ret:%d, channel:%u); last decision %d", self,
                          result, setting.channel, lastPlan.channel);
        }
        recordedAPChannel = channel;
        return code;
    } catch (...) {
        CHANNEL_ERROR("%s catch unknown exception...\n", self);
        channel = recordedAPChannel;
        return kPlanInternalError;
    }
}

unsigned char ChannelSelect::GetRecordedAPChannel() {
    return recordedAPChannel;
}

}  // namespace ConnectKit
