#pragma once
// The channel lists that feed the hotspot's channel choice: the phone's
// channels (handed over by the suite's pairing modules), and the PC card's
// group-owner channels in its regulatory area, read from the driver.

#include <list>
#include <string>

#include "connectkit/Export.h"

namespace Nearby {
enum WifiFrequenceType { FREQUENCE_5G = 0, FREQUENCE_24G = 1, FREQUENCE_UNKNOWN = -1 };
}

CONNECTKIT_API void AddPhoneSupportChannel(int channel);
CONNECTKIT_API void AddPhoneSupport24Channel(int channel);
CONNECTKIT_API void SetPhoneCurrentChannel(int channel);
// Clears the phone's all-band list; its 2.4 GHz list is kept.
CONNECTKIT_API void RemovePhoneSupportChannels();
// 1 for channels 1-13, 0 for 36-165, -1 otherwise (14 included).
CONNECTKIT_API Nearby::WifiFrequenceType GetFrequenceType(int channel);
// The PC's lists as "1,6,11," texts, and the driver's area code.
CONNECTKIT_API void GetPCChannelList(std::string& list24, std::string& list5, int& countryCode);
CONNECTKIT_API bool GetListProductType(std::list<std::string>& types);
CONNECTKIT_API bool SetListProductType(std::list<std::string> types);
CONNECTKIT_API bool GetPairDeviceModelName(std::string& name);
CONNECTKIT_API bool SetPairDeviceModelName(std::string name);
