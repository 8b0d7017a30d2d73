#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <utility>

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

// A mistake is named by the path of the field that holds it, a syntax error
// by its line and column.
TEST(Scenario, MistakesAreNamedByTheirPathOrPlace) {
    EXPECT_EQ(Rejected("{\n  \"clock\": {,}\n}").ToString(),
              "world.json: line 2, column 13: syntax error");
    const std::pair<std::string, const char*> mistakes[] = {
        {R"({"registy": []})", "registy"},
        {R"({"registry": [{"key": "HKLM\\A", "values": {"V": {"word": 1}}}]})",
         "registry[0].values.V.word"},
        {R"({"registry": [{"key": "HKCR\\A"}]})", "registry[0].key"},
        {R"({"clock": {"utcOffsetMinutes": "60"}})", "clock.utcOffsetMinutes"},
        {R"({"clock": {"utcOffsetMinutes": 100000}})", "clock.utcOffsetMinutes"},
        {R"({"clock": {"localTime": "2024-13-01T00:00:00"}})", "clock.localTime"},
        {R"({"clock": {"localTime": "2024-02-30T00:00:00"}})", "clock.localTime"},
        {R"({"files": {"present": ["a", 3]}})", "files.present[1]"},
        {R"({"programs": [{"exitCode": 1}]})", "programs[0].name"},
        {R"({"faults": [{"call": "registry.read", "action": "explode"}]})", "faults[0].action"},
        {R"({"registry": [{"key": "HKLM\\A", "values": {"V": {"binary": "0g"}}}]})",
         "registry[0].values.V.binary"},
        {R"({"wifiCard": {"maker": "broadcom"}})", "wifiCard.maker"},
        {R"({"wifiCard": {"maker": "intel", "channels": [1, 300]}})", "wifiCard.channels[1]"},
        {R"({"wifiCard": {"maker": "intel", "intel": {"discovery": "pci"}}})",
         "wifiCard.intel.discovery"},
        {R"({"wifiCard": {"maker": "intel", "intel": {"adapters": [{"inUse": 1}]}}})",
         "wifiCard.intel.adapters[0].inUse"},
        {"[]", "(document)"},
        {"1e400", "(document)"},
        {R"({"": {}})", "\"\""},
        {R"({"wifiDirect": {"publisher": {"startOutcomes": ["started", "ok"]}}})",
         "wifiDirect.publisher.startOutcomes[1]"},
        {R"({"wifiDirect": {"publisher": {"abortError": "busy"}}})",
         "wifiDirect.publisher.abortError"},
        {R"({"wifiDirect": {"publisher": {"stopOutcome": "hung"}}})",
         "wifiDirect.publisher.stopOutcome"},
        {R"({"wifiDirect": {"virtualAdapter": {"ip": "192.168.137.256"}}})",
         "wifiDirect.virtualAdapter.ip"},
        {R"({"wifiDirect": {"phones": [{}, {"adress": "1.2.3.4"}]}})",
         "wifiDirect.phones[1].adress"},
        {R"({"wifiDirect": {"phones": {}}})", "wifiDirect.phones"},
        {R"({"faults": [{"call": "wifidirect.strat"}]})", "faults[0].call"},
        {R"({"bluetooth": {"controllers": [{}, {"address": "A1B2C3"}]}})",
         "bluetooth.controllers[1].address"},
        {R"({"radios": {"listing": {"outcomes": ["completed", "lost"]}}})",
         "radios.listing.outcomes[1]"},
        {R"({"ble": {"phones": [{"advertisement": [{"data": "16"}]}]}})",
         "ble.phones[0].advertisement[0].type"},
        {R"({"ble": {"controller": {"faults": [{"kind": "late"}]}}})",
         "ble.controller.faults[0].kind"},
        {R"({"ble": {"realtekLibrary": {"busy": {"RtkOpen": 1}}}})",
         "ble.realtekLibrary.busy.RtkOpen"},
    };
    for (const auto& [text, field] : mistakes) {
        EXPECT_EQ(Rejected(text).field, field) << text;
    }
    EXPECT_EQ(Rejected(R"({"registry": [{"key": "HKLM\\A", "values": {"V": {}}}]})").message,
              "expected one of string, dword, binary");
    EXPECT_EQ(Rejected(R"({"faults": [{"call": "registry.raed"}]})").message,
              "unknown fault point 'registry.raed'");
    // Numbers beyond a double's range are refused by the parser itself.
    auto overflow = Rejected(R"({"wifiCard": {"maker": "intel", "channels": [1, 1e400]}})");
    EXPECT_EQ(overflow.ToString(),
              "world.json: wifiCard.channels[1]: number overflow parsing '1e400'");
    for (const char* mac :
         {"3a:7c:76:12:9e", "3a:7c:76-12:9e:51", "3a:7c:76:12:9e:5g", "+a:7c:76:12:9e:51"}) {
        std::string text =
            std::string(R"({"wifiDirect": {"virtualAdapter": {"mac": ")") + mac + R"("}}})";
        EXPECT_EQ(Rejected(text).field, "wifiDirect.virtualAdapter.mac") << mac;
    }
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
