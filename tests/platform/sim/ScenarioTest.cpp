#include <gtest/gtest.h>

#include <array>

#include "platform/sim/core/Scenario.h"

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

TEST(Scenario, AMissingFileIsReported) {
    sim::Scenario scenario;
    sim::ScenarioError error;
    EXPECT_FALSE(sim::LoadScenarioFile("/nonexistent/world.json", scenario, error));
    EXPECT_EQ(error.ToString(), "/nonexistent/world.json: (file): cannot be opened");
}

}  // namespace
}  // namespace connectkit::test
