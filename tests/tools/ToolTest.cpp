// Runs the connectkit tool as a user would and checks its output and exit
// codes.

#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ToolRun.h"

namespace connectkit::test {
namespace {

// A log4cplus configuration with one console appender.
std::string ConsoleLogConfig(const std::string& level, bool toStderr) {
    return WriteFile(level + ".properties",
                     "log4cplus.rootLogger=" + level +
                         ", c\nlog4cplus.appender.c=log4cplus::ConsoleAppender\n"
                         "log4cplus.appender.c.logToStdErr=" +
                         (toStderr ? "true" : "false") +
                         "\nlog4cplus.appender.c.layout=log4cplus::PatternLayout\n"
                         "log4cplus.appender.c.layout.ConversionPattern=[%p] %m%n\n");
}

// Log lines may go to stderr through either of the streams (ours, or
// log4cplus's own wide console appender from a configuration file); the
// tool's error must reach the user after them either way, and name the world
// file and the field.
TEST(Tool, AWrongWorldIsAUsageErrorOnStderrWhateverTheLogging) {
    std::string config = ConsoleLogConfig("WARN", true);
    std::string world = WorldPath("broken-typo");
    std::string message = world + ": clock.localTme: unknown field";
    for (const auto& logging :
         std::vector<std::string>{"", "-v", "--log-level error", "--log-config " + config}) {
        ToolRun run = Tool(logging + " --world " + world + " report time");
        EXPECT_EQ(run.exitCode, 2) << logging;
        EXPECT_EQ(run.err.find("world rejected") != std::string::npos, !logging.empty()) << logging;
        EXPECT_NE(run.err.find("connectkit: " + message), std::string::npos) << logging << run.err;

        run = Tool("--json " + logging + " --world " + world + " version");
        auto error = nlohmann::json::parse(run.err.substr(run.err.rfind('{')), nullptr, false);
        EXPECT_EQ(error["exitCode"], 2) << logging << run.err;
        EXPECT_EQ(error["error"], message) << logging;
    }
}

// A command line the tool rejects is a usage error, and with --json an error
// object a script can read.
TEST(Tool, BadArgumentsAreUsageErrors) {
    for (const char* arguments :
         {"errors post banana", "errors post 0x1FFFFFFFF", "--log-level loud version",
          "--log-config /nonexistent.properties version", "frobnicate", "errors post", "--bad",
          "--world /nonexistent.json version", "bluetooth", "bluetooth rename", "wifi connect ssid",
          "bluetooth watch --seconds -1", "wifi radio watch --seconds 0",
          "wifi monitor --seconds 99999999999", "ble scan --seconds 5000000",
          "ble advertise general 0e01zz"}) {
        EXPECT_EQ(Tool(arguments).exitCode, 2) << arguments;
        ToolRun run = Tool(std::string("--json ") + arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments;
        auto error = nlohmann::json::parse(run.err, nullptr, false);
        EXPECT_EQ(error["exitCode"], 2) << arguments << run.err;
        EXPECT_TRUE(error["error"].is_string()) << arguments << run.err;
    }
    EXPECT_EQ(Tool("--help").exitCode, 0);
}

// Phones join every few milliseconds, before and after the command is done:
// the tool stops the hotspot and lets the library's notification threads end
// before logging shuts down, so it exits cleanly (and, under the
// sanitizers, touches nothing freed).
TEST(Tool, HotspotCreateExitsCleanlyWhilePhonesKeepJoining) {
    nlohmann::json phones = nlohmann::json::array();
    for (int i = 0; i < 200; ++i) {
        char id[40];
        std::snprintf(id, sizeof(id), "WiFiDirect#aa:bb:cc:00:%02x:%02x", i / 256, i % 256);
        phones.push_back({{"id", id},
                          {"address", "192.168.137." + std::to_string(10 + i % 200)},
                          {"joinAfterMs", 20 + 5 * i},
                          {"leaveAfterMs", 7}});
    }
    nlohmann::json world = {{"wifiCard", {{"maker", "intel"}}},
                            {"wifiDirect", {{"phones", phones}}}};
    std::string path = WriteFile("phones-keep-joining.json", world.dump());
    for (int run = 0; run < 8; ++run) {
        ToolRun created = Tool("-v --world " + path + " hotspot create");
        ASSERT_EQ(created.exitCode, 0)
            << created.err.substr(created.err.size() > 3000 ? created.err.size() - 3000 : 0);
    }
}

TEST(Tool, LogLinesGoWhereTheLogOptionsSay) {
    std::string logFile = TempPath("tool.log");
    std::remove(logFile.c_str());
    ToolRun run = Tool("--log-file " + logFile + " log --wide --error \"wide text\"");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    std::string content = ReadFile(logFile);
    EXPECT_NE(content.find("ERROR wide text(LogErrorFun)"), std::string::npos) << content;

    std::string config = ConsoleLogConfig("ERROR", false);
    run = Tool("--log-config " + config + " log \"quiet line\"");
    EXPECT_EQ(run.out.find("quiet line"), std::string::npos) << run.out;
    run = Tool("--log-config " + config + " log --error \"loud line\"");
    EXPECT_NE(run.out.find("[ERROR] loud line(LogErrorFun)"), std::string::npos) << run.out;

    // Without a log option only the answer shows; -v shows the library's
    // lines, on stderr and whole in UTF-8.
    run = Tool("log \"h\u00e9llo\"");
    EXPECT_EQ(run.err, "");
    run = Tool("-v log --wide \"h\u00e9llo\"");
    EXPECT_NE(run.err.find("WARN  h\u00e9llo(LogWarnFun)"), std::string::npos) << run.err;
}

TEST(Tool, AManifestWrittenByTheToolVouchesForTheFolder) {
    std::string root = TempPath("install");
    std::string command = "rm -rf " + root + " && mkdir -p " + root + "/plugins " + root +
                          "/config && printf abc > " + root + "/plugins/a.dll && printf x > " +
                          root + "/readme.txt";
    ASSERT_EQ(std::system(command.c_str()), 0);
    ToolRun run =
        Tool("integrity manifest " + root + " -o " + root + "/config/CheckFileIntergrity.xml");
    ASSERT_EQ(run.exitCode, 0) << run.out;
    EXPECT_NE(run.out.find("2 files listed"), std::string::npos) << run.out;
    std::string world = WriteFile(
        "installed.json",
        R"({"files": {"mainModuleDirectory": "C:\\Suite\\", "hostFolders": {"C:\\Suite\\": ")" +
            root + R"("}}})");
    run = Tool("--world " + world + " integrity check '\\plugins\\a.dll'");
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(run.out, "\\plugins\\a.dll: true\n");
    run = Tool("--world " + world + " integrity check '\\Readme.txt'");
    EXPECT_EQ(run.exitCode, 1) << run.out;
}

