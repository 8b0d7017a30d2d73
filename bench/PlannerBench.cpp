// planner_driver_queries: how many times one channel decision
// (ChannelSelect::SetAPFrequence) asks the card's driver for its supported
// channels, the larger count of the simulated Intel and Realtek cards. Each
// question costs a Realtek card that answers empty a re-initialisation and
// 200 ms, and two questions may get two different answers.

#include <algorithm>
#include <string>

#include "Ratios.h"
#include "SimFigures.h"
#include "channel/ChannelSelect.h"
#include "channel/wifi_intel.h"
#include "channel/wifi_realtek.h"
#include "connectkit/WifiAPI.h"
#include "platform/sim/wificard/SimWifiDriver.h"

namespace connectkit::bench {
namespace {

using Maker = sim::SimWifiCardConfig::Maker;

size_t SupportedChannelQueries() {
    auto calls = sim::DriverLog().calls;
    return static_cast<size_t>(std::count_if(calls.begin(), calls.end(), [](const auto& call) {
        return call.entry == "WifiPanQuerySupportedChannels" || call.entry == "#68";
    }));
}

// The facade decided on its card once; each measure puts a card of its own
// behind it, made after the world was applied, so that the driver starts
// ready. Never deleted: the facade keeps pointing at the last one.
ConnectKit::IWifiInterface* NewCard(Maker maker) {
    if (maker == Maker::Intel) {
        return new ConnectKit::WifiIntelAPI();
    }
    return new ConnectKit::WifiRealtekAPI();
}

double QueriesPerDecision(Maker maker) {
    sim::Scenario scenario;
    scenario.wifiCard.maker = maker;
    Pc().Apply(scenario);
    ConnectKit::WifiAPI::GetInstance()->setWifiInterface(NewCard(maker));
    ChannelSelect::CacheCardMaker(maker == Maker::Intel ? WIFI_CARD_INTEL : WIFI_CARD_REALTEK);
    size_t before = SupportedChannelQueries();
    ChannelSelect::SetAPFrequence(false, true);
    return static_cast<double>(SupportedChannelQueries() - before);
}

// Intel last: the hotspot figures run on an Intel card.
double WorstQueriesPerDecision() {
    double realtek = QueriesPerDecision(Maker::Realtek);
    return std::max(realtek, QueriesPerDecision(Maker::Intel));
}

[[maybe_unused]] const bool registered = [] {
    AddMeasured("planner_driver_queries", WorstQueriesPerDecision, "=", 1);
    return true;
}();

}  // namespace
}  // namespace connectkit::bench
