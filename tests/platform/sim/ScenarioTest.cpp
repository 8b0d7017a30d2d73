#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>

#include "platform/sim/core/Scenario.h"

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace connectkit::test {
namespace {

sim::ScenarioError Rejected(const std::string& text) {
    sim::Scenario scenario;
    sim::ScenarioError error;
    EXPECT_FALSE(sim::ParseScenario(text, "world.json", scenario, error)) << text;
    return error;
}

TEST(Scenario, SyntaxErrorsNameFileLineAndColumn) {
    auto error = Rejected("{\n  \"clock\": {,}\n}");
    EXPECT_EQ(error.file, "world.json");
    EXPECT_EQ(error.field, "line 2, column 13");
    EXPECT_EQ(error.ToString(), "world.json: line 2, column 13: syntax error");
}

TEST(Scenario, UnknownAndMistypedFieldsAreNamedByTheirPath) {
    EXPECT_EQ(Rejected(R"({"registy": []})").field, "registy");
    EXPECT_EQ(Rejected(R"({"registry": [{"key": "HKLM\\A", "values": {"V": {"word": 1}}}]})").field,
              "registry[0].values.V.word");
    EXPECT_EQ(Rejected(R"({"registry": [{"key": "HKCR\\A"}]})").field, "registry[0].key");
    EXPECT_EQ(Rejected(R"({"registry": [{"key": "HKLM\\A", "values": {"V": {}}}]})").message,
              "expected one of string, dword, binary");
    EXPECT_EQ(Rejected(R"({"clock": {"utcOffsetMinutes": "60"}})").field, "clock.utcOffsetMinutes");
    EXPECT_EQ(Rejected(R"({"clock": {"utcOffsetMinutes": 100000}})").field,
              "clock.utcOffsetMinutes");
    EXPECT_EQ(Rejected(R"({"clock": {"localTime": "2024-13-01T00:00:00"}})").field,
              "clock.localTime");
    EXPECT_EQ(Rejected(R"({"files": {"present": ["a", 3]}})").field, "files.present[1]");
    EXPECT_EQ(Rejected(R"({"programs": [{"exitCode": 1}]})").field, "programs[0].name");
    EXPECT_EQ(Rejected(R"({"programs": [{"name": "x", "durationMs": -1}]})").field,
              "programs[0].durationMs");
    EXPECT_EQ(Rejected(R"({"faults": [{"call": "registry.raed"}]})").message,
              "unknown fault point 'registry.raed'");
    EXPECT_EQ(Rejected(R"({"faults": [{"call": "registry.read", "action": "explode"}]})").field,
              "faults[0].action");
    EXPECT_EQ(
        Rejected(R"({"registry": [{"key": "HKLM\\A", "values": {"V": {"binary": "0g"}}}]})").field,
        "registry[0].values.V.binary");
    EXPECT_EQ(Rejected(R"({"wifiCard": {"maker": "broadcom"}})").field, "wifiCard.maker");
    EXPECT_EQ(Rejected(R"({"wifiCard": {"maker": "intel", "channels": [1, 300]}})").field,
              "wifiCard.channels[1]");
    EXPECT_EQ(Rejected(R"({"wifiCard": {"maker": "intel", "intel": {"discovery": "pci"}}})").field,
              "wifiCard.intel.discovery");
    EXPECT_EQ(Rejected(R"({"wifiCard": {"maker": "intel", "intel": {"adapters": [{"inUse": 1}]}}})")
                  .field,
              "wifiCard.intel.adapters[0].inUse");
    EXPECT_EQ(Rejected("[]").field, "(document)");
    // Numbers beyond a double's range are refused by the parser itself.
    auto overflow = Rejected(R"({"wifiCard": {"maker": "intel", "channels": [1, 1e400]}})");
    EXPECT_EQ(overflow.ToString(),
              "world.json: wifiCard.channels[1]: number overflow parsing '1e400'");
    EXPECT_EQ(Rejected(R"({"clock": {"utcOffsetMinutes": -1e400}})").field,
              "clock.utcOffsetMinutes");
    EXPECT_EQ(Rejected("1e400").field, "(document)");
    EXPECT_EQ(Rejected(R"({"": {}})").field, "\"\"");
}

// The fields the example worlds (run end to end by the hotspot scenario
// tests) leave out.
TEST(Scenario, AWiFiDirectWorldParses) {
    const char* text = R"({"wifiDirect": {
      "runtimeAvailable": false, "publisher": {"stopOutcome": "stuck"},
      "virtualAdapter": {"mac": "02-00-5E-10-AB-ff", "restartLatencyMs": 0},
      "phones": [{"fromIdFails": true}]
    }})";
    sim::Scenario scenario;
    sim::ScenarioError error;
    ASSERT_TRUE(sim::ParseScenario(text, "world.json", scenario, error)) << error.ToString();
    const auto& config = scenario.wifiDirect;
    EXPECT_FALSE(config.runtimeAvailable);
    EXPECT_EQ(config.publisher.stopOutcome,
              sim::SimWiFiDirectConfig::Publisher::StopOutcome::Stuck);
    EXPECT_EQ(config.virtualAdapter.mac,
              (std::array<uint8_t, 6>{0x02, 0x00, 0x5E, 0x10, 0xAB, 0xFF}));
    EXPECT_EQ(config.virtualAdapter.restartLatencyMs, 0u);
    ASSERT_EQ(config.phones.size(), 1u);
    EXPECT_FALSE(config.phones[0].leaveAfterMs);
    EXPECT_TRUE(config.phones[0].fromIdFails);
}

