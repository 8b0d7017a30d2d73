#pragma once
// Strict reading of scenario sections: every object rejects fields it does not
// know, and every error names the field's path. Shared by the section parsers.

#include <array>
#include <cctype>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Hex.h"

namespace connectkit::sim {
struct Scenario;
}

namespace connectkit::sim::parse {

using nlohmann::json;

struct FieldError {
    std::string field;
    std::string message;
};

// A field's path for messages; an empty key is shown as "" so that the
// message still points somewhere.
inline std::string Join(const std::string& path, const std::string& key) {
    std::string shown = key.empty() ? "\"\"" : key;
    return path.empty() ? shown : path + "." + shown;
}

// An object whose fields are read by name; anything not read is reported.
class Fields {
public:
    Fields(const json& value, std::string path) : value_(value), path_(std::move(path)) {
        if (!value_.is_object()) {
            throw FieldError{path_.empty() ? "(document)" : path_, "expected an object"};
        }
    }

    void Only(std::initializer_list<const char*> known) const {
        for (const auto& item : value_.items()) {
            bool found = false;
            for (const char* name : known) {
                found = found || item.key() == name;
            }
            if (!found) {
                throw FieldError{Join(path_, item.key()), "unknown field"};
            }
        }
    }

    const json* Find(const char* key) const {
        auto found = value_.find(key);
        return found == value_.end() ? nullptr : &*found;
    }

    std::string Path(const char* key) const { return Join(path_, key); }

    std::string Text(const char* key, const std::string& fallback = "") const {
        const json* v = Find(key);
        if (!v) {
            return fallback;
        }
        if (!v->is_string()) {
            throw FieldError{Path(key), "expected a string"};
        }
        return v->get<std::string>();
    }

    int64_t Integer(const char* key, int64_t fallback, int64_t low, int64_t high) const {
        const json* v = Find(key);
        if (!v) {
            return fallback;
        }
        if (!v->is_number_integer()) {
            throw FieldError{Path(key), "expected an integer"};
        }
        if (v->is_number_unsigned() ? v->get<uint64_t>() > static_cast<uint64_t>(high)
                                    : (v->get<int64_t>() < low || v->get<int64_t>() > high)) {
            throw FieldError{Path(key), "out of range [" + std::to_string(low) + ", " +
                                            std::to_string(high) + "]"};
        }
        return v->get<int64_t>();
    }

