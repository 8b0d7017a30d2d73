#pragma once
// The channel planner's process-wide lists (see connectkit/ChannelList.h).
// They are plain containers: the suite fills them and the planner reads them
// from one connection thread, one call at a time.
//
// Area codes are two ASCII letters, the first in the high byte ("CN" is
// 0x434E). The European area set is a table callers may replace.

#include <cstdint>
#include <list>
#include <set>
#include <string>
#include <vector>

#include "platform/suite/NetworkAdapter.h"

namespace ConnectKit {

inline constexpr uint16_t AreaCode(char first, char second) {
    return static_cast<uint16_t>((static_cast<uint8_t>(first) << 8) | static_cast<uint8_t>(second));
}
inline constexpr uint16_t kAreaChina = AreaCode('C', 'N');
inline constexpr uint16_t kAreaUnitedStates = AreaCode('U', 'S');

class ChannelSelect {
public:
    static void GetPCSupportChannelList(std::vector<int>& list24, std::vector<int>& list5,
                                        unsigned short& areaCode);
    static bool GetAreaIsSupport5GChannel(unsigned short& areaCode);
    static void RemoveIntelChinaIndoorChannel(std::vector<int>& list);
    static void Remove20MBandWidthChannel(std::vector<int>& list);
    static void GetPhoneChannelList(std::string& text);
    static void GetPhone24GChannelList(std::string& text);
    static std::vector<int> GetPcPhone24GIntersection();
    static bool IsEuropeanCountries();
    static int GetRecordPhoneChannel();

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
};

}  // namespace ConnectKit
