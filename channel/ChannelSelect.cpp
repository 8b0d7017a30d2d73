#include "channel/ChannelSelect.h"

#include <algorithm>
#include <cctype>

#include "channel/ChannelLog.h"
#include "connectkit/ChannelList.h"
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

std::vector<int> ChannelSelect::phoneChannels;
std::vector<int> ChannelSelect::phone24Channels;
int ChannelSelect::phoneCurrentChannel = 0;
int ChannelSelect::recordPhoneChannel = 0;
std::list<std::string> ChannelSelect::productTypes;
std::string ChannelSelect::pairDeviceModelName;
WifiCardManuType ChannelSelect::cardMaker = WIFI_CARD_INTEL;
std::set<uint16_t> ChannelSelect::europeanAreaCodes = DefaultEuropeanAreaCodes();

std::string ChannelSelect::FormatChannels(const std::vector<int>& channels) {
    std::string text;
    for (int channel : channels) {
        text += std::to_string(channel) + ",";
    }
    return text;
}

void ChannelSelect::GetPCSupportChannelList(std::vector<int>& list24, std::vector<int>& list5,
                                            unsigned short& areaCode) {
    list24.clear();
    list5.clear();
    _GO_SUPPORTTED_CHANNELS supported{};
    int result = WifiAPI::GetInstance()->GetSupportedChannels(&supported);
    if (result == 0 && supported.channelCount > 0) {
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
    _GO_SUPPORTTED_CHANNELS supported{};
    int result = WifiAPI::GetInstance()->GetSupportedChannels(&supported);
    if (result != 0) {
        CHANNEL_WARN("WifiAPI GetSupportedChannels Failed, ret: %d", result);
        return false;
    }
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
    std::vector<int> list24;
    std::vector<int> list5;
    unsigned short areaCode = 0;
    GetPCSupportChannelList(list24, list5, areaCode);
    if (areaCode != kAreaChina) {
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
    _GO_SUPPORTTED_CHANNELS supported{};
    int result = WifiAPI::GetInstance()->GetSupportedChannels(&supported);
    CHANNEL_WARN("%s GetSupportedChannels result:%d mcc = %d", CK_FUNCTION, result,
                 supported.areaCode);
    return result == 0 && europeanAreaCodes.count(supported.areaCode) > 0;
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

}  // namespace ConnectKit

using ConnectKit::ChannelSelect;

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
