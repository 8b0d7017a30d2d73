// Each Wi-Fi world gives, through the tool, what its description says.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ToolRun.h"

namespace connectkit::test {
namespace {

struct WifiCase {
    const char* world;  // in examples/worlds, without ".json"; empty for none
    const char* command;
    int exitCode;
    std::vector<const char*> shows;
};

const WifiCase kCases[] = {
    {"wifi-phone-ap",
     "wifi connect DIRECT-Xy-PHONE 8aK3pQ2m",
     0,
     {"state 1 WifiConnecting (DIRECT-Xy-PHONE)", "settled in state 4 WifiDisConnected",
      "address 192.168.137.45\n"}},
    {"wifi-wrong-key",
     "wifi connect DIRECT-Xy-PHONE wrongkey1",
     1,
     {"settled in state 3 unknow", "address 0.0.0.0 (no usable address"}},
    {"wifi-network-absent",
     "wifi connect DIRECT-Xy-PHONE 8aK3pQ2m",
     1,
     {"settled in state 3 unknow", "no usable address"}},
    {"wifi-dhcp-apipa-then-ok",
     "wifi connect DIRECT-Xy-PHONE 8aK3pQ2m",
     0,
     {"settled in state 4", "address 192.168.137.52\n"}},
    {"wifi-dhcp-never",
     "wifi connect DIRECT-Xy-PHONE 8aK3pQ2m",
     1,
     {"settled in state 4", "address 0.0.0.0 (no usable address"}},
    {"wifi-other-chip",
     "wifi connect DIRECT-Xy-PHONE 8aK3pQ2m",
     1,
     {"settled in state 4", "no usable address"}},
    {"wifi-roaming",
     "wifi monitor --seconds 12",
     0,
     {"report ConnectComplete type=Intel ssid=Office-5G rssi=-55 channel=1", "report RoamingStart",
      "report RoamingEnd type=Intel ssid=Office-5G rssi=-48 channel=44", "report Disconnected"}},
    {"wifi-location-denied",
     "wifi connect DIRECT-Xy-PHONE 8aK3pQ2m",
     1,
     {"settled in state 3 unknow", "address 192.168.137.45\n"}},
    {"",
     "wifi profile 'Home\"Net' secret",
     0,
     {"<name>Home&quot;Net</name>", "<keyMaterial>secret</keyMaterial >"}},
};

TEST(WifiTool, EachWorldShowsWhatItsDescriptionSays) {
    for (const auto& c : kCases) {
        std::string world =
            *c.world ? "--world " + std::string(CONNECTKIT_WORLDS_DIR) + "/" + c.world + ".json "
                     : "";
        ToolRun run = Tool(world + c.command);
        EXPECT_EQ(run.exitCode, c.exitCode) << c.world << ": " << run.out << run.err;
        for (const char* text : c.shows) {
            EXPECT_NE(run.out.find(text), std::string::npos)
                << c.world << " lacks \"" << text << "\" in:\n"
                << run.out;
        }
    }
}

}  // namespace
}  // namespace connectkit::test
