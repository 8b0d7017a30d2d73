#include <gtest/gtest.h>

#include "channel/ChannelSelect.h"
#include "connectkit/ChannelList.h"
#include "connectkit/WifiAPI.h"
#include "support/LogCapture.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

using ConnectKit::AreaCode;

// A driver stand-in answering what the test sets, so each case names its
// card's area and channels directly.
class FakeDriver : public ConnectKit::IWifiInterface {
public:
    int result = 0;
    _GO_SUPPORTTED_CHANNELS answer{};
    void Answer(uint16_t area, std::vector<uint8_t> channels) {
        answer = {};
        answer.areaCode = area;
        answer.channelCount = static_cast<uint8_t>(channels.size());
        std::copy(channels.begin(), channels.end(), answer.channels);
    }
    int GetSupportedChannels(_GO_SUPPORTTED_CHANNELS* out) override {
        if (result == 0) {
            *out = answer;
        }
        return result;
    }
    int SetPreferredChannelSettings(_INTEL_GO_PREFERRED_CHANNEL*) override { return 0; }
    int GetPreferredChannelSetting(_GO_OPERATION_CHANNEL_SETTING*) override { return 0; }
    int SetDiscoverFilter(_WIFI_DISCOVER_FILTER*) override { return 0; }
    int ResetPreferredChannelSettings() override { return 0; }
    int ResetDiscoverFilter() override { return 0; }
    int SetWifiLegacyGoScanFilter(_WIFI_LEGACY_GO_SCAN_FILTER*) override { return 0; }
    int ResetLegacyGoScanFilter() override { return 0; }
};

class ChannelListTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        ConnectKit::WifiAPI::GetInstance()->setWifiInterface(&driver);
        ChannelSelect::CacheCardMaker(WIFI_CARD_INTEL);
        ChannelSelect::phoneChannels.clear();
        ChannelSelect::phone24Channels.clear();
    }
    void TearDown() override {
        ConnectKit::WifiAPI::GetInstance()->setWifiInterface(nullptr);
        SimTest::TearDown();
    }
    FakeDriver driver;
};

TEST(ChannelBands, EdgesOfEachBand) {
    EXPECT_EQ(GetFrequenceType(0), Nearby::FREQUENCE_UNKNOWN);
    EXPECT_EQ(GetFrequenceType(1), Nearby::FREQUENCE_24G);
    EXPECT_EQ(GetFrequenceType(13), Nearby::FREQUENCE_24G);
    EXPECT_EQ(GetFrequenceType(14), Nearby::FREQUENCE_UNKNOWN);
    EXPECT_EQ(GetFrequenceType(35), Nearby::FREQUENCE_UNKNOWN);
    EXPECT_EQ(GetFrequenceType(36), Nearby::FREQUENCE_5G);
    EXPECT_EQ(GetFrequenceType(165), Nearby::FREQUENCE_5G);
    EXPECT_EQ(GetFrequenceType(166), Nearby::FREQUENCE_UNKNOWN);
}

TEST_F(ChannelListTest, IntelOutsideChinaAndTheUsLosesTheLowFiveGigahertzChannels) {
    LogCapture capture;
    driver.Answer(AreaCode('D', 'E'), {1, 6, 14, 0, 36, 40, 44, 48, 149});
    std::string list24, list5;
    int area = 0;
    GetPCChannelList(list24, list5, area);
    EXPECT_EQ(list24, "1,6,");
    EXPECT_EQ(list5, "149,");
    EXPECT_EQ(area, AreaCode('D', 'E'));
    // The planner is not in ConnectKit's namespace, and its lines say so.
    EXPECT_EQ(capture.Count(L"TTEESSTT == ChannelSelect::GetPCSupportChannelList= GetPCSupport "
                            L"channel filter."),
              4u);
    auto lines = capture.Lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_NE(lines.front().file.find("ChannelSelect.cpp"), std::string::npos);

    for (uint16_t keeps : {ConnectKit::kAreaChina, ConnectKit::kAreaUnitedStates}) {
        driver.Answer(keeps, {36, 40, 44, 48, 149});
        GetPCChannelList(list24, list5, area);
        EXPECT_EQ(list5, "36,40,44,48,149,");
        EXPECT_EQ(list24, "");
    }
    ChannelSelect::CacheCardMaker(WIFI_CARD_REALTEK);
    driver.Answer(AreaCode('D', 'E'), {36, 149});
    GetPCChannelList(list24, list5, area);
    EXPECT_EQ(list5, "36,149,");
}

TEST_F(ChannelListTest, AFailedDriverQueryGivesEmptyListsAndFalseAreaChecks) {
    LogCapture capture;
    driver.result = -1;
    std::string list24 = "x", list5 = "y";
    int area = 7;
    GetPCChannelList(list24, list5, area);
    EXPECT_EQ(list24, "");
    EXPECT_EQ(list5, "");
    EXPECT_EQ(area, 0);
    unsigned short code = 0;
    EXPECT_FALSE(ChannelSelect::GetAreaIsSupport5GChannel(code));
    EXPECT_FALSE(ChannelSelect::IsEuropeanCountries());
    EXPECT_TRUE(capture.Contains(L"WifiAPI GetSupportedChannels Failed, ret: -1"));
}

TEST_F(ChannelListTest, AreaChecks) {
    unsigned short code = 0;
    driver.Answer(AreaCode('J', 'P'), {1, 6, 11});
    EXPECT_FALSE(ChannelSelect::GetAreaIsSupport5GChannel(code));
    EXPECT_EQ(code, AreaCode('J', 'P'));
    EXPECT_FALSE(ChannelSelect::IsEuropeanCountries());
    driver.Answer(AreaCode('F', 'R'), {1, 36});
    EXPECT_TRUE(ChannelSelect::GetAreaIsSupport5GChannel(code));
    EXPECT_TRUE(ChannelSelect::IsEuropeanCountries());
    ChannelSelect::SetEuropeanAreaCodes({AreaCode('J', 'P')});
    EXPECT_FALSE(ChannelSelect::IsEuropeanCountries());
    ChannelSelect::SetEuropeanAreaCodes({AreaCode('F', 'R')});
}

TEST_F(ChannelListTest, RemovalsOfIndoorAnd20MegahertzChannels) {
    std::vector<int> list = {36, 40, 44, 48, 52, 149};
    driver.Answer(ConnectKit::kAreaChina, {36, 149});
    ChannelSelect::RemoveIntelChinaIndoorChannel(list);
    EXPECT_EQ(list, (std::vector<int>{52, 149}));
    list = {36, 149};
    driver.Answer(ConnectKit::kAreaUnitedStates, {36, 149});
    ChannelSelect::RemoveIntelChinaIndoorChannel(list);
    EXPECT_EQ(list, (std::vector<int>{36, 149}));

    std::vector<int> single = {165};
    ChannelSelect::Remove20MBandWidthChannel(single);
    EXPECT_EQ(single, (std::vector<int>{165}));
    std::vector<int> two = {165, 149, 165};
    ChannelSelect::Remove20MBandWidthChannel(two);
    EXPECT_EQ(two, (std::vector<int>{149}));
}

TEST_F(ChannelListTest, PhoneListsAndTheirIntersectionWithThePc) {
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
    driver.Answer(ConnectKit::kAreaUnitedStates, {1, 6, 11});
    EXPECT_EQ(ChannelSelect::GetPcPhone24GIntersection(), (std::vector<int>{11, 6}));
}

}  // namespace
}  // namespace connectkit::test
