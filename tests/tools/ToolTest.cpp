// Runs the connectkit tool as a user would and checks its output and exit
// codes.

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "ToolRun.h"

namespace connectkit::test {
namespace {

std::string WriteWorld(const std::string& name, const std::string& text) {
    std::string path = TempPath(name);
    std::ofstream(path) << text;
    return path;
}

TEST(Tool, AWorldWithAnUnknownFieldIsAUsageErrorNamingFileAndField) {
    std::string path = WriteWorld("typo.json", R"({"clock": {"localTme": "x"}})");
    ToolRun run = Tool("--world " + path + " report time");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find(path + ": clock.localTme: unknown field"), std::string::npos) << run.err;

    path = WriteWorld("broken.json", "{\n\"clock\": }");
    run = Tool("--world " + path + " version");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("line 2, column 10: syntax error"), std::string::npos) << run.err;
}

TEST(Tool, ReportTimeComesFromTheWorldsClock) {
    std::string path =
        WriteWorld("time.json", R"({"clock": {"localTime": "2024-03-05T09:05:03.007"}})");
    ToolRun run = Tool("--json --world " + path + " report time");
    ASSERT_EQ(run.exitCode, 0) << run.out;
    auto result = nlohmann::json::parse(run.out);
    EXPECT_EQ(result["systemTime"], "20240305-090503-007");
    EXPECT_EQ(result["currentMilliSecond"], 1709629503007ull);
}

TEST(Tool, PostingDeliversOnlyTheFirstCode) {
    ToolRun run = Tool("--json errors post 0x10000001 268435456");
    ASSERT_EQ(run.exitCode, 0) << run.out;
    auto result = nlohmann::json::parse(run.out);
    ASSERT_EQ(result["posted"].size(), 2u);
    EXPECT_EQ(result["posted"][0]["text"], "go already exist");
    EXPECT_EQ(result["posted"][0]["delivered"], true);
    EXPECT_EQ(result["posted"][1]["text"], "apchannel go abort");
    EXPECT_EQ(result["posted"][1]["delivered"], false);
}

// A command line the tool rejects is a usage error, and with --json an error
// object a script can read.
TEST(Tool, BadArgumentsAreUsageErrors) {
    for (const char* arguments :
         {"errors post banana", "errors post 0x1FFFFFFFF", "--log-level loud version",
          "--log-config /nonexistent.properties version", "frobnicate", "errors post", "--bad"}) {
        EXPECT_EQ(Tool(arguments).exitCode, 2) << arguments;
        ToolRun run = Tool(std::string("--json ") + arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments;
        auto error = nlohmann::json::parse(run.err, nullptr, false);
        EXPECT_EQ(error["exitCode"], 2) << arguments << run.err;
        EXPECT_TRUE(error["error"].is_string()) << arguments << run.err;
    }
    EXPECT_EQ(Tool("--help").exitCode, 0);
}

// Log lines may go to stderr through either of the streams (ours, or
// log4cplus's own wide console appender from a configuration file); the
// tool's error must reach the user after them either way.
TEST(Tool, ErrorsReachStderrWithLoggingOn) {
    std::string config = WriteWorld("stderr.properties",
                                    "log4cplus.rootLogger=WARN, err\n"
                                    "log4cplus.appender.err=log4cplus::ConsoleAppender\n"
                                    "log4cplus.appender.err.logToStdErr=true\n"
                                    "log4cplus.appender.err.layout=log4cplus::PatternLayout\n"
                                    "log4cplus.appender.err.layout.ConversionPattern=%m%n\n");
    std::string world = WriteWorld("typo-logged.json", R"({"clock": {"localTme": "x"}})");
    for (const auto& logging :
         std::vector<std::string>{"-v", "--log-level error", "--log-config " + config}) {
        ToolRun run = Tool(logging + " --world " + world + " version");
        EXPECT_EQ(run.exitCode, 2) << logging;
        EXPECT_NE(run.err.find("world rejected"), std::string::npos) << logging << run.err;
        EXPECT_NE(run.err.find("connectkit: " + world + ": clock.localTme: unknown field"),
                  std::string::npos)
            << logging << run.err;

        run = Tool("--json " + logging + " --world " + world + " version");
        auto error = nlohmann::json::parse(run.err.substr(run.err.rfind('{')), nullptr, false);
        EXPECT_EQ(error["exitCode"], 2) << logging << run.err;
        EXPECT_EQ(error["error"], world + ": clock.localTme: unknown field") << logging;
    }
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
    std::string path = WriteWorld("phones-keep-joining.json", world.dump());
    for (int run = 0; run < 8; ++run) {
        ToolRun created = Tool("-v --world " + path + " hotspot create");
        ASSERT_EQ(created.exitCode, 0)
            << created.err.substr(created.err.size() > 3000 ? created.err.size() - 3000 : 0);
        EXPECT_NE(created.out.find("result      0"), std::string::npos) << created.out;
    }
}

std::string World(const std::string& name) {
    return std::string(CONNECTKIT_WORLDS_DIR) + "/" + name + ".json";
}

TEST(Tool, HotspotCreatePrintsWhatThePhoneNeedsOrWhyNot) {
    ToolRun run = Tool("--json --world " + World("hotspot-ok") + " hotspot create");
    ASSERT_EQ(run.exitCode, 0) << run.out;
    auto result = nlohmann::json::parse(run.out);
    EXPECT_EQ(result["result"], 0);
    EXPECT_EQ(result["mac"], "3a:7c:76:12:9e:51");
    EXPECT_EQ(result["ip"], "192.168.137.1");
    EXPECT_EQ(result["ssid"].get<std::string>().substr(0, 7), "DIRECT-");
    EXPECT_EQ(result["passphrase"].get<std::string>().size(), 8u);
    EXPECT_GT(result["channel"].get<int>(), 0);

    run = Tool("--world " + World("hotspot-foreign-go") + " hotspot create");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.out.find("-94 (a group owner started by someone else"), std::string::npos)
        << run.out;
}

