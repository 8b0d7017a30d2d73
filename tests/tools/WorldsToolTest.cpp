// Each command through the tool, on a world that shows its answer and its
// exit codes, and the worlds no library suite loads by name.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ToolRun.h"

namespace connectkit::test {
namespace {

struct WorldCase {
    const char* world;  // in examples/worlds, without ".json"; empty for none
    const char* command;
    int exitCode;
    std::vector<const char*> shows;
};

constexpr char kCheck[] = "integrity check '\\plugins\\cast.dll'";

const WorldCase kCases[] = {
    {"",
     "errors post 0x10000001 268435456",
     0,
     {"posted 0x10000001 \"go already exist\": listener received",
      "posted 0x10000000 \"apchannel go abort\": nothing delivered"}},
    {"foundation",
     "report time",
     0,
     {"system time   20240305-090503-007\n", "milliseconds  1709625903007 since"}},
    {"intel-de",
     "channels --phone 36,149 --phone24 1,6,11",
     0,
     {"PC 5 GHz          149,153,157,161,165,\n", "plan              5GHz channel 149\n"}},
    {"intel-proset",
     "channels --phone 36,149 --phone-current 149 --ap-flag",
     0,
     {"plan              5GHz channel 149\nreason            following the phone's current"}},
    {"intel-de",
     "channels --phone24 6",
     0,
     {"plan              2.4GHz channel 6\n",
      "reason            2.4 GHz channel both sides support"}},
    {"intel-no-channels", "channels --phone 36", 1, {"plan              none channel 0\n"}},
    {"hotspot-ok",
     "hotspot create",
     0,
     {"result      0 (hotspot ready)\nssid        DIRECT-", "mac         3a:7c:76:12:9e:51\n",
      "ip          192.168.137.1\n"}},
    {"phones-join-and-leave",
     "hotspot watch --seconds 8",
     0,
     {"[+  1200 ms] phone connected    WiFiDirect#aa:bb:cc:00:00:01 at 192.168.137.23\n",
      "[+  5000 ms] phone disconnected WiFiDirect#aa:bb:cc:00:00:01\n"}},
    {"hotspot-foreign-go", "hotspot create", 1, {"-94 (a group owner started by someone else"}},
    {"integrity-tampered",
     kCheck,
     1,
     {"\\plugins\\cast.dll: false", "debugger: Sha256 Check faild \\plugins"}},
    {"integrity-no-manifest", kCheck, 1, {"debugger: CheckFileIntergrity.xml is not exist "}},
    {"integrity-ok", kCheck, 0, {"\\plugins\\cast.dll: true"}},
    {"bluetooth-on", "radios", 0, {"bluetooth         on        Bluetooth"}},
    {"bluetooth-on", "bluetooth address", 0, {"A1:B2:C3:D4:E5:F6\nname     LAPTOP-SIM\n"}},
    {"bluetooth-off", "--json bluetooth on", 0, {R"({"meaning":"switch requested","result":0}
{"event":"state","ms":250,"radio":"bluetooth","state":"on","value":1}
)"}},
    {"bluetooth-hard-off", "bluetooth on", 0, {"result  0 (switch requested)"}},
    {"bluetooth-none", "bluetooth on", 1, {"result  3 (failed)"}},
    {"bluetooth-two-controllers", "bluetooth address", 0, {"00:E0:4C:12:34:56"}},
    {"wifi-dhcp-never",
     "wifi connect DIRECT-Xy-PHONE 8aK3pQ2m",
     1,
     {"settled in state 4", "0.0.0.0 (no usable"}},
    {"radios-slow-listing", "radios", 0, {"(asked in 4500 ms)"}},
    {"wifi-radio-off", "wifi radio on", 0, {"[+   250 ms] wifi on"}},
    {"wifi-radio-disabled", "wifi radio on", 1, {"result  2 (disabled"}},
    {"wifi-phone-ap",
     "wifi connect DIRECT-Xy-PHONE 8aK3pQ2m",
     0,
     {"state 1 WifiConnecting (DIRECT-Xy-PHONE)", "settled in state 4 WifiDisConnected",
      "address 192.168.137.45\n"}},
    {"wifi-wrong-key",
     "wifi connect DIRECT-Xy-PHONE wrongkey1",
     1,
     {"settled in state 3 unknow", "0.0.0.0 (no usable"}},
    {"wifi-roaming",
     "wifi monitor --seconds 12",
     0,
     {"report ConnectComplete type=Intel ssid=Office-5G rssi=-55 channel=1", "report RoamingStart",
      "report RoamingEnd type=Intel ssid=Office-5G rssi=-48 channel=44", "report Disconnected"}},
    // One row per Bluetooth LE world: the scanner's and the advertiser's own
    // tests hold what each delivers, drops and retries.
    {"ble-phone-advertising",
     "ble advertise general 0e0102 --seconds 1",
     0,
     {"stopped  general after 1 s\nphone-manufacturer"}},
    {"ble-noisy-air",
     "ble scan --seconds 1",
     0,
     {"5C:0A:1B:2C:3D:01 type 3 uuid 0xFDEE 0f0102\n",
      "delivered 30, dropped 50\n  20 not exactly one section of the suite's kinds\n"
      "  20 service data shorter than its UUID\n  10 service data under another UUID\n"}},
    {"ble-radio-off", "ble scan --seconds 1", 0, {"watcher stopped: RadioNotAvailable\n"}},
    {"ble-realtek",
     "ble advertise general 0e0102 --seconds 1",
     0,
     {"instance 1           00:E0:4C:12:34:56  -40 dBm every   50 ms type 3 adv ff:7d020e0102\n",
      "nothing on the air\n"}},
    {"ble-controller-refuses",
     "ble advertise general 0e0102 --tries 6",
     0,
     {"attempt  2: failed, last error 0x00000079\n", "attempt  4: advertising\n"}},
    {"",
     "wifi profile 'Home\"Net' secret",
     0,
     {"<name>Home&quot;Net</name>", "<keyMaterial>secret</keyMaterial >"}},
};

TEST(WorldsTool, WorldsShowWhatTheirDescriptionsSay) {
    for (const auto& c : kCases) {
        ToolRun run = Tool((*c.world ? "--world " + WorldPath(c.world) + " " : "") + c.command);
        EXPECT_EQ(run.exitCode, c.exitCode) << c.world << ": " << run.out << run.err;
        for (const char* text : c.shows) {
            EXPECT_NE(run.out.find(text), std::string::npos)
                << c.world << " lacks \"" << text << "\" in:\n"
                << run.out;
        }
    }
}

// A world that no longer loads (a field renamed, a section moved) fails here
// even when no row above uses it; a broken one is refused as a usage error.
TEST(WorldsTool, EveryExampleWorldLoads) {
    for (const auto& entry : std::filesystem::directory_iterator(CONNECTKIT_WORLDS_DIR)) {
        const std::string name = entry.path().stem().string();
        ToolRun run = Tool("--world " + entry.path().string() + " version");
        EXPECT_EQ(run.exitCode, name.rfind("broken-", 0) == 0 ? 2 : 0) << name << ": " << run.err;
    }
}

}  // namespace
}  // namespace connectkit::test
