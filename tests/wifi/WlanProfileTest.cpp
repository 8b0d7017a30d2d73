#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <algorithm>
#include <initializer_list>
#include <string>
#include <utility>

#include "platform/suite/DEString.h"
#include "platform/suite/UrlsManager.h"
#include "wifi/WlanProfile.h"

namespace connectkit::test {
namespace {

using WifiConnectManage::ApInfo;

const std::wstring kProfileNs = L"http://www.microsoft.com/networking/WLAN/profile/v1";
const std::wstring kRandomNs = L"http://www.microsoft.com/networking/WLAN/profile/v3";

std::wstring Build(const std::wstring& ssid, const std::wstring& key) {
    bool formatFailed = false;
    std::wstring profile =
        wifi::BuildProfile({ssid, key, L"WPA2PSK", L"AES"}, wifi::HexString(ssid), kProfileNs,
                           kRandomNs, formatFailed);
    EXPECT_FALSE(formatFailed);
    return profile;
}

// The profile parsed: well-formed XML, and ASCII as its declaration says.
struct Parsed {
    explicit Parsed(const std::wstring& profile) : text(DE::UnicodeToUTF8(profile)) {
        EXPECT_EQ(document.Parse(text.c_str(), text.size()), tinyxml2::XML_SUCCESS) << text;
        EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x80; }))
            << text;
    }
    // The text of the element at `path` below the root; empty when absent.
    std::string At(std::initializer_list<const char*> path) const {
        const tinyxml2::XMLElement* element = document.FirstChildElement("WLANProfile");
        for (const char* name : path) {
            element = element != nullptr ? element->FirstChildElement(name) : nullptr;
        }
        return element != nullptr && element->GetText() != nullptr ? element->GetText() : "";
    }
    std::string text;
    tinyxml2::XMLDocument document;
};

TEST(WlanProfileTest, OrdinaryInputGivesTheTemplateByteForByte) {
    EXPECT_EQ(
        Build(L"Phone-AP", L"pass1234"),
        L"<?xml version = \"1.0\" encoding = \"us-ascii\" ?>     <WLANProfile xmlns = "
        L"\"http://www.microsoft.com/networking/WLAN/profile/v1\">         <name>Phone-AP</name>   "
        L"      <SSIDConfig>             <SSID>                 <hex>50686f6e652d4150</hex>        "
        L"         <name>Phone-AP</name>             </SSID>         </SSIDConfig>         "
        L"<connectionType>ESS</connectionType>         <connectionMode>manual</connectionMode>     "
        L"    <MSM>             <security>                 <authEncryption>                     "
        L"<authentication>WPA2PSK</authentication>                     "
        L"<encryption>AES</encryption>                     <useOneX>false</useOneX>                "
        L" </authEncryption>                 <sharedKey>                     "
        L"<keyType>passPhrase</keyType>                     <protected>false</protected>           "
        L"          <keyMaterial>pass1234</keyMaterial >                 </sharedKey>             "
        L"</security>         </MSM>          <MacRandomization xmlns = "
        L"\"http://www.microsoft.com/networking/WLAN/profile/v3\">             "
        L"<enableRandomization>false</enableRandomization>         </MacRandomization>     "
        L"</WLANProfile>");
}

