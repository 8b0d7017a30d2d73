#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "channel/ChannelPlan.h"
#include "channel/ChannelSelect.h"
#include "channel/wifi_intel.h"
#include "channel/wifi_realtek.h"
#include "connectkit/ChannelList.h"
#include "connectkit/ErrorStatus.h"
#include "connectkit/WifiAPI.h"
#include "platform/Platform.h"
#include "platform/sim/wificard/SimWifiCard.h"
#include "support/ErrorRecorder.h"
#include "support/LogCapture.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

using ConnectKit::ChannelPlan;
using ConnectKit::ChannelPlanInputs;
using ConnectKit::PlanChannel;
using Config = sim::SimWifiCardConfig;

const std::vector<uint8_t> kAllChannels = {1,  2,  3,  4,  5,  6,  7,   8,   9,   10,  11,
                                           12, 13, 36, 40, 44, 48, 149, 153, 157, 161, 165};

// What the US and CN rules leave an Intel card that lists every channel;
// each case changes what its choice turns on.
ChannelPlanInputs UsInputs() {
    ChannelPlanInputs inputs;
    inputs.pc24 = {1, 6, 11};
    inputs.pc5 = {36, 149, 165};
    inputs.phone = {6, 36, 149, 165};
    inputs.areaSupports5G = true;
    return inputs;
}

template <typename... Channels>
void Set(std::vector<int>& list, Channels... channels) {
    list = {channels...};
}

struct PlanCase {
    const char* name;
    std::function<void(ChannelPlanInputs&)> change;
    int channel;
    const char* reason = "";
};

