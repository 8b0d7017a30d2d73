#include <gtest/gtest.h>

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

// What the US and CN rules leave an Intel card that lists every channel.
ChannelPlanInputs UsInputs() {
    ChannelPlanInputs inputs;
    inputs.pc24 = {1, 6, 11};
    inputs.pc5 = {36, 149, 165};
    inputs.phone = {6, 36, 149, 165};
    inputs.areaSupports5G = true;
    return inputs;
}

TEST(PlanChannel, FollowsThePhoneOnlyWhenItStaysAndThePcCanUseItsChannel) {
    ChannelPlanInputs inputs = UsInputs();
    inputs.phoneCurrent = 149;
    EXPECT_EQ(PlanChannel(inputs).channel, 36);
    inputs.apFlag = true;
    ChannelPlan plan = PlanChannel(inputs);
    EXPECT_EQ(plan.channel, 149);
    EXPECT_EQ(plan.band, Nearby::FREQUENCE_5G);
    EXPECT_NE(plan.reason.find("following the phone"), std::string::npos) << plan.reason;

    // The phone already runs 165 at 20 MHz, so following it is fine.
    inputs.phoneCurrent = 165;
    EXPECT_EQ(PlanChannel(inputs).channel, 165);
    inputs.phoneCurrent = 6;
    EXPECT_EQ(PlanChannel(inputs).band, Nearby::FREQUENCE_24G);

    inputs.phoneCurrent = 52;
    plan = PlanChannel(inputs);
    EXPECT_EQ(plan.channel, 36);
    EXPECT_NE(plan.reason.find("52 not usable"), std::string::npos) << plan.reason;

    // A black-listed model cannot follow the phone onto 5 GHz.
    inputs.phoneCurrent = 149;
    inputs.modelOn5GBlackList = true;
    EXPECT_EQ(PlanChannel(inputs).channel, 6);
}

TEST(PlanChannel, TakesThe20MegahertzChannel165OnlyWhenNothingElseIsShared) {
    ChannelPlanInputs inputs = UsInputs();
    inputs.pc5 = {165, 149};
    inputs.phone = {165, 149};
    ChannelPlan plan = PlanChannel(inputs);
    EXPECT_EQ(plan.channel, 149);
    EXPECT_NE(plan.reason.find("165 left out"), std::string::npos) << plan.reason;
    inputs.phone = {165, 6};
    EXPECT_EQ(PlanChannel(inputs).channel, 165);
}

TEST(PlanChannel, EuropeanAreasLeaveOutTheIndoorChannelsWhateverTheCard) {
    ChannelPlanInputs inputs = UsInputs();
    inputs.pc5 = {36, 40, 149};
    inputs.phone = {36, 149};
    inputs.european = true;
    EXPECT_EQ(PlanChannel(inputs).channel, 149);
    inputs.phone = {40, 11};
    ChannelPlan plan = PlanChannel(inputs);
    EXPECT_EQ(plan.channel, 11);
    EXPECT_NE(plan.reason.find("European area"), std::string::npos) << plan.reason;
}

TEST(PlanChannel, TwoFourGigahertzJoinsBothPhoneListsAndPrefersNonOverlappingChannels) {
    ChannelPlanInputs inputs;
    inputs.pc24 = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    inputs.phone24 = {3, 6};
    inputs.phone = {11, 36};
    EXPECT_EQ(PlanChannel(inputs).channel, 6);
    inputs.phone24 = {3};
    inputs.phone = {4};
    EXPECT_EQ(PlanChannel(inputs).channel, 3);
}

TEST(PlanChannel, WithNothingSharedFallsBackToWhatThePcOffers) {
    ChannelPlanInputs inputs;
    inputs.areaSupports5G = true;
    inputs.pc24 = {3, 11, 1};
    inputs.pc5 = {149};
    inputs.phone = {40};
    ChannelPlan plan = PlanChannel(inputs);
    EXPECT_EQ(plan.channel, 11);
    EXPECT_NE(plan.reason.find("nothing shared"), std::string::npos) << plan.reason;
    inputs.pc24 = {};
    EXPECT_EQ(PlanChannel(inputs).channel, 149);
    inputs.pc5 = {};
    plan = PlanChannel(inputs);
    EXPECT_EQ(plan.channel, 0);
    EXPECT_EQ(plan.band, Nearby::FREQUENCE_UNKNOWN);
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

TEST_F(ChannelPlannerTest, ChoicesPerArea) {
    Use(Config::Maker::Intel, "US");
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
}

TEST_F(ChannelPlannerTest, FollowsThePhonesCurrentChannelAndRecordsIt) {
    Use(Config::Maker::Intel, "US");
    SetPhoneCurrentChannel(149);
    EXPECT_EQ(PlanSetAndRefresh(true), 149);
    EXPECT_EQ(ChannelSelect::GetRecordPhoneChannel(), 149);
    EXPECT_EQ(PlanSetAndRefresh(false), 36);
}

TEST_F(ChannelPlannerTest, ABlackListedPhoneModelStaysOn24Gigahertz) {
    LogCapture capture;
    Use(Config::Maker::Intel, "US");
    ChannelSelect::Set5GBlackList({"pz-al10"});
    ASSERT_TRUE(SetPairDeviceModelName("Pz-Al10"));
    EXPECT_EQ(PlanSetAndRefresh(), 1);
    EXPECT_TRUE(capture.Contains(L"LIST === IsIn5GBlackList:true"));
    for (const auto& line : capture.Lines()) {
        if (line.message.find(L"IsIn5GBlackList") != std::wstring::npos ||
            line.message.find(L"ChannelSelect::SetAPFrequence") != std::wstring::npos) {
            EXPECT_NE(line.file.find("ChannelSelect.cpp"), std::string::npos) << line.file;
        }
    }
    ASSERT_TRUE(SetPairDeviceModelName("Pz-Al11"));
    EXPECT_EQ(PlanSetAndRefresh(), 36);
}

TEST_F(ChannelPlannerTest, ARefused5GigahertzChannelIsReportedAndFallsBackTo24) {
    ErrorRecorder listener;
    ASSERT_TRUE(ErrorStatus::GetInstance()->RegistListener(&listener));
    // A world file can make the card refuse, as a user reproducing it would.
    sim::Scenario scenario;
    sim::ScenarioError error;
    ASSERT_TRUE(sim::ParseScenario(R"({"wifiCard": {"maker": "intel", "areaCode": "US",
        "intel": {"failures": {"WifiPanSetPreferredChannelSettings": 1}}}})",
                                   "refuses.json", scenario, error))
        << error.ToString();
    Install(scenario);
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

TEST_F(ChannelPlannerTest, DecidingWithoutSettingOrWithoutChannelsLeavesTheDriverAlone) {
    Use(Config::Maker::Intel, "US");
    EXPECT_EQ(ChannelSelect::SetAPFrequence(false, false), ChannelSelect::kPlanSet);
    EXPECT_EQ(ChannelSelect::LastPlan().channel, 36);
    Use(Config::Maker::Intel, "US", {});
    EXPECT_EQ(ChannelSelect::SetAPFrequence(false, true), ChannelSelect::kPlanNoChannel);
    EXPECT_EQ(SetCalls(), 0u);
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

}  // namespace
}  // namespace connectkit::test
