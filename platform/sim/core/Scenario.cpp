#include "platform/sim/core/Scenario.h"

#include <climits>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>

#include "platform/sim/core/ScenarioFields.h"
#include "platform/sim/core/VirtualClock.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim {
namespace {

using nlohmann::json;
using namespace parse;

void ParseClock(const Fields& clock, Scenario& scenario) {
    clock.Only({"localTime", "utcOffsetMinutes"});
    if (clock.Find("localTime")) {
        platform::LocalTime time;
        if (!ParseLocalTime(clock.Text("localTime"), time)) {
            throw FieldError{clock.Path("localTime"),
                             "expected a time like 2024-03-05T09:05:03.007"};
        }
        scenario.localTime = time;
    }
    scenario.utcOffsetMinutes =
        static_cast<int>(clock.Integer("utcOffsetMinutes", 0, -14 * 60, 14 * 60));
}

bool HexToBytes(const std::string& hex, std::vector<uint8_t>& bytes) {
    if (hex.size() % 2 != 0) {
        return false;
    }
    auto nibble = [](char c) -> int {
        if (c >= '0' && c <= '9')
            return c - '0';
        if (c >= 'a' && c <= 'f')
            return c - 'a' + 10;
        if (c >= 'A' && c <= 'F')
            return c - 'A' + 10;
        return -1;
    };
    for (size_t i = 0; i < hex.size(); i += 2) {
        int high = nibble(hex[i]);
        int low = nibble(hex[i + 1]);
        if (high < 0 || low < 0) {
            return false;
        }
        bytes.push_back(static_cast<uint8_t>(high * 16 + low));
    }
    return true;
}

void ParseRegistryKey(const Fields& entry, Scenario& scenario) {
    entry.Only({"key", "values"});
    std::wstring key = DE::UTF8ToUnicode(entry.Text("key"));
    platform::RegistryHive hive;
    auto split = key.find(L'\\');
    std::wstring root = key.substr(0, split);
    if (root == L"HKLM" || root == L"HKEY_LOCAL_MACHINE") {
        hive = platform::RegistryHive::LocalMachine;
    } else if (root == L"HKCU" || root == L"HKEY_CURRENT_USER") {
        hive = platform::RegistryHive::CurrentUser;
    } else {
        throw FieldError{entry.Path("key"), "expected a key below HKLM or HKCU"};
    }
    std::wstring below = split == std::wstring::npos ? L"" : key.substr(split + 1);
    const json* values = entry.Find("values");
    if (!values) {
        return;
    }
    Fields valueFields(*values, entry.Path("values"));
    for (const auto& item : values->items()) {
        Fields value(item.value(), valueFields.Path(item.key().c_str()));
        value.Only({"string", "dword", "binary"});
        Scenario::Value parsed{hive, below, DE::UTF8ToUnicode(item.key()), {}};
        if (value.Find("string")) {
            parsed.data =
                platform::RegistryData::FromString(DE::UTF8ToUnicode(value.Text("string")));
        } else if (value.Find("dword")) {
            parsed.data = platform::RegistryData::FromDword(value.Unsigned("dword", 0));
        } else if (value.Find("binary")) {
            std::vector<uint8_t> bytes;
            if (!HexToBytes(value.Text("binary"), bytes)) {
                throw FieldError{value.Path("binary"), "expected pairs of hex digits"};
            }
            parsed.data = platform::RegistryData::FromBinary(std::move(bytes));
        } else {
            throw FieldError{valueFields.Path(item.key().c_str()),
                             "expected one of string, dword, binary"};
        }
        scenario.registry.push_back(std::move(parsed));
    }
}

void ParseFiles(const Fields& files, Scenario& scenario) {
    files.Only({"mainModuleDirectory", "present", "contents", "hostFolders"});
    if (files.Find("mainModuleDirectory")) {
        scenario.mainModuleDirectory = DE::UTF8ToUnicode(files.Text("mainModuleDirectory"));
    }
    if (const json* present = files.Find("present")) {
        const json& list = Array(*present, files.Path("present"));
        for (size_t i = 0; i < list.size(); ++i) {
            if (!list[i].is_string()) {
                throw FieldError{Indexed(files.Path("present"), i), "expected a string"};
            }
            scenario.files.push_back(DE::UTF8ToUnicode(list[i].get<std::string>()));
        }
    }
    if (const json* contents = files.Find("contents")) {
        Fields fields(*contents, files.Path("contents"));
        for (const auto& item : contents->items()) {
            scenario.fileContents[DE::UTF8ToUnicode(item.key())] = fields.Text(item.key().c_str());
        }
    }
    if (const json* folders = files.Find("hostFolders")) {
        Fields fields(*folders, files.Path("hostFolders"));
        for (const auto& item : folders->items()) {
            scenario.hostFolders[DE::UTF8ToUnicode(item.key())] = fields.Text(item.key().c_str());
        }
    }
}

void ParseProgram(const Fields& entry, Scenario& scenario) {
    entry.Only({"name", "exitCode", "durationMs"});
    std::string name = entry.Text("name");
    if (name.empty()) {
        throw FieldError{entry.Path("name"), "a program needs a name"};
    }
    scenario.programs.push_back(Scenario::Program{
        DE::UTF8ToUnicode(name), entry.Unsigned("exitCode", 0), entry.Unsigned("durationMs", 0)});
}

void ParseFault(const Fields& entry, Scenario& scenario) {
    entry.Only({"call", "action", "after", "times", "error", "delayMs"});
    FaultRule rule;
    rule.call = entry.Text("call");
    if (!FaultInjector::IsKnown(rule.call)) {
        throw FieldError{entry.Path("call"), "unknown fault point '" + rule.call + "'"};
    }
    auto action = FaultInjector::ParseAction(entry.Text("action", "fail"));
    if (!action) {
        throw FieldError{entry.Path("action"), "expected fail, timeout or throw"};
    }
    rule.action = *action;
    rule.after = entry.Unsigned("after", 0);
    if (entry.Find("times")) {
        rule.times = entry.Unsigned("times", 0);
    }
    rule.error = entry.Unsigned("error", 0);
    rule.delayMs = entry.Unsigned("delayMs", rule.delayMs);
    scenario.faults.push_back(rule);
}

void ParseIntel(const Fields& intel, SimWifiCardConfig::Intel& config) {
    intel.Only({"discovery", "directory", "libraryAtDefaultPath", "missingExports", "adapters",
                "failures"});
    std::string discovery = intel.Text("discovery", "proset");
    using Discovery = SimWifiCardConfig::Intel::Discovery;
    if (discovery == "proset") {
        config.discovery = Discovery::ProSet;
    } else if (discovery == "pie") {
        config.discovery = Discovery::Pie;
    } else if (discovery == "none") {
        config.discovery = Discovery::None;
    } else {
        throw FieldError{intel.Path("discovery"), "expected proset, pie or none"};
    }
    if (intel.Find("directory")) {
        config.directory = DE::UTF8ToUnicode(intel.Text("directory"));
    }
    config.libraryAtDefaultPath = Flag(intel, "libraryAtDefaultPath", false);
    config.missingExports = Strings(intel, "missingExports");
    if (const json* adapters = intel.Find("adapters")) {
        const json& items = Array(*adapters, intel.Path("adapters"));
        config.adapters.clear();
        for (size_t i = 0; i < items.size(); ++i) {
            Fields adapter(items[i], Indexed(intel.Path("adapters"), i));
            adapter.Only({"handle", "inUse"});
            config.adapters.push_back(
                {static_cast<int32_t>(adapter.Integer("handle", 1, INT32_MIN, INT32_MAX)),
                 Flag(adapter, "inUse", true)});
        }
    }
    if (const json* failures = intel.Find("failures")) {
        Fields counts(*failures, intel.Path("failures"));
        for (const auto& item : failures->items()) {
            config.failures[item.key()] = counts.Unsigned(item.key().c_str(), 0);
        }
    }
}

void ParseWifiCard(const Fields& card, Scenario& scenario) {
    card.Only({"maker", "description", "areaCode", "channels", "intel", "realtek"});
    auto& config = scenario.wifiCard;
    std::string maker = card.Text("maker");
    using Maker = SimWifiCardConfig::Maker;
    if (maker == "intel") {
        config.maker = Maker::Intel;
    } else if (maker == "realtek") {
        config.maker = Maker::Realtek;
    } else if (maker == "other") {
        config.maker = Maker::Other;
    } else {
        throw FieldError{card.Path("maker"), "expected intel, realtek or other"};
    }
    config.description = DE::UTF8ToUnicode(card.Text("description"));
    // "US" or the raw 16-bit code; a driver with no answer yet says 0.
    if (const json* area = card.Find("areaCode"); area && area->is_string()) {
        std::string letters = area->get<std::string>();
        if (letters.size() != 2) {
            throw FieldError{card.Path("areaCode"), "expected two letters or a number"};
        }
        config.areaCode = static_cast<uint16_t>((static_cast<uint8_t>(letters[0]) << 8) |
                                                static_cast<uint8_t>(letters[1]));
    } else {
        config.areaCode =
            static_cast<uint16_t>(card.Integer("areaCode", config.areaCode, 0, 65535));
    }
    if (card.Find("channels")) {
        config.channels = Numbers<uint8_t>(card, "channels", 1, 255);
    }
    if (const json* intel = card.Find("intel")) {
        ParseIntel(Fields(*intel, card.Path("intel")), config.intel);
    }
    if (const json* realtek = card.Find("realtek")) {
        Fields fields(*realtek, card.Path("realtek"));
        fields.Only({"initialisationsBeforeReady", "missingOrdinals"});
        config.realtek.initialisationsBeforeReady =
            fields.Unsigned("initialisationsBeforeReady", 1);
        config.realtek.missingOrdinals = Numbers<uint16_t>(fields, "missingOrdinals", 0, 65535);
    }
}

template <class Parse>
void ForEach(const Fields& document, const char* key, Scenario& scenario, Parse parse) {
    const json* list = document.Find(key);
    if (!list) {
        return;
    }
    const json& items = Array(*list, document.Path(key));
    for (size_t i = 0; i < items.size(); ++i) {
        parse(Fields(items[i], Indexed(key, i)), scenario);
    }
}

void Position(const std::string& text, size_t byte, size_t& line, size_t& column) {
    line = 1;
    column = 1;
    for (size_t i = 0; i < byte && i < text.size(); ++i) {
        if (text[i] == '\n') {
            ++line;
            column = 1;
        } else {
            ++column;
        }
    }
}

}  // namespace

