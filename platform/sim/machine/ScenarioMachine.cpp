// The scenario's "registry", "files" and "programs" sections.
#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/ScenarioFields.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim::parse {
namespace {

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

}  // namespace

void ParseRegistry(const json& value, const std::string& path, Scenario& scenario) {
    ForEachObject(value, path, [&](const Fields& entry) { ParseRegistryKey(entry, scenario); });
}

void ParseFiles(const json& value, const std::string& path, Scenario& scenario) {
    Fields files(value, path);
    files.Only({"mainModuleDirectory", "present"});
    if (files.Find("mainModuleDirectory")) {
        scenario.mainModuleDirectory = DE::UTF8ToUnicode(files.Text("mainModuleDirectory"));
    }
    for (const auto& present : Strings(files, "present")) {
        scenario.files.push_back(DE::UTF8ToUnicode(present));
    }
}

void ParsePrograms(const json& value, const std::string& path, Scenario& scenario) {
    ForEachObject(value, path, [&](const Fields& entry) {
        entry.Only({"name", "exitCode", "durationMs"});
        std::string name = entry.Text("name");
        if (name.empty()) {
            throw FieldError{entry.Path("name"), "a program needs a name"};
        }
        scenario.programs.push_back(Scenario::Program{DE::UTF8ToUnicode(name),
                                                      entry.Unsigned("exitCode", 0),
                                                      entry.Unsigned("durationMs", 0)});
    });
}

}  // namespace connectkit::sim::parse
