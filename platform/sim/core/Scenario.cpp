#include "platform/sim/core/Scenario.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "platform/sim/core/ScenarioFields.h"
#include "platform/sim/core/VirtualClock.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim {
namespace parse {
namespace {

// Every section a scenario may hold, each read by its model's parser. A new
// model adds its line here and its field to Scenario.
constexpr std::pair<const char*, SectionParser> kSections[] = {
    {"clock", ParseClock},           {"registry", ParseRegistry}, {"files", ParseFiles},
    {"programs", ParsePrograms},     {"faults", ParseFaults},     {"wifiCard", ParseWifiCard},
    {"wifiDirect", ParseWiFiDirect},
};

const SectionParser* FindSection(const std::string& name) {
    for (const auto& [known, parser] : kSections) {
        if (name == known) {
            return &parser;
        }
    }
    return nullptr;
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

void ParseClock(const json& value, const std::string& path, Scenario& scenario) {
    Fields clock(value, path);
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

void ParseFaults(const json& value, const std::string& path, Scenario& scenario) {
    ForEachObject(value, path, [&](const Fields& entry) {
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
    });
}

}  // namespace parse

std::string ScenarioError::ToString() const {
    return file + ": " + field + ": " + message;
}

bool ParseScenario(const std::string& text, const std::string& sourceName, Scenario& scenario,
                   ScenarioError& error) {
    parse::json document;
    try {
        document = parse::json::parse(text);
    } catch (const parse::json::parse_error& e) {
        size_t line = 0;
        size_t column = 0;
        parse::Position(text, e.byte == 0 ? 0 : e.byte - 1, line, column);
        error = ScenarioError{sourceName,
                              "line " + std::to_string(line) + ", column " + std::to_string(column),
                              "syntax error"};
        return false;
    }
    Scenario parsed;
    try {
        parse::Fields top(document, "");
        for (const auto& item : document.items()) {
            if (item.key() != "description" && !parse::FindSection(item.key())) {
                throw parse::FieldError{parse::Join("", item.key()), "unknown field"};
            }
        }
        parsed.description = top.Text("description");
        for (const auto& [name, section] : parse::kSections) {
            if (const auto* value = top.Find(name)) {
                section(*value, name, parsed);
            }
        }
    } catch (const parse::FieldError& e) {
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
