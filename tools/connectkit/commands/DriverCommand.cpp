// `driver` probes the Wi-Fi card's driver library the way the driver facade
// does and reports what a field engineer needs: the card's maker, how the
// library was found, its status code and the channels it supports.

#include <sstream>

#include "Context.h"
#include "channel/wifi_intel.h"
#include "channel/wifi_realtek.h"
#include "commands/Commands.h"
#include "platform/suite/NetworkAdapter.h"

namespace connectkit::tool {
namespace {

const char* MakerName(WifiCardManuType maker) {
    switch (maker) {
        case WIFI_CARD_INTEL:
            return "intel";
        case WIFI_CARD_REALTEK:
            return "realtek";
        default:
            return "other";
    }
}

const char* DiscoveryName(ConnectKit::WifiIntelAPI::DiscoveryMode mode) {
    switch (mode) {
        case ConnectKit::WifiIntelAPI::kProSet:
            return "PROSet registry value";
        case ConnectKit::WifiIntelAPI::kPlatformIntegration:
            return "platform-integration device (PiePathHint)";
        default:
            return "not found";
    }
}

void Probe(Context& context) {
    WifiCardManuType maker = NetworkAdapter::GetWifiManuType();
    nlohmann::json result = {{"maker", MakerName(maker)}};
    std::ostringstream text;
    text << "card maker      " << MakerName(maker) << '\n';
    _GO_SUPPORTTED_CHANNELS channels{};
    int query = -1;
    if (maker == WIFI_CARD_INTEL) {
        ConnectKit::WifiIntelAPI intel;
        query = intel.GetSupportedChannels(&channels);
        auto found = DiscoveryName(ConnectKit::WifiIntelAPI::Discovery());
        text << "found through   " << found << "\nstatus          " << intel.Status()
             << "\nadapter handle  " << intel.AdapterHandle() << '\n';
        result["foundThrough"] = found;
        result["status"] = intel.Status();
        result["adapterHandle"] = intel.AdapterHandle();
    } else if (maker == WIFI_CARD_REALTEK) {
        ConnectKit::WifiRealtekAPI realtek;
        query = realtek.GetSupportedChannels(&channels);
        text << "found through   RealtekWiFi.dll by ordinal\nstatus          " << query
             << "\nre-initialised  " << realtek.ReinitialisationCount() << " time(s)\n";
        result["foundThrough"] = "RealtekWiFi.dll";
        result["status"] = query;
        result["reinitialisations"] = realtek.ReinitialisationCount();
    } else {
        text << "no driver library is used for this card\n";
        context.exitCode = kExitFailed;
    }
    std::vector<int> list(channels.channels, channels.channels + channels.channelCount);
    if (query == 0) {
        text << "area code       " << channels.areaCode << "\nchannels       ";
        for (int channel : list) {
            text << ' ' << channel;
        }
        text << '\n';
        result["areaCode"] = channels.areaCode;
        result["channels"] = list;
    } else if (maker != WIFI_CARD_OTHER) {
        text << "channels        the driver did not answer (" << query << ")\n";
        context.exitCode = kExitFailed;
    }
    result["channelQuery"] = query;
    context.Print(text.str(), result);
}

}  // namespace

void AddDriverCommand(CLI::App& app, Context& context) {
    auto* driver = app.add_subcommand(
        "driver", "Probe the Wi-Fi card's driver library: maker, discovery, status, channels");
    driver->callback([&context] { Probe(context); });
}

}  // namespace connectkit::tool