TEST(PlanChannel, ChoosesByTheRulesInTheirOrder) {
    const PlanCase cases[] = {
        {"phone's channel without the AP flag", [](auto& in) { in.phoneCurrent = 149; }, 36},
        {"follows the phone", [](auto& in) { in.apFlag = true, in.phoneCurrent = 149; }, 149,
         "following the phone"},
        {"follows the phone onto 165", [](auto& in) { in.apFlag = true, in.phoneCurrent = 165; },
         165},
        {"follows the phone onto 2.4 GHz", [](auto& in) { in.apFlag = true, in.phoneCurrent = 6; },
         6},
        {"the PC cannot use the phone's channel",
         [](auto& in) { in.apFlag = true, in.phoneCurrent = 52; }, 36, "52 not usable"},
        {"a black-listed model stays off 5 GHz",
         [](auto& in) { in.apFlag = true, in.phoneCurrent = 149, in.modelOn5GBlackList = true; },
         6},
        {"165 only when nothing else is shared",
         [](auto& in) { Set(in.pc5, 165, 149), Set(in.phone, 165, 149); }, 149, "165 left out"},
        {"165 alone", [](auto& in) { Set(in.pc5, 165, 149), Set(in.phone, 165, 6); }, 165},
        {"European areas leave the indoor channels out",
         [](auto& in) { Set(in.pc5, 36, 40, 149), Set(in.phone, 36, 149), in.european = true; },
         149},
        {"European area with only an indoor channel shared",
         [](auto& in) { Set(in.pc5, 36, 40, 149), Set(in.phone, 40, 11), in.european = true; }, 11,
         "European area"},
        {"2.4 GHz joins both phone lists and prefers 1, 6, 11",
         [](auto& in) {
             Set(in.pc24, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11), Set(in.pc5), Set(in.phone24, 3, 6),
                 Set(in.phone, 11, 36);
         },
         6},
        {"an overlapping 2.4 GHz channel when nothing else is shared",
         [](auto& in) {
             Set(in.pc24, 1, 2, 3, 4), Set(in.pc5), Set(in.phone24, 3), Set(in.phone, 4);
         },
         3},
        {"nothing shared: the PC's best 2.4 GHz channel",
         [](auto& in) { Set(in.pc24, 3, 11, 1), Set(in.pc5, 149), Set(in.phone, 40); }, 11,
         "nothing shared"},
        {"nothing shared, no 2.4 GHz",
         [](auto& in) { Set(in.pc24), Set(in.pc5, 149), Set(in.phone, 40); }, 149},
        {"nothing at all", [](auto& in) { Set(in.pc24), Set(in.pc5), Set(in.phone, 40); }, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ChannelPlanInputs inputs = UsInputs();
        c.change(inputs);
        ChannelPlan plan = PlanChannel(inputs);
        EXPECT_EQ(plan.channel, c.channel);
        EXPECT_EQ(plan.band, GetFrequenceType(c.channel));
        EXPECT_NE(plan.reason.find(c.reason), std::string::npos) << plan.reason;
    }
}

// Runs the planner against the simulated card's driver library.
class ChannelPlannerTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        ChannelSelect::phoneChannels = {36, 149, 165, 6};
        ChannelSelect::phone24Channels = {1, 6, 11};
        ChannelSelect::phoneCurrentChannel = 0;
        ChannelSelect::pairDeviceModelName.clear();
        ChannelSelect::Set5GBlackList({});
        ChannelSelect::lastPlan = {};
        ChannelSelect::recordedAPChannel = 0;
    }
    void TearDown() override {
        ConnectKit::WifiAPI::GetInstance()->setWifiInterface(nullptr);
        driver_.reset();
        SimTest::TearDown();
    }
    void Use(Config::Maker maker, const char* area, std::vector<uint8_t> channels = kAllChannels) {
        sim::Scenario scenario;
        scenario.wifiCard.maker = maker;
        scenario.wifiCard.areaCode = ConnectKit::AreaCode(area[0], area[1]);
        scenario.wifiCard.channels = std::move(channels);
        scenario.wifiCard.intel.failures = failures;
        Install(scenario);
    }
    void Install(const sim::Scenario& scenario) {
        pc().Apply(scenario);
        ConnectKit::WifiAPI::GetInstance()->setWifiInterface(nullptr);
        if (scenario.wifiCard.maker == Config::Maker::Intel) {
            driver_ = std::make_shared<ConnectKit::WifiIntelAPI>();
            ChannelSelect::CacheCardMaker(WIFI_CARD_INTEL);
        } else {
            driver_ = std::make_shared<ConnectKit::WifiRealtekAPI>();
            ChannelSelect::CacheCardMaker(WIFI_CARD_REALTEK);
        }
        ConnectKit::WifiAPI::GetInstance()->setWifiInterface(driver_.get());
    }
    // Sets up the hotspot's channel and reads back the one in use.
    // Also checks that the decision read the driver's channels once.
    int PlanSetAndRefresh(bool apFlag = false) {
        size_t queries = Calls("WifiPanQuerySupportedChannels", "#68");
        EXPECT_EQ(ChannelSelect::SetAPFrequence(apFlag, true), ChannelSelect::kPlanSet);
        EXPECT_EQ(Calls("WifiPanQuerySupportedChannels", "#68") - queries, 1u);
        unsigned char channel = 0;
        EXPECT_EQ(ChannelSelect::RefreshAPFrequence(channel), 0);
        EXPECT_EQ(ChannelSelect::GetRecordedAPChannel(), channel);
        return channel;
    }
    // Calls of one operation: its Intel export or its Realtek ordinal.
    static size_t Calls(const char* intel, const char* realtek) {
        size_t count = 0;
        for (const auto& call : sim::DriverLog().calls) {
            count += call.entry == intel || call.entry == realtek;
        }
        return count;
    }
    static size_t SetCalls() { return Calls("WifiPanSetPreferredChannelSettings", "#69"); }
    std::map<std::string, uint32_t> failures;

private:
    std::shared_ptr<ConnectKit::IWifiInterface> driver_;
};

// Without the AP flag the phone's current channel is only recorded. Deciding
// without setting, or without channels, leaves the driver alone.
TEST_F(ChannelPlannerTest, ChoicesPerAreaAndFollowingThePhone) {
    Use(Config::Maker::Intel, "US");
    EXPECT_EQ(ChannelSelect::SetAPFrequence(false, false), ChannelSelect::kPlanSet);
    EXPECT_EQ(ChannelSelect::LastPlan().channel, 36);
    EXPECT_EQ(SetCalls(), 0u);
    SetPhoneCurrentChannel(149);
    EXPECT_EQ(PlanSetAndRefresh(true), 149);
    EXPECT_EQ(ChannelSelect::GetRecordPhoneChannel(), 149);
    EXPECT_EQ(PlanSetAndRefresh(), 36);
    Use(Config::Maker::Intel, "DE");
    EXPECT_EQ(PlanSetAndRefresh(), 149);
    // The European rule, not the Intel filter, keeps a Realtek card off 36.
    Use(Config::Maker::Realtek, "FR");
    EXPECT_EQ(PlanSetAndRefresh(), 149);
    Use(Config::Maker::Intel, "CN");
    EXPECT_EQ(PlanSetAndRefresh(), 149);
    EXPECT_NE(ChannelSelect::LastPlan().reason.find("Intel card in CN"), std::string::npos);
    Use(Config::Maker::Intel, "JP", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13});
    EXPECT_EQ(PlanSetAndRefresh(), 1);
    EXPECT_NE(ChannelSelect::LastPlan().reason.find("area has no 5 GHz"), std::string::npos);
    Use(Config::Maker::Intel, "US", {});
    EXPECT_EQ(ChannelSelect::SetAPFrequence(false, true), ChannelSelect::kPlanNoChannel);
    EXPECT_EQ(SetCalls(), 0u);
}

