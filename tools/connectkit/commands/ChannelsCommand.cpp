// `channels` shows the lists the hotspot's channel choice starts from: the
// PC card's 2.4 and 5 GHz group-owner channels in its area, the phone's lists
// as given on the command line, and the 2.4 GHz channels both share; then
// the band and channel the planner would choose from them. Nothing is set on
// the card.

#include <sstream>

#include "Context.h"
#include "channel/ChannelSelect.h"
#include "commands/Commands.h"
#include "connectkit/ChannelList.h"

namespace connectkit::tool {
namespace {

struct ChannelOptions {
    std::vector<int> phone;
    std::vector<int> phone24;
    int phoneCurrent = 0;
    bool apFlag = false;
};

std::string AreaLetters(int code) {
    char first = static_cast<char>((code >> 8) & 0xFF);
    char second = static_cast<char>(code & 0xFF);
    bool letters = std::isupper(static_cast<unsigned char>(first)) &&
                   std::isupper(static_cast<unsigned char>(second));
    return letters ? std::string{first, second} : "??";
}

void Show(Context& context, const ChannelOptions& options) {
    ChannelSelect::CacheCardMaker(NetworkAdapter::GetWifiManuType());
    RemovePhoneSupportChannels();
    for (int channel : options.phone) {
        AddPhoneSupportChannel(channel);
    }
    ChannelSelect::phone24Channels.clear();
    for (int channel : options.phone24) {
        AddPhoneSupport24Channel(channel);
    }
    SetPhoneCurrentChannel(options.phoneCurrent);

    std::string pc24, pc5, phone, phone24;
    int area = 0;
    GetPCChannelList(pc24, pc5, area);
    ChannelSelect::GetPhoneChannelList(phone);
    ChannelSelect::GetPhone24GChannelList(phone24);
    std::vector<int> both = ChannelSelect::GetPcPhone24GIntersection();
    std::string shared = ChannelSelect::FormatChannels(both);
    ConnectKit::ChannelPlan plan =
        ConnectKit::PlanChannel(ChannelSelect::GatherPlanInputs(options.apFlag));
    const char* band = ConnectKit::BandName(plan.band);

    std::ostringstream text;
    text << "area code         " << area << " (" << AreaLetters(area) << ")\n"
         << "PC 2.4 GHz        " << pc24 << "\nPC 5 GHz          " << pc5 << "\nphone             "
         << phone << "\nphone 2.4 GHz     " << phone24 << "\nphone current     "
         << options.phoneCurrent << "\nshared 2.4 GHz    " << shared << "\nplan              "
         << band << " channel " << plan.channel << "\nreason            " << plan.reason << '\n';
    context.Print(text.str(), {{"areaCode", area},
                               {"area", AreaLetters(area)},
                               {"pc24", pc24},
                               {"pc5", pc5},
                               {"phone", phone},
                               {"phone24", phone24},
                               {"phoneCurrent", options.phoneCurrent},
                               {"shared24", both},
                               {"plan",
                                {{"band", band},
                                 {"channel", plan.channel},
                                 {"reason", plan.reason},
                                 {"apFlag", options.apFlag}}}});
    if (pc24.empty() && pc5.empty()) {
        context.exitCode = kExitFailed;
    }
}

}  // namespace

void AddChannelsCommand(CLI::App& app, Context& context) {
    static ChannelOptions options;
    auto* channels = app.add_subcommand(
        "channels", "Show the PC's and the phone's channel lists and what they share");
    channels->add_option("--phone", options.phone, "The phone's channels, all bands")
        ->delimiter(',');
    channels->add_option("--phone24", options.phone24, "The phone's 2.4 GHz channels")
        ->delimiter(',');
    channels->add_option("--phone-current", options.phoneCurrent, "The phone's current channel");
    channels->add_flag("--ap-flag", options.apFlag,
                       "The phone stays on its current network: follow its channel");
    channels->callback([&context] { Show(context, options); });
}

}  // namespace connectkit::tool
