#include "channel/ChannelPlan.h"

#include <algorithm>
#include <array>

#include "channel/ChannelSelect.h"

namespace ConnectKit {
namespace {

bool Contains(const std::vector<int>& list, int channel) {
    return std::find(list.begin(), list.end(), channel) != list.end();
}

bool IndoorOnlyInEurope(int channel) {
    return channel >= 36 && channel <= 48;
}

// Channels of `first` that `second` lists too, in the order of `first`.
std::vector<int> Shared(const std::vector<int>& first, const std::vector<int>& second) {
    std::vector<int> both;
    for (int channel : first) {
        if (Contains(second, channel) && !Contains(both, channel)) {
            both.push_back(channel);
        }
    }
    return both;
}

// 1, 6 or 11 when the list has one of them (the first in the list's order),
// else the list's first channel; 0 for an empty list.
int PreferNonOverlapping(const std::vector<int>& list24) {
    constexpr std::array<int, 3> kNonOverlapping = {1, 6, 11};
    for (int channel : list24) {
        if (std::find(kNonOverlapping.begin(), kNonOverlapping.end(), channel) !=
            kNonOverlapping.end()) {
            return channel;
        }
    }
    return list24.empty() ? 0 : list24.front();
}

std::vector<int> FiveGhzCandidates(const ChannelPlanInputs& inputs,
                                   std::vector<std::string>& notes) {
    if (inputs.chinaIndoorRemoved) {
        notes.push_back("Intel card in CN: indoor channels 36-48 left out");
    }
    if (!inputs.areaSupports5G) {
        notes.push_back("area has no 5 GHz");
        return {};
    }
    if (inputs.modelOn5GBlackList) {
        notes.push_back("phone model on the 5 GHz black list");
        return {};
    }
    if (inputs.fiveGhzSetFailed) {
        notes.push_back("setting a 5 GHz channel failed");
        return {};
    }
    std::vector<int> candidates = inputs.pc5;
    if (inputs.european && std::erase_if(candidates, IndoorOnlyInEurope) > 0) {
        notes.push_back("European area: indoor channels 36-48 left out");
    }
    return candidates;
}

std::vector<int> Phone24(const ChannelPlanInputs& inputs) {
    std::vector<int> channels = inputs.phone24;
    for (int channel : inputs.phone) {
        if (GetFrequenceType(channel) == Nearby::FREQUENCE_24G) {
            channels.push_back(channel);
        }
    }
    return channels;
}

ChannelPlan Chosen(int channel, const char* step, const std::vector<std::string>& notes) {
    ChannelPlan plan;
    plan.channel = channel;
    plan.band = channel == 0 ? Nearby::FREQUENCE_UNKNOWN : GetFrequenceType(channel);
    for (const auto& note : notes) {
        plan.reason += note + "; ";
    }
    plan.reason += step;
    return plan;
}

}  // namespace

ChannelPlan PlanChannel(const ChannelPlanInputs& inputs) {
    std::vector<std::string> notes;
    std::vector<int> candidates5 = FiveGhzCandidates(inputs, notes);

    if (inputs.apFlag) {
        int current = inputs.phoneCurrent;
        if (Contains(candidates5, current) || Contains(inputs.pc24, current)) {
            return Chosen(current, "following the phone's current channel", notes);
        }
        notes.push_back(current == 0 ? std::string("phone's current channel unknown")
                                     : "phone's current channel " + std::to_string(current) +
                                           " not usable here");
    }

    std::vector<int> shared5 = Shared(candidates5, inputs.phone);
    if (Contains(shared5, 165) && shared5.size() > 1) {
        notes.push_back("165 left out (20 MHz only)");
    }
    ChannelSelect::Remove20MBandWidthChannel(shared5);
    if (!shared5.empty()) {
        return Chosen(shared5.front(), "first 5 GHz channel both sides support", notes);
    }

    if (int channel = PreferNonOverlapping(Shared(Phone24(inputs), inputs.pc24))) {
        return Chosen(channel, "2.4 GHz channel both sides support", notes);
    }

    if (int channel = PreferNonOverlapping(inputs.pc24)) {
        return Chosen(channel, "nothing shared with the phone: a PC 2.4 GHz channel", notes);
    }
    if (!candidates5.empty()) {
        return Chosen(candidates5.front(), "nothing shared with the phone: a PC 5 GHz channel",
                      notes);
    }
    return Chosen(0, "the PC offers no channel: left to the driver", notes);
}

const char* BandName(Nearby::WifiFrequenceType band) {
    switch (band) {
        case Nearby::FREQUENCE_24G:
            return "2.4GHz";
        case Nearby::FREQUENCE_5G:
            return "5GHz";
        default:
            return "none";
    }
}

}  // namespace ConnectKit