TEST_F(ChannelPlannerTest, ABlackListedPhoneModelStaysOn24Gigahertz) {
    LogCapture capture;
    Use(Config::Maker::Intel, "US");
    ChannelSelect::Set5GBlackList({"pz-al10"});
    ASSERT_TRUE(SetPairDeviceModelName("Pz-Al10"));
    EXPECT_EQ(PlanSetAndRefresh(), 1);
    EXPECT_TRUE(capture.Contains(L"LIST === IsIn5GBlackList:true"));
    // The driver logs through the log functions; every line of the lists and
    // the planner names ChannelSelect.cpp, the file engineers filter on.
    for (const auto& line : capture.Lines()) {
        if (!line.file.ends_with("LogTool.h")) {
            EXPECT_TRUE(line.file.ends_with("ChannelSelect.cpp")) << line.file;
        }
    }
    ASSERT_TRUE(SetPairDeviceModelName("Pz-Al11"));
    EXPECT_EQ(PlanSetAndRefresh(), 36);
}

TEST_F(ChannelPlannerTest, ARefused5GigahertzChannelIsReportedAndFallsBackTo24) {
    ErrorRecorder listener;
    ASSERT_TRUE(ErrorStatus::GetInstance()->RegistListener(&listener));
    // A world file can make the card refuse, as a user reproducing it would.
    Install(WorldFromJson(R"({"wifiCard": {"maker": "intel", "areaCode": "US",
        "intel": {"failures": {"WifiPanSetPreferredChannelSettings": 1}}}})"));
    EXPECT_EQ(PlanSetAndRefresh(), 1);
    EXPECT_EQ(SetCalls(), 2u);
    ASSERT_TRUE(listener.WaitForOne());
    EXPECT_EQ(listener.Codes(), std::vector<ConnectErrorCode>{CONNECT_ERROR_SET_5G_CHANNEL_FAILED});

    // Refused twice: no channel is pinned.
    failures["WifiPanSetPreferredChannelSettings"] = 2;
    Use(Config::Maker::Intel, "US");
    EXPECT_EQ(ChannelSelect::SetAPFrequence(false, true), ChannelSelect::kPlanSetFailed);
    // A refused 2.4 GHz channel has nothing to fall back to.
    failures["WifiPanSetPreferredChannelSettings"] = 1;
    ChannelSelect::phoneChannels = {6};
    Use(Config::Maker::Intel, "US");
    EXPECT_EQ(ChannelSelect::SetAPFrequence(false, true), ChannelSelect::kPlanSetFailed);
    EXPECT_EQ(SetCalls(), 1u);
    ErrorStatus::GetInstance()->UnregistListener(&listener);
}

TEST_F(ChannelPlannerTest, RefreshFallsBackToTheDecisionWhenTheDriverCannotSay) {
    failures["WifiPanQueryPreferredChannelSetting"] = 2;
    Use(Config::Maker::Intel, "DE");
    ASSERT_EQ(ChannelSelect::SetAPFrequence(false, true), ChannelSelect::kPlanSet);
    unsigned char channel = 0;
    EXPECT_EQ(ChannelSelect::RefreshAPFrequence(channel),
              ConnectKit::WifiIntelAPI::kPreferredQueryFailed);
    EXPECT_EQ(channel, 149);
    EXPECT_EQ(ChannelSelect::GetRecordedAPChannel(), 149);

    // Unpinned, this card reports its first listed channel, 14: no band.
    failures.clear();
    Use(Config::Maker::Intel, "JP", {14, 1, 6});
    EXPECT_EQ(ChannelSelect::RefreshAPFrequence(channel), ChannelSelect::kRefreshNoChannel);
    EXPECT_EQ(channel, 149);

    ConnectKit::WifiAPI::GetInstance()->setWifiInterface(nullptr);
    EXPECT_EQ(ChannelSelect::RefreshAPFrequence(channel), -1);
}