std::string ScenarioError::ToString() const {
    return file + ": " + field + ": " + message;
}

bool ParseScenario(const std::string& text, const std::string& sourceName, Scenario& scenario,
                   ScenarioError& error) {
    json document;
    try {
        document = json::parse(text);
    } catch (const json::parse_error& e) {
        size_t line = 0;
        size_t column = 0;
        Position(text, e.byte == 0 ? 0 : e.byte - 1, line, column);
        error = ScenarioError{sourceName,
                              "line " + std::to_string(line) + ", column " + std::to_string(column),
                              "syntax error"};
        return false;
    }
    Scenario parsed;
    try {
        Fields top(document, "");
        top.Only({"description", "clock", "registry", "files", "programs", "faults", "wifiCard",
                  "wifiDirect", "system"});
        parsed.description = top.Text("description");
        if (const json* clock = top.Find("clock")) {
            ParseClock(Fields(*clock, "clock"), parsed);
        }
        ForEach(top, "registry", parsed, ParseRegistryKey);
        if (const json* files = top.Find("files")) {
            ParseFiles(Fields(*files, "files"), parsed);
        }
        ForEach(top, "programs", parsed, ParseProgram);
        ForEach(top, "faults", parsed, ParseFault);
        if (const json* card = top.Find("wifiCard")) {
            ParseWifiCard(Fields(*card, "wifiCard"), parsed);
        }
        if (const json* wifiDirect = top.Find("wifiDirect")) {
            ParseWiFiDirect(Fields(*wifiDirect, "wifiDirect"), parsed.wifiDirect);
        }
        if (const json* system = top.Find("system")) {
            ParseSystem(Fields(*system, "system"), parsed.system);
        }
    } catch (const FieldError& e) {
        error = ScenarioError{sourceName, e.field, e.message};
        return false;
    }
    scenario = std::move(parsed);
    return true;
}

bool LoadScenarioFile(const std::string& path, Scenario& scenario, ScenarioError& error) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = ScenarioError{path, "(file)", "cannot be opened"};
        return false;
    }
    std::ostringstream text;
    text << file.rdbuf();
    return ParseScenario(text.str(), path, scenario, error);
}

}  // namespace connectkit::sim