    uint32_t Unsigned(const char* key, uint32_t fallback) const {
        return static_cast<uint32_t>(
            Integer(key, fallback, 0, std::numeric_limits<uint32_t>::max()));
    }

private:
    const json& value_;
    std::string path_;
};

inline const json& Array(const json& value, const std::string& path) {
    if (!value.is_array()) {
        throw FieldError{path, "expected an array"};
    }
    return value;
}

inline std::string Indexed(const std::string& path, size_t index) {
    return path + "[" + std::to_string(index) + "]";
}

// Calls `parse` with each object of the array at `path`.
template <class Parse>
void ForEachObject(const json& list, const std::string& path, Parse parse) {
    const json& items = Array(list, path);
    for (size_t i = 0; i < items.size(); ++i) {
        parse(Fields(items[i], Indexed(path, i)));
    }
}

template <class T>
std::vector<T> Numbers(const Fields& fields, const char* key, int64_t low, int64_t high) {
    std::vector<T> numbers;
    const json* list = fields.Find(key);
    if (!list) {
        return numbers;
    }
    const json& items = Array(*list, fields.Path(key));
    for (size_t i = 0; i < items.size(); ++i) {
        const json& item = items[i];
        if (!item.is_number_integer() || item.get<int64_t>() < low || item.get<int64_t>() > high) {
            throw FieldError{Indexed(fields.Path(key), i), "expected an integer in [" +
                                                               std::to_string(low) + ", " +
                                                               std::to_string(high) + "]"};
        }
        numbers.push_back(static_cast<T>(item.get<int64_t>()));
    }
    return numbers;
}

inline std::vector<std::string> Strings(const Fields& fields, const char* key) {
    std::vector<std::string> strings;
    const json* list = fields.Find(key);
    if (!list) {
        return strings;
    }
    const json& items = Array(*list, fields.Path(key));
    for (size_t i = 0; i < items.size(); ++i) {
        if (!items[i].is_string()) {
            throw FieldError{Indexed(fields.Path(key), i), "expected a string"};
        }
        strings.push_back(items[i].get<std::string>());
    }
    return strings;
}

// A Bluetooth device address in "address": 12 hex digits, most significant
// first.
inline uint64_t DeviceAddress(const Fields& fields, uint64_t fallback) {
    if (!fields.Find("address")) {
        return fallback;
    }
    std::string text = fields.Text("address");
    bool hex =
        text.size() == 12 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    if (!hex) {
        throw FieldError{fields.Path("address"), "expected 12 hex digits like A1B2C3D4E5F6"};
    }
    return std::stoull(text, nullptr, 16);
}

// "3a:7c:76:12:9e:51" or with dashes.
inline bool ParseMac(const std::string& text, std::array<uint8_t, 6>& mac) {
    if (text.size() != 17 || (text[2] != ':' && text[2] != '-')) {
        return false;
    }
    std::array<uint8_t, 6> parsed{};
    for (size_t i = 0; i < parsed.size(); ++i) {
        size_t at = i * 3;
        if (!std::isxdigit(static_cast<unsigned char>(text[at])) ||
            !std::isxdigit(static_cast<unsigned char>(text[at + 1])) ||
            (i + 1 < parsed.size() && text[at + 2] != text[2])) {
            return false;
        }
        parsed[i] = static_cast<uint8_t>(std::stoul(text.substr(at, 2), nullptr, 16));
    }
    mac = parsed;
    return true;
}

inline bool Flag(const Fields& fields, const char* key, bool fallback) {
    const json* value = fields.Find(key);
    if (!value) {
        return fallback;
    }
    if (!value->is_boolean()) {
        throw FieldError{fields.Path(key), "expected true or false"};
    }
    return value->get<bool>();
}

// The value `text` names among `choices`; anything else is refused with the
// names there are.
template <class T, size_t N>
T Pick(const std::string& text, const std::string& path,
       const std::pair<const char*, T> (&choices)[N]) {
    std::string known;
    for (const auto& [name, value] : choices) {
        if (text == name) {
            return value;
        }
        known += known.empty() ? name : std::string(", ") + name;
    }
    throw FieldError{path, "expected one of " + known};
}

// The same for the field `key`, `fallback` when it is absent.
template <class T, size_t N>
T Choice(const Fields& fields, const char* key, const std::pair<const char*, T> (&choices)[N],
         T fallback) {
    return fields.Find(key) ? Pick(fields.Text(key), fields.Path(key), choices) : fallback;
}

// The sections of a scenario, each read beside the model it configures:
// `value` is the section's JSON, `path` its name for messages.
using SectionParser = void (*)(const json& value, const std::string& path, Scenario& scenario);
void ParseClock(const json& value, const std::string& path, Scenario& scenario);
void ParseFaults(const json& value, const std::string& path, Scenario& scenario);
void ParseRegistry(const json& value, const std::string& path, Scenario& scenario);
void ParseFiles(const json& value, const std::string& path, Scenario& scenario);
void ParsePrograms(const json& value, const std::string& path, Scenario& scenario);
void ParseWifiCard(const json& value, const std::string& path, Scenario& scenario);
void ParseWiFiDirect(const json& value, const std::string& path, Scenario& scenario);
void ParseSystem(const json& value, const std::string& path, Scenario& scenario);
void ParseBluetooth(const json& value, const std::string& path, Scenario& scenario);
void ParseRadios(const json& value, const std::string& path, Scenario& scenario);
void ParseBle(const json& value, const std::string& path, Scenario& scenario);
void ParseWlan(const json& value, const std::string& path, Scenario& scenario);

}  // namespace connectkit::sim::parse
