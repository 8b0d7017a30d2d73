#include "channel/ChannelSelect.h"

#include <algorithm>
#include <cctype>

#include "channel/ChannelLog.h"
#include "connectkit/ChannelList.h"
#include "connectkit/ErrorStatus.h"
#include "connectkit/WifiAPI.h"
#include "foundation/FunctionName.h"

namespace ConnectKit {
namespace {

std::set<uint16_t> DefaultEuropeanAreaCodes() {
    // The EU and EEA members, Switzerland and the United Kingdom, by their
    // ISO 3166 letters (the United Kingdom's regulatory code is GB).
    static const char* const kLetters[] = {"AT", "BE", "BG", "HR", "CY", "CZ", "DK", "EE",
                                           "FI", "FR", "DE", "GR", "HU", "IE", "IT", "LV",
                                           "LT", "LU", "MT", "NL", "PL", "PT", "RO", "SK",
                                           "SI", "ES", "SE", "IS", "LI", "NO", "CH", "GB"};
    std::set<uint16_t> codes;
    for (const char* letters : kLetters) {
        codes.insert(AreaCode(letters[0], letters[1]));
    }
    return codes;
}

}  // namespace
}  // namespace ConnectKit

using ConnectKit::AreaCode;
using ConnectKit::ChannelPlan;
using ConnectKit::ChannelPlanInputs;
using ConnectKit::kAreaChina;
using ConnectKit::kAreaUnitedStates;
using ConnectKit::PlanChannel;
using ConnectKit::WifiAPI;

std::vector<int> ChannelSelect::phoneChannels;
std::vector<int> ChannelSelect::phone24Channels;
int ChannelSelect::phoneCurrentChannel = 0;
int ChannelSelect::recordPhoneChannel = 0;
std::list<std::string> ChannelSelect::productTypes;
std::string ChannelSelect::pairDeviceModelName;
WifiCardManuType ChannelSelect::cardMaker = WIFI_CARD_INTEL;
std::set<uint16_t> ChannelSelect::europeanAreaCodes = ConnectKit::DefaultEuropeanAreaCodes();

std::string ChannelSelect::FormatChannels(const std::vector<int>& channels) {
    std::string text;
    for (int channel : channels) {
        text += std::to_string(channel) + ",";
    }
    return text;
}

ChannelSelect::Answer ChannelSelect::QuerySupportedChannels() {
    Answer answer;
    answer.result = WifiAPI::GetInstance()->GetSupportedChannels(&answer.channels);
    return answer;
}

void ChannelSelect::GetPCSupportChannelList(std::vector<int>& list24, std::vector<int>& list5,
                                            unsigned short& areaCode) {
    GetPCSupportChannelList(QuerySupportedChannels(), list24, list5, areaCode);
}

void ChannelSelect::GetPCSupportChannelList(const Answer& answer, std::vector<int>& list24,
                                            std::vector<int>& list5, unsigned short& areaCode) {
    list24.clear();
    list5.clear();
    const auto& supported = answer.channels;
    if (answer.result == 0 && supported.channelCount > 0) {
        bool intelOutsideCnUs = cardMaker == WIFI_CARD_INTEL && supported.areaCode != kAreaChina &&
                                supported.areaCode != kAreaUnitedStates;
        for (int i = 0; i < supported.channelCount; ++i) {
            int channel = supported.channels[i];
            if (channel >= 36) {
                if (intelOutsideCnUs && channel <= 48) {
                    CHANNEL_WARN("TTEESSTT == %s= GetPCSupport channel filter.", CK_FUNCTION);
                    continue;
                }
                list5.push_back(channel);
            } else if (channel >= 1 && channel <= 13) {
                list24.push_back(channel);
            }
        }
    }
    areaCode = supported.areaCode;
}

bool ChannelSelect::GetAreaIsSupport5GChannel(unsigned short& areaCode) {
    return GetAreaIsSupport5GChannel(QuerySupportedChannels(), areaCode);
}

bool ChannelSelect::GetAreaIsSupport5GChannel(const Answer& answer, unsigned short& areaCode) {
    if (answer.result != 0) {
        CHANNEL_WARN("WifiAPI GetSupportedChannels Failed, ret: %d", answer.result);
        return false;
    }
    const auto& supported = answer.channels;
    areaCode = supported.areaCode;
    if (std::any_of(supported.channels, supported.channels + supported.channelCount,
                    [](uint8_t channel) { return channel > 13; })) {
        return true;
    }
    CHANNEL_WARN("This AreaCode No Support 5G Channel.");
    return false;
}

void ChannelSelect::RemoveIntelChinaIndoorChannel(std::vector<int>& list) {
    if (cardMaker != WIFI_CARD_INTEL) {
        return;
    }
    RemoveIntelChinaIndoorChannel(QuerySupportedChannels(), list);
}

void ChannelSelect::RemoveIntelChinaIndoorChannel(const Answer& answer, std::vector<int>& list) {
    if (cardMaker != WIFI_CARD_INTEL || answer.channels.areaCode != kAreaChina) {
        return;
    }
    CHANNEL_WARN("%s RemoveIntelChinaIndoorChannel\n", CK_FUNCTION);
    std::erase_if(list,
                  [](int channel) { return channel >= 36 && channel <= 48 && channel % 4 == 0; });
}

void ChannelSelect::Remove20MBandWidthChannel(std::vector<int>& list) {
    if (list.size() < 2) {
        return;
    }
    CHANNEL_WARN("%s Remove20MBandWidthChannel\n", CK_FUNCTION);
    std::erase(list, 165);
}

