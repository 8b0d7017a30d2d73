// The scenario's "wifiCard" section.
#include <climits>

#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/ScenarioFields.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim::parse {
namespace {

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

}  // namespace

void ParseWifiCard(const json& value, const std::string& path, Scenario& scenario) {
    Fields card(value, path);
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

}  // namespace connectkit::sim::parse