TEST(Scenario, WiFiDirectMistakesAreNamedByTheirPath) {
    EXPECT_EQ(Rejected(R"({"wifiDirect": {"publisher": {"startLatency": 1}}})").field,
              "wifiDirect.publisher.startLatency");
    EXPECT_EQ(
        Rejected(R"({"wifiDirect": {"publisher": {"startOutcomes": ["started", "ok"]}}})").field,
        "wifiDirect.publisher.startOutcomes[1]");
    EXPECT_EQ(Rejected(R"({"wifiDirect": {"publisher": {"abortError": "busy"}}})").field,
              "wifiDirect.publisher.abortError");
    EXPECT_EQ(Rejected(R"({"wifiDirect": {"publisher": {"stopOutcome": "hung"}}})").field,
              "wifiDirect.publisher.stopOutcome");
    for (const char* mac :
         {"3a:7c:76:12:9e", "3a:7c:76-12:9e:51", "3a:7c:76:12:9e:5g", "+a:7c:76:12:9e:51"}) {
        std::string text =
            std::string(R"({"wifiDirect": {"virtualAdapter": {"mac": ")") + mac + R"("}}})";
        EXPECT_EQ(Rejected(text).field, "wifiDirect.virtualAdapter.mac") << mac;
    }
    EXPECT_EQ(Rejected(R"({"wifiDirect": {"virtualAdapter": {"macDelayMs": "never"}}})").field,
              "wifiDirect.virtualAdapter.macDelayMs");
    EXPECT_EQ(Rejected(R"({"wifiDirect": {"virtualAdapter": {"index": 0}}})").field,
              "wifiDirect.virtualAdapter.index");
    EXPECT_EQ(Rejected(R"({"wifiDirect": {"virtualAdapter": {"ip": "192.168.137.256"}}})").field,
              "wifiDirect.virtualAdapter.ip");
    EXPECT_EQ(Rejected(R"({"wifiDirect": {"foreignGroupOwner": {"running": 1}}})").field,
              "wifiDirect.foreignGroupOwner.running");
    EXPECT_EQ(Rejected(R"({"wifiDirect": {"phones": [{}, {"adress": "1.2.3.4"}]}})").field,
              "wifiDirect.phones[1].adress");
    EXPECT_EQ(Rejected(R"({"wifiDirect": {"phones": [{"address": "1.2.3"}]}})").field,
              "wifiDirect.phones[0].address");
    EXPECT_EQ(Rejected(R"({"wifiDirect": {"phones": {}}})").field, "wifiDirect.phones");
    EXPECT_EQ(Rejected(R"({"faults": [{"call": "wifidirect.strat"}]})").field, "faults[0].call");
}

#ifndef _WIN32
// What --world may name by mistake: each is refused with its reason, before
// anything reads without bound or waits for a writer.
TEST(Scenario, FilesThatHoldNoScenarioSayWhy) {
    auto folder = std::filesystem::temp_directory_path() /
                  ("connectkit-worlds-" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    auto fifo = (folder / "pipe.json").string();
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    auto large = folder / "large.json";
    std::ofstream(large).put(' ');
    std::filesystem::resize_file(large, (4 << 20) + 1);

    const std::pair<std::string, std::string> cases[] = {
        {"/nonexistent/world.json", "cannot be opened"},
        {folder.string(), "is a directory, not a scenario file"},
        {"/dev/zero", "is not a regular file (a device or a pipe holds no scenario)"},
        {fifo, "is not a regular file (a device or a pipe holds no scenario)"},
        {large.string(), "is larger than 4 MiB; a scenario is a small JSON file"},
    };
    for (const auto& [path, message] : cases) {
        sim::Scenario scenario;
        sim::ScenarioError error;
        EXPECT_FALSE(sim::LoadScenarioFile(path, scenario, error)) << path;
        EXPECT_EQ(error.ToString(), path + ": (file): " + message);
    }
    std::filesystem::remove_all(folder);
}
#endif

}  // namespace
}  // namespace connectkit::test