// The tool's capture of the vendor HCI traffic, as Wireshark reads it: the
// multi-advertising command's sub-opcodes, the set-parameters and enable
// commands decoded field by field by the Broadcom vendor dissector, and the
// data commands by their raw bytes (the dissector does not expect their
// length byte).
constexpr char kMulti[] = "bthci_vendor.broadcom.le.multi_advertising.";

// tshark's output for `arguments` on the capture, or nothing when it failed.
std::string Tshark(const std::string& capture, const std::string& arguments) {
    std::string out = TempPath("tshark.out");
    int status =
        std::system(("tshark -r " + capture + " -d bthci_cmd.vendor,bthci_vendor.broadcom " +
                     arguments + " >" + out + " 2>/dev/null")
                        .c_str());
    return status == 0 ? ReadFile(out) : "";
}

struct CaptureCase {
    const char* advertise;
    // One line per command as the dissector decodes it: sub-opcode, minimum
    // and maximum interval, advertising type, channel map, instance, enable.
    std::vector<const char*> decoded;
    // A data command's parameters in hex: sub-opcode, length, data, instance.
    std::vector<std::string> raw;
};

const std::string kPad(2 * 24, '0');

TEST(BleCaptureTool, TsharkDecodesEachVendorCommand) {
    if (std::system("command -v tshark >/dev/null 2>&1") != 0) {
        GTEST_SKIP() << "tshark is missing: scripts/bootstrap.sh linux installs it";
    }
    const CaptureCase cases[] = {
        {"general 0e0102",
         {"0x05\t\t\t\t\t1\t0x00", "0x01\t80\t80\t0x03\t0x07\t1\t", "0x05\t\t\t\t\t1\t0x01"},
         {"020706ff7d020e0102" + kPad + "01"}},
        {"beamlet 0f0102 0f0304",
         {"0x01\t32\t32\t0x02\t0x07\t4\t", "0x05\t\t\t\t\t4\t0x01"},
         {"02070616eefd0f0102" + kPad + "04", "030706ff7d020f0304" + kPad + "04"}},
    };
    for (const auto& c : cases) {
        std::string capture = TempPath("ble.btsnoop");
        ToolRun run = Tool("--world " + WorldPath("ble-phone-advertising") + " ble advertise " +
                           c.advertise + " --seconds 1 --capture " + capture);
        ASSERT_EQ(run.exitCode, 0) << run.out << run.err;
        std::string fields =
            Tshark(capture, std::string("-Y hci_h4.type==1 -T fields -e ") + kMulti +
                                "subcode -e " + kMulti + "min_interval -e " + kMulti +
                                "max_interval -e " + kMulti + "type -e " + kMulti +
                                "channel_map -e " + kMulti + "instance_id -e " + kMulti + "enable");
        ASSERT_FALSE(fields.empty()) << c.advertise << ": tshark could not read the capture";
        for (const char* line : c.decoded) {
            EXPECT_NE(fields.find(std::string(line) + "\n"), std::string::npos)
                << c.advertise << " lacks " << line << " in:\n"
                << fields;
        }
        std::string json = Tshark(capture, "-T json -x");
        for (const auto& bytes : c.raw) {
            EXPECT_NE(json.find('"' + bytes + '"'), std::string::npos)
                << c.advertise << " lacks the data command " << bytes;
        }
    }
}

}  // namespace
}  // namespace connectkit::test
