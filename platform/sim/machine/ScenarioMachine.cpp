// The scenario's "registry", "files" and "programs" sections.
#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/ScenarioFields.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim::parse {
namespace {

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
    files.Only({"mainModuleDirectory", "present", "contents", "hostFolders"});
    if (files.Find("mainModuleDirectory")) {
        scenario.mainModuleDirectory = DE::UTF8ToUnicode(files.Text("mainModuleDirectory"));
    }
    for (const auto& present : Strings(files, "present")) {
        scenario.files.push_back(DE::UTF8ToUnicode(present));
    }
    // Simulated path to the file's bytes, and simulated folder to a folder
    // of this machine.
    for (auto [key, target] : {std::pair{"contents", &scenario.fileContents},
                               std::pair{"hostFolders", &scenario.hostFolders}}) {
        if (const json* map = files.Find(key)) {
            Fields fields(*map, files.Path(key));
            for (const auto& item : map->items()) {
                (*target)[DE::UTF8ToUnicode(item.key())] = fields.Text(item.key().c_str());
            }
        }
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
