// The channel structures a card's driver fills are the driver's word: any
// area code and channel bytes, answered through either maker's library, must
// give channel lists and a plan made of channels the card listed, and no
// read outside the structures.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "FuzzPc.h"
#include "channel/ChannelSelect.h"
#include "channel/wifi_intel.h"
#include "channel/wifi_realtek.h"
#include "connectkit/ChannelList.h"
#include "connectkit/WifiAPI.h"

namespace {

using Card = connectkit::sim::SimWifiCardConfig;

std::vector<int> Channels(FuzzedDataProvider& input) {
    std::vector<int> channels(input.ConsumeIntegralInRange<size_t>(0, 8));
    for (int& channel : channels) {
        channel = input.ConsumeIntegralInRange<int>(-1, 200);
    }
    return channels;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    connectkit::sim::Scenario scenario;
    Card& card = scenario.wifiCard;
    bool intel = input.ConsumeBool();
    card.maker = intel ? Card::Maker::Intel : Card::Maker::Realtek;
    card.realtek.initialisationsBeforeReady = input.ConsumeIntegralInRange<uint32_t>(0, 2);
    card.areaCode = input.ConsumeIntegral<uint16_t>();
    bool apFlag = input.ConsumeBool();
    bool setChannel = input.ConsumeBool();
    ChannelSelect::phoneChannels = Channels(input);
    ChannelSelect::phone24Channels = Channels(input);
    SetPhoneCurrentChannel(input.ConsumeIntegralInRange<int>(-1, 200));
    card.channels = input.ConsumeRemainingBytes<uint8_t>();
    connectkit::fuzz::Pc().Apply(scenario);

    std::optional<ConnectKit::WifiIntelAPI> intelDriver;
    std::optional<ConnectKit::WifiRealtekAPI> realtekDriver;
    ConnectKit::IWifiInterface* driver =
        intel ? static_cast<ConnectKit::IWifiInterface*>(&intelDriver.emplace())
              : &realtekDriver.emplace();
    ConnectKit::WifiAPI::GetInstance()->setWifiInterface(driver);
    ChannelSelect::CacheCardMaker(intel ? WIFI_CARD_INTEL : WIFI_CARD_REALTEK);

    std::string list24;
    std::string list5;
    int areaCode = 0;
    GetPCChannelList(list24, list5, areaCode);
    ChannelSelect::SetAPFrequence(apFlag, setChannel);
    int chosen = ChannelSelect::LastPlan().channel;
    if (chosen != 0 &&
        std::find(card.channels.begin(), card.channels.end(), chosen) == card.channels.end()) {
        __builtin_trap();
    }
    unsigned char operating = 0;
    ChannelSelect::RefreshAPFrequence(operating);
    ConnectKit::WifiAPI::GetInstance()->setWifiInterface(nullptr);
    return 0;
}