TEST(Tool, HotspotWatchShowsPhonesAsTheyComeAndGo) {
    ToolRun run =
        Tool("--json --world " + World("phones-join-and-leave") + " hotspot watch --seconds 8");
    ASSERT_EQ(run.exitCode, 0) << run.out;
    int connected = 0;
    int disconnected = 0;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);) {
        auto event = nlohmann::json::parse(line);
        if (event.value("event", "") == "phone") {
            (event["status"] == "connected" ? connected : disconnected) += 1;
        }
    }
    EXPECT_EQ(connected, 3);
    // One phone left without the platform saying so; one stays.
    EXPECT_EQ(disconnected, 1);
}

TEST(Tool, LogLinesGoWhereTheLogOptionsSay) {
    std::string logFile = TempPath("tool.log");
    std::remove(logFile.c_str());
    ToolRun run = Tool("--log-file " + logFile + " log --wide --error \"wide text\"");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    std::string content = ReadFile(logFile);
    EXPECT_NE(content.find("ERROR wide text(LogErrorFun)"), std::string::npos) << content;

    std::string config = WriteWorld("log.properties",
                                    "log4cplus.rootLogger=ERROR, out\n"
                                    "log4cplus.appender.out=log4cplus::ConsoleAppender\n"
                                    "log4cplus.appender.out.layout=log4cplus::PatternLayout\n"
                                    "log4cplus.appender.out.layout.ConversionPattern=[%p] %m%n\n");
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

nlohmann::json Channels(const std::string& world, const std::string& arguments) {
    ToolRun run = Tool("--json --world " + std::string(CONNECTKIT_WORLDS_DIR) + "/" + world +
                       " channels " + arguments);
    EXPECT_EQ(run.exitCode, 0) << run.out;
    return nlohmann::json::parse(run.out, nullptr, false);
}

// The planner's rules are tested on their own; here, that the tool hands
// them the phone's lists, its current channel and the AP flag.
TEST(Tool, ChannelsHandsThePhonesSideToThePlanner) {
    auto de = Channels("intel-de.json", "--phone 36,149 --phone24 1,6,11");
    EXPECT_EQ(de["pc5"], "149,153,157,161,165,");
    EXPECT_EQ(de["plan"]["channel"], 149);
    auto us = Channels("intel-proset.json", "--phone 36,149 --phone-current 149 --ap-flag");
    EXPECT_EQ(us["plan"]["channel"], 149);
    EXPECT_EQ(us["plan"]["apFlag"], true);
}

TEST(Tool, ChannelsPrintsThePlanAsTextAndFailsWhenThePcOffersNothing) {
    std::string world = std::string(CONNECTKIT_WORLDS_DIR) + "/intel-de.json";
    ToolRun run = Tool("--world " + world + " channels --phone24 6");
    ASSERT_EQ(run.exitCode, 0) << run.out;
    EXPECT_NE(run.out.find("plan              2.4GHz channel 6\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("reason            2.4 GHz channel both sides support"),
              std::string::npos)
        << run.out;

    std::string empty =
        WriteWorld("no-channels.json", R"({"wifiCard": {"maker": "intel", "channels": []}})");
    run = Tool("--json --world " + empty + " channels --phone 36");
    EXPECT_EQ(run.exitCode, 1) << run.out;
    auto result = nlohmann::json::parse(run.out, nullptr, false);
    EXPECT_EQ(result["plan"]["band"], "none");
    EXPECT_EQ(result["plan"]["channel"], 0);
}

// Each radio world gives what its description says.
TEST(Tool, RadioWorldsShowWhatTheirDescriptionsSay) {
    struct Case {
        const char* world;
        const char* command;
        int exitCode;
        const char* expected;
    };
    const Case cases[] = {
        {"bluetooth-on", "radios", 0, "bluetooth         on        Bluetooth"},
        {"bluetooth-off", "bluetooth on", 0, "ms] bluetooth on"},
        {"bluetooth-hard-off", "bluetooth on", 0, "result  0 (switch requested)"},
        {"bluetooth-none", "bluetooth on", 1, "result  3 (failed)"},
        {"bluetooth-two-controllers", "bluetooth address", 0, "00:E0:4C:12:34:56"},
        {"radios-slow-listing", "radios", 0, "(asked in 4500 ms)"},
        {"wifi-radio-off", "wifi radio on", 0, "[+   250 ms] wifi on"},
        {"wifi-radio-disabled", "wifi radio on", 1, "result  2 (disabled"},
    };
    for (const auto& [world, command, exitCode, expected] : cases) {
        ToolRun run = Tool(std::string("--log-level off --world ") + CONNECTKIT_WORLDS_DIR + "/" +
                           world + ".json " + command);
        EXPECT_EQ(run.exitCode, exitCode) << world << ": " << run.out << run.err;
        EXPECT_NE(run.out.find(expected), std::string::npos) << world << ": " << run.out;
    }
    ToolRun run = Tool(std::string("--json --log-level off --world ") + CONNECTKIT_WORLDS_DIR +
                       "/bluetooth-on.json bluetooth address");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(nlohmann::json::parse(run.out)["name"], "LAPTOP-SIM");
}

TEST(Tool, IntegrityCheckAgainstTheExampleWorlds) {
    struct Row {
        const char* world;
        bool intact;
        const char* debuggerLine;
    };
    for (const Row& row :
         {Row{"integrity-ok.json", true, nullptr},
          Row{"integrity-tampered.json", false, "Sha256 Check faild \\plugins"},
          Row{"integrity-no-manifest.json", false, "CheckFileIntergrity.xml is not exist "}}) {
        ToolRun run = Tool(std::string("--log-level off --json --world ") + CONNECTKIT_WORLDS_DIR +
                           "/" + row.world + " integrity check '\\plugins\\cast.dll'");
        EXPECT_EQ(run.exitCode, row.intact ? 0 : 1) << row.world << run.out;
        auto result = nlohmann::json::parse(run.out);
        EXPECT_EQ(result["intact"], row.intact);
        ASSERT_EQ(result["debugOutput"].size(), row.debuggerLine ? 1u : 0u) << run.out;
        if (row.debuggerLine) {
            EXPECT_TRUE(result["debugOutput"][0].get<std::string>().starts_with(row.debuggerLine));
        }
    }
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
    std::string world = WriteWorld(
        "installed.json",
        R"({"files": {"mainModuleDirectory": "C:\\Suite\\", "hostFolders": {"C:\\Suite\\": ")" +
            root + R"("}}})");
    run = Tool("--log-level off --world " + world + " integrity check '\\plugins\\a.dll'");
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(run.out, "\\plugins\\a.dll: true\n");
    run = Tool("--log-level off --world " + world + " integrity check '\\Readme.txt'");
    EXPECT_EQ(run.exitCode, 1) << run.out;
}

}  // namespace
}  // namespace connectkit::test
