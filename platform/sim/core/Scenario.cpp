#include "platform/sim/core/Scenario.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "platform/sim/core/ScenarioFields.h"
#include "platform/sim/core/VirtualClock.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim {
namespace parse {
namespace {

// Scenario files are a few KiB; a bound keeps a wrong --world from filling
// memory.
constexpr size_t kMostScenarioBytes = 4 << 20;

// Every section a scenario may hold, each read by its model's parser. A new
// model adds its line here and its field to Scenario.
constexpr std::pair<const char*, SectionParser> kSections[] = {
    {"clock", ParseClock},           {"registry", ParseRegistry}, {"files", ParseFiles},
    {"programs", ParsePrograms},     {"faults", ParseFaults},     {"wifiCard", ParseWifiCard},
    {"wifiDirect", ParseWiFiDirect}, {"system", ParseSystem},     {"bluetooth", ParseBluetooth},
    {"radios", ParseRadios},         {"wlan", ParseWlan},         {"ble", ParseBle},
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

// Where the parser is, as a field path: the parser refuses a number beyond a
// double's range without saying where.
class ParsePath {
public:
    bool Follow(json::parse_event_t event, const json& parsed) {
        switch (event) {
            case json::parse_event_t::object_start:
                frames_.push_back({false, 0, ""});
                break;
            case json::parse_event_t::array_start:
                frames_.push_back({true, 0, ""});
                break;
            case json::parse_event_t::key:
                frames_.back().key = parsed.get<std::string>();
                break;
            case json::parse_event_t::object_end:
            case json::parse_event_t::array_end:
                frames_.pop_back();
                Advance();
                break;
            case json::parse_event_t::value:
                Advance();
                break;
        }
        return true;
    }

    std::string Path() const {
        std::string path;
        for (const auto& frame : frames_) {
            path = frame.array ? Indexed(path, frame.index) : Join(path, frame.key);
        }
        return path.empty() ? "(document)" : path;
    }

private:
    struct Frame {
        bool array;
        size_t index;
        std::string key;
    };

    void Advance() {
        if (!frames_.empty() && frames_.back().array) {
            ++frames_.back().index;
        }
    }

    std::vector<Frame> frames_;
};

// nlohmann's message without its "[json.exception.out_of_range.406] " tag.
std::string Reason(const json::exception& e) {
    std::string what = e.what();
    size_t tag = what.find("] ");
    return tag == std::string::npos ? what : what.substr(tag + 2);
}

bool ParseDocument(const std::string& text, const std::string& sourceName, json& document,
                   ScenarioError& error) {
    ParsePath where;
    try {
        document = json::parse(text, [&where](int, json::parse_event_t event, json& parsed) {
            return where.Follow(event, parsed);
        });
        return true;
    } catch (const json::parse_error& e) {
        size_t line = 0;
        size_t column = 0;
        Position(text, e.byte == 0 ? 0 : e.byte - 1, line, column);
        error = ScenarioError{sourceName,
                              "line " + std::to_string(line) + ", column " + std::to_string(column),
                              "syntax error"};
    } catch (const json::exception& e) {
        error = ScenarioError{sourceName, where.Path(), Reason(e)};
    }
    return false;
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
    if (!parse::ParseDocument(text, sourceName, document, error)) {
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
    } catch (const parse::json::exception& e) {
        // The section readers check every type before they read; this is the
        // net under a check that was missed.
        error = ScenarioError{sourceName, "(document)", parse::Reason(e)};
        return false;
    }
    scenario = std::move(parsed);
    return true;
}

bool LoadScenarioFile(const std::string& path, Scenario& scenario, ScenarioError& error) {
    auto refuse = [&](const std::string& message) {
        error = ScenarioError{path, "(file)", message};
        return false;
    };
    // Asked before opening: opening a pipe waits for a writer.
    std::error_code code;
    auto status = std::filesystem::status(path, code);
    if (code || !std::filesystem::exists(status)) {
        return refuse("cannot be opened");
    }
    if (std::filesystem::is_directory(status)) {
        return refuse("is a directory, not a scenario file");
    }
    if (!std::filesystem::is_regular_file(status)) {
        return refuse("is not a regular file (a device or a pipe holds no scenario)");
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return refuse("cannot be opened");
    }
    // Bounded even if the file grows while it is read.
    std::string text;
    std::array<char, 64 * 1024> chunk;
    while (file.read(chunk.data(), chunk.size()) || file.gcount() > 0) {
        text.append(chunk.data(), static_cast<size_t>(file.gcount()));
        if (text.size() > parse::kMostScenarioBytes) {
            return refuse("is larger than " + std::to_string(parse::kMostScenarioBytes >> 20) +
                          " MiB; a scenario is a small JSON file");
        }
    }
    return ParseScenario(text, path, scenario, error);
}

}  // namespace connectkit::sim