void ChannelSelect::GetPhoneChannelList(std::string& text) {
    text = FormatChannels(phoneChannels);
    CHANNEL_WARN("%s Phone support Channels list:%s\n", CK_FUNCTION, text.c_str());
}

void ChannelSelect::GetPhone24GChannelList(std::string& text) {
    text = FormatChannels(phone24Channels);
    CHANNEL_WARN("%s Phone support 2.4G Channels list:%s\n", CK_FUNCTION, text.c_str());
}

std::vector<int> ChannelSelect::GetPcPhone24GIntersection() {
    std::vector<int> pc24;
    std::vector<int> pc5;
    unsigned short areaCode = 0;
    GetPCSupportChannelList(pc24, pc5, areaCode);
    CHANNEL_WARN("%s phoneSupport24GList size:%d\n", CK_FUNCTION,
                 static_cast<int>(phone24Channels.size()));
    CHANNEL_WARN("%s pcSupport24GList size:%d\n", CK_FUNCTION, static_cast<int>(pc24.size()));
    std::vector<int> both;
    for (int channel : phone24Channels) {
        if (std::find(pc24.begin(), pc24.end(), channel) != pc24.end()) {
            both.push_back(channel);
        }
    }
    CHANNEL_WARN("listAllSupport24GChannel size:%d", static_cast<int>(both.size()));
    return both;
}

bool ChannelSelect::IsEuropeanCountries() {
    return IsEuropeanCountries(QuerySupportedChannels());
}

bool ChannelSelect::IsEuropeanCountries(const Answer& answer) {
    CHANNEL_WARN("%s GetSupportedChannels result:%d mcc = %d", CK_FUNCTION, answer.result,
                 answer.channels.areaCode);
    return answer.result == 0 && europeanAreaCodes.count(answer.channels.areaCode) > 0;
}

int ChannelSelect::GetRecordPhoneChannel() {
    return recordPhoneChannel;
}

void ChannelSelect::CacheCardMaker(WifiCardManuType maker) {
    cardMaker = maker;
}

void ChannelSelect::SetEuropeanAreaCodes(std::set<uint16_t> codes) {
    europeanAreaCodes = std::move(codes);
}

void AddPhoneSupportChannel(int channel) {
    ChannelSelect::phoneChannels.push_back(channel);
}

void AddPhoneSupport24Channel(int channel) {
    ChannelSelect::phone24Channels.push_back(channel);
}

void SetPhoneCurrentChannel(int channel) {
    ChannelSelect::phoneCurrentChannel = channel;
}

void RemovePhoneSupportChannels() {
    ChannelSelect::phoneChannels.clear();
}

Nearby::WifiFrequenceType GetFrequenceType(int channel) {
    if (channel >= 1 && channel <= 13) {
        return Nearby::FREQUENCE_24G;
    }
    if (channel >= 36 && channel <= 165) {
        return Nearby::FREQUENCE_5G;
    }
    return Nearby::FREQUENCE_UNKNOWN;
}

void GetPCChannelList(std::string& list24, std::string& list5, int& countryCode) {
    std::vector<int> channels24;
    std::vector<int> channels5;
    unsigned short areaCode = 0;
    ChannelSelect::GetPCSupportChannelList(channels24, channels5, areaCode);
    countryCode = areaCode;
    const char* self = "GetPCChannelList";
    CHANNEL_WARN("%s PC countryCode:%d\n", self, countryCode);
    list24 = ChannelSelect::FormatChannels(channels24);
    list5 = ChannelSelect::FormatChannels(channels5);
    CHANNEL_WARN("%s PC Support Channels list24G:%s\n", self, list24.c_str());
    CHANNEL_WARN("%s PC Support Channels list5G:%s\n", self, list5.c_str());
}

bool GetListProductType(std::list<std::string>& types) {
    CHANNEL_WARN("GetListProductType begin.");
    if (ChannelSelect::productTypes.empty()) {
        return false;
    }
    types = ChannelSelect::productTypes;
    return true;
}

bool SetListProductType(std::list<std::string> types) {
    if (types.empty()) {
        return false;
    }
    ChannelSelect::productTypes = std::move(types);
    return true;
}

bool GetPairDeviceModelName(std::string& name) {
    if (ChannelSelect::pairDeviceModelName.empty()) {
        return false;
    }
    name = ChannelSelect::pairDeviceModelName;
    return true;
}

bool SetPairDeviceModelName(std::string name) {
    if (name.empty()) {
        return false;
    }
    for (auto& c : name) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    ChannelSelect::pairDeviceModelName = std::move(name);
    return true;
}

// The hotspot's band and channel: gathering what the decision needs from the
// driver and the phone's lists, pinning the card to the decision, and reading
// back the channel in use. The decision itself is PlanChannel (ChannelPlan.h).
// These lines live here so that the planner's log lines, like the lists',
// carry "ChannelSelect.cpp", the name field engineers filter on.

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
}  // namespace ConnectKit

using ConnectKit::LogPlan;
using ConnectKit::PinChannel;
using ConnectKit::UpperCase;

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
    Answer answer = QuerySupportedChannels();
    GetPCSupportChannelList(answer, inputs.pc24, inputs.pc5, inputs.areaCode);
    size_t before = inputs.pc5.size();
    RemoveIntelChinaIndoorChannel(answer, inputs.pc5);
    inputs.chinaIndoorRemoved = inputs.pc5.size() != before;
    unsigned short areaCode = 0;
    inputs.areaSupports5G = GetAreaIsSupport5GChannel(answer, areaCode);
    inputs.european = IsEuropeanCountries(answer);
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