TEST(ChannelBands, EdgesOfEachBand) {
    const std::pair<int, Nearby::WifiFrequenceType> edges[] = {
        {0, Nearby::FREQUENCE_UNKNOWN},  {1, Nearby::FREQUENCE_24G},
        {13, Nearby::FREQUENCE_24G},     {14, Nearby::FREQUENCE_UNKNOWN},
        {35, Nearby::FREQUENCE_UNKNOWN}, {36, Nearby::FREQUENCE_5G},
        {165, Nearby::FREQUENCE_5G},     {166, Nearby::FREQUENCE_UNKNOWN}};
    for (const auto& [channel, band] : edges) {
        EXPECT_EQ(GetFrequenceType(channel), band) << channel;
    }
}

TEST_F(ChannelPlannerTest, IntelOutsideChinaAndTheUsLosesTheLowFiveGigahertzChannels) {
    LogCapture capture;
    Use(Config::Maker::Intel, "DE", {1, 6, 14, 0, 36, 40, 44, 48, 149});
    std::string list24, list5;
    int area = 0;
    GetPCChannelList(list24, list5, area);
    EXPECT_EQ(list24, "1,6,");
    EXPECT_EQ(list5, "149,");
    EXPECT_EQ(area, ConnectKit::AreaCode('D', 'E'));
    EXPECT_TRUE(ChannelSelect::IsEuropeanCountries());
    // The planner is not in ConnectKit's namespace, and its lines say so.
    EXPECT_EQ(capture.Count(L"TTEESSTT == ChannelSelect::GetPCSupportChannelList= GetPCSupport "
                            L"channel filter."),
              4u);
    for (const char* keeps : {"CN", "US"}) {
        Use(Config::Maker::Intel, keeps, {36, 40, 44, 48, 149});
        GetPCChannelList(list24, list5, area);
        EXPECT_EQ(list5, "36,40,44,48,149,");
        EXPECT_EQ(list24, "");
        EXPECT_FALSE(ChannelSelect::IsEuropeanCountries());
    }
    Use(Config::Maker::Realtek, "DE", {36, 149});
    GetPCChannelList(list24, list5, area);
    EXPECT_EQ(list5, "36,149,");
}

// A failed query gives empty lists and false; the European areas are the
// ones last set.
TEST_F(ChannelPlannerTest, AFailedDriverQueryAndReplacedEuropeanAreas) {
    unsigned short code = 0;
    Use(Config::Maker::Intel, "FR", {1, 36});
    EXPECT_TRUE(ChannelSelect::GetAreaIsSupport5GChannel(code));
    EXPECT_EQ(code, ConnectKit::AreaCode('F', 'R'));
    ChannelSelect::SetEuropeanAreaCodes({ConnectKit::AreaCode('J', 'P')});
    EXPECT_FALSE(ChannelSelect::IsEuropeanCountries());
    ChannelSelect::SetEuropeanAreaCodes({ConnectKit::AreaCode('F', 'R')});

    LogCapture capture;
    failures["WifiPanQuerySupportedChannels"] = 10;
    Use(Config::Maker::Intel, "FR");
    std::string list24 = "x", list5 = "y";
    int area = 7;
    GetPCChannelList(list24, list5, area);
    EXPECT_EQ(list24 + list5, "");
    EXPECT_EQ(area, 0);
    EXPECT_FALSE(ChannelSelect::GetAreaIsSupport5GChannel(code));
    EXPECT_FALSE(ChannelSelect::IsEuropeanCountries());
    EXPECT_TRUE(capture.Contains(L"WifiAPI GetSupportedChannels Failed, ret: -1"));
}

TEST_F(ChannelPlannerTest, PhoneListsAndTheirIntersectionWithThePc) {
    ChannelSelect::phone24Channels.clear();
    AddPhoneSupportChannel(149);
    AddPhoneSupportChannel(149);
    AddPhoneSupport24Channel(11);
    AddPhoneSupport24Channel(6);
    AddPhoneSupport24Channel(13);
    RemovePhoneSupportChannels();
    AddPhoneSupportChannel(36);
    std::string text;
    ChannelSelect::GetPhoneChannelList(text);
    EXPECT_EQ(text, "36,");
    ChannelSelect::GetPhone24GChannelList(text);
    EXPECT_EQ(text, "11,6,13,");
    Use(Config::Maker::Intel, "US", {1, 6, 11});
    EXPECT_EQ(ChannelSelect::GetPcPhone24GIntersection(), (std::vector<int>{11, 6}));
}

}  // namespace
}  // namespace connectkit::test
