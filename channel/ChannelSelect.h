#pragma once
// The channel planner's process-wide lists (see connectkit/ChannelList.h).
// They are plain containers: the suite fills them and the planner reads them
// from one connection thread, one call at a time.
//
// Area codes are two ASCII letters, the first in the high byte ("CN" is
// 0x434E). The European area set and the 5 GHz black list of phone models
// are tables callers may replace.
//
// The hotspot's band and channel (SetAPFrequence, RefreshAPFrequence) are
// decided in ChannelSelect.cpp by the rules that ChannelPlan.h describes.

#include <cstdint>
#include <list>
#include <set>
#include <string>
#include <vector>

#include "channel/ChannelPlan.h"
#include "connectkit/WifiDriverTypes.h"
#include "platform/suite/NetworkAdapter.h"

namespace ConnectKit {

inline constexpr uint16_t AreaCode(char first, char second) {
    return static_cast<uint16_t>((static_cast<uint8_t>(first) << 8) | static_cast<uint8_t>(second));
}
inline constexpr uint16_t kAreaChina = AreaCode('C', 'N');
inline constexpr uint16_t kAreaUnitedStates = AreaCode('U', 'S');

// One answer of the driver to GetSupportedChannels.
struct SupportedChannelsAnswer {
    int result = -1;
    _GO_SUPPORTTED_CHANNELS channels{};
};

}  // namespace ConnectKit

// The planner is named without the ConnectKit namespace, as its log lines
// ("ChannelSelect::GetPCSupportChannelList ...") have always read.
class ChannelSelect {
public:
    using Answer = ConnectKit::SupportedChannelsAnswer;

    // Asks the driver once. A decision derives everything from one answer:
    // every question costs a Realtek card with an empty answer a
    // re-initialisation and 200 ms, and may get a different answer.
    static Answer QuerySupportedChannels();
    // Each of the next four without an answer asks the driver itself.
    static void GetPCSupportChannelList(std::vector<int>& list24, std::vector<int>& list5,
                                        unsigned short& areaCode);
    static void GetPCSupportChannelList(const Answer& answer, std::vector<int>& list24,
                                        std::vector<int>& list5, unsigned short& areaCode);
    static bool GetAreaIsSupport5GChannel(unsigned short& areaCode);
    static bool GetAreaIsSupport5GChannel(const Answer& answer, unsigned short& areaCode);
    static void RemoveIntelChinaIndoorChannel(std::vector<int>& list);
    static void RemoveIntelChinaIndoorChannel(const Answer& answer, std::vector<int>& list);
    static bool IsEuropeanCountries();
    static bool IsEuropeanCountries(const Answer& answer);
    static void Remove20MBandWidthChannel(std::vector<int>& list);
    static void GetPhoneChannelList(std::string& text);
    static void GetPhone24GChannelList(std::string& text);
    static std::vector<int> GetPcPhone24GIntersection();
    static int GetRecordPhoneChannel();

    // Results of SetAPFrequence.
    static constexpr int kPlanSet = 0;
    // The PC offers no channel; nothing was set and the driver chooses.
    static constexpr int kPlanNoChannel = -1;
    // The driver refused the channel (and, after a 5 GHz refusal, the
    // 2.4 GHz one too).
    static constexpr int kPlanSetFailed = -2;
    static constexpr int kPlanInternalError = -3;
    // RefreshAPFrequence's own code; otherwise it passes on the driver's
    // GetPreferredChannelSetting result (-1 no driver, -73 and -74 as the
    // driver facade documents them).
    static constexpr int kRefreshNoChannel = -80;

    // Chooses the hotspot's band and channel (see ChannelPlan.h) and, with
    // setChannel, pins the card to it. When the card refuses a 5 GHz channel,
    // 0x10000002 is posted to the error status and the choice is made again
    // without 5 GHz, which every phone can follow; success of that second
    // choice gives kPlanSet. Records the phone's current channel as the
    // recorded phone channel.
    static int SetAPFrequence(bool apFlag, bool setChannel);
    // The channel the card's group owner is on, as the driver reads it back;
    // when the driver cannot say (non-zero result), the last decision. The
    // channel is recorded for GetRecordedAPChannel either way.
    static int RefreshAPFrequence(unsigned char& channel);
    static unsigned char GetRecordedAPChannel();
    // What SetAPFrequence decides from: the driver's lists with the area
    // rules applied, and the phone's lists. Reads the driver, sets nothing.
    static ConnectKit::ChannelPlanInputs GatherPlanInputs(bool apFlag);
    static const ConnectKit::ChannelPlan& LastPlan();

    // Whether the pair device model name is on the 5 GHz black list.
    static bool IsIn5GBlackList();
    // Model names are matched upper-case, as the pair device model name is
    // stored.
    static void Set5GBlackList(const std::set<std::string>& models);

    // "1,6,11," (every channel followed by a comma); empty for no channels.
    static std::string FormatChannels(const std::vector<int>& channels);

    // The card maker as the soft-AP manager read it at its construction.
    static void CacheCardMaker(WifiCardManuType maker);
    static void SetEuropeanAreaCodes(std::set<uint16_t> codes);

    // The process-wide lists.
    static std::vector<int> phoneChannels;
    static std::vector<int> phone24Channels;
    static int phoneCurrentChannel;
    static int recordPhoneChannel;
    static std::list<std::string> productTypes;
    static std::string pairDeviceModelName;
    static WifiCardManuType cardMaker;
    static std::set<uint16_t> europeanAreaCodes;
    static std::set<std::string> fiveGBlackList;
    static ConnectKit::ChannelPlan lastPlan;
    static unsigned char recordedAPChannel;
};
