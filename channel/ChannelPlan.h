#pragma once
// The hotspot's band and channel decision, kept free of the driver so that
// the `channels` command and the tests can show and check a choice without
// setting anything. ChannelSelect::SetAPFrequence gathers the inputs from the
// driver and the phone's lists, asks PlanChannel, and pins the card to the
// answer.
//
// How a channel is chosen, first match wins:
//
// 0. The 5 GHz candidates are the PC's 5 GHz channels (Intel cards outside
//    CN and US already lack 36-48; an Intel card in CN lost its indoor
//    channels 36-48 while the inputs were gathered), less 36-48 in a
//    European area whatever the card's maker, since those are indoor-only
//    there and a laptop's hotspot is taken outdoors too. There are none when
//    the area has no 5 GHz, when the paired phone's model is on the 5 GHz
//    black list (models known to fail to join a 5 GHz hotspot), or when
//    setting a 5 GHz channel has just failed.
// 1. apFlag set means the phone stays on its current network while it joins
//    the hotspot. A phone with one radio then serves both links by switching
//    channels, which costs throughput and drops frames; on the same channel
//    it does not switch at all. So the hotspot follows the phone's current
//    channel when the PC can use it (a 5 GHz candidate or a PC 2.4 GHz
//    channel). 165 is kept here: the phone already runs it at 20 MHz.
// 2. Otherwise 5 GHz, for its throughput and its quieter air: the first
//    candidate, in the PC's order, that the phone lists among all its bands.
//    165 only allows 20 MHz, so it is taken only when no other channel is
//    shared (Remove20MBandWidthChannel).
// 3. Otherwise 2.4 GHz: a channel both sides list (the phone's 2.4 GHz list
//    together with the 2.4 GHz entries of its all-band list), one of the
//    non-overlapping 1, 6 and 11 first, in the phone's order.
// 4. Nothing shared with the phone (its lists may simply not have arrived):
//    a PC 2.4 GHz channel, 1, 6 or 11 first, since every phone can join
//    2.4 GHz; failing that the first 5 GHz candidate.
// 5. The PC offers nothing (the driver could not say): no channel, and the
//    driver is left to its own choice.

#include <cstdint>
#include <string>
#include <vector>

#include "connectkit/ChannelList.h"

namespace ConnectKit {

struct ChannelPlanInputs {
    // The PC card's group-owner channels in its area, as the list code gives
    // them, after the Intel China indoor removal.
    std::vector<int> pc24;
    std::vector<int> pc5;
    // The phone's channels: all bands, and 2.4 GHz as handed over separately.
    std::vector<int> phone;
    std::vector<int> phone24;
    // 0 when unknown.
    int phoneCurrent = 0;
    bool apFlag = false;
    uint16_t areaCode = 0;
    bool areaSupports5G = false;
    bool european = false;
    // Only explains the choice: the gathering step already removed them.
    bool chinaIndoorRemoved = false;
    bool modelOn5GBlackList = false;
    bool fiveGhzSetFailed = false;
};

struct ChannelPlan {
    Nearby::WifiFrequenceType band = Nearby::FREQUENCE_UNKNOWN;
    // 0 when there is no channel to choose from.
    int channel = 0;
    // Why, for people: the rules that narrowed the lists and the step that
    // chose.
    std::string reason;
};

ChannelPlan PlanChannel(const ChannelPlanInputs& inputs);

// "2.4GHz", "5GHz" or "none".
const char* BandName(Nearby::WifiFrequenceType band);

}  // namespace ConnectKit