// Every SSID and key a caller may hand over gives a well-formed profile that
// carries them back unchanged (characters XML cannot hold aside).
TEST(WlanProfileTest, HostileAndOddInputStaysWellFormedAndRoundTrips) {
    const std::wstring ssids[] = {L"",
                                  std::wstring(32, L'S'),
                                  std::wstring(33, L'S'),
                                  L"a&b<c>d\"e'f",
                                  L"</name><name>x",
                                  L"K\u00e4ffchen \u6e2f",
                                  L"]]>&amp;"};
    const std::wstring keys[] = {L"",
                                 std::wstring(7, L'k'),
                                 std::wstring(8, L'k'),
                                 std::wstring(63, L'k'),
                                 std::wstring(64, L'k'),
                                 L"<&>\"'"};
    for (const auto& ssid : ssids) {
        for (const auto& key : keys) {
            SCOPED_TRACE(DE::UnicodeToUTF8(ssid) + " / " + DE::UnicodeToUTF8(key));
            const Parsed parsed(Build(ssid, key));
            EXPECT_EQ(parsed.At({"name"}), DE::UnicodeToUTF8(ssid));
            EXPECT_EQ(parsed.At({"SSIDConfig", "SSID", "name"}), DE::UnicodeToUTF8(ssid));
            EXPECT_EQ(parsed.At({"SSIDConfig", "SSID", "hex"}),
                      DE::UnicodeToUTF8(wifi::HexString(ssid)));
            EXPECT_EQ(parsed.At({"MSM", "security", "sharedKey", "keyMaterial"}),
                      DE::UnicodeToUTF8(key));
            // No key: an open network, broadcast, without MAC randomisation.
            const bool open = key.empty();
            EXPECT_EQ(parsed.At({"MSM", "security", "authEncryption", "authentication"}),
                      open ? "open" : "WPA2PSK");
            EXPECT_EQ(parsed.At({"MSM", "security", "authEncryption", "encryption"}),
                      open ? "none" : "AES");
            EXPECT_EQ(parsed.At({"SSIDConfig", "nonBroadcast"}), open ? "false" : "");
            EXPECT_EQ(parsed.At({"connectionType"}), "ESS");
            EXPECT_EQ(parsed.At({"connectionMode"}), "manual");
            EXPECT_EQ(parsed.At({"MSM", "security", "authEncryption", "useOneX"}), "false");
            EXPECT_EQ(parsed.text.find("MacRandomization") == std::string::npos, open);
        }
    }
    // A control character cannot be carried: it becomes U+FFFD, the hex keeps it.
    const Parsed control(Build(std::wstring(L"a\x01"
                                            L"b"),
                               L"k"));
    EXPECT_EQ(control.At({"name"}),
              "a\xEF\xBF\xBD"
              "b");
    // The hex spells the UTF-8 bytes, without padding each to two digits.
    EXPECT_EQ(control.At({"SSIDConfig", "SSID", "hex"}), "61162");
    EXPECT_EQ(wifi::HexString(L"\u00e4"), L"c3a4");
}

TEST(WlanProfileTest, TooLongInputGivesAnEmptyProfile) {
    bool formatFailed = false;
    EXPECT_TRUE(
        wifi::BuildProfile({std::wstring(20000, L'a'), std::wstring(20000, L'b'), L"W", L"A"}, L"",
                           kProfileNs, kRandomNs, formatFailed)
            .empty());
    EXPECT_FALSE(formatFailed);
    // Escapes can outgrow the buffer the plain lengths add up to.
    EXPECT_TRUE(wifi::BuildProfile({std::wstring(9000, L'&'), L"k", L"W", L"A"}, L"", kProfileNs,
                                   kRandomNs, formatFailed)
                    .empty());
    EXPECT_TRUE(formatFailed);
}

TEST(WlanProfileTest, UrlTableHoldsBothNamespacesAndNothingElse) {
    std::string value;
    for (const auto& [key, expected] : {std::pair{"config_WLAN_Profile", kProfileNs},
                                        std::pair{"config_Mac_Randomization", kRandomNs}}) {
        ASSERT_TRUE(UrlsManager::Instance()->GetUrl("SynergyService", "china", key, value));
        EXPECT_EQ(DE::ANSIToUnicode(value), expected);
    }
    EXPECT_FALSE(
        UrlsManager::Instance()->GetUrl("SynergyService", "europe", "config_WLAN_Profile", value));
    EXPECT_EQ(value, "");
}

}  // namespace
}  // namespace connectkit::test
