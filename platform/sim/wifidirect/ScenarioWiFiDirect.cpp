// The scenario's "wifiDirect" section.
#include <cstdio>

#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/ScenarioFields.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim::parse {
namespace {

using Publisher = SimWiFiDirectConfig::Publisher;

bool IsDottedAddress(const std::string& text) {
    unsigned parts[4];
    char tail = 0;
    if (std::sscanf(text.c_str(), "%3u.%3u.%3u.%3u%c", &parts[0], &parts[1], &parts[2], &parts[3],
                    &tail) != 4) {
        return false;
    }
    for (unsigned part : parts) {
        if (part > 255) {
            return false;
        }
    }
    return text.find_first_not_of("0123456789.") == std::string::npos;
}

std::string Address(const Fields& fields, const char* key, const std::string& fallback) {
    std::string text = fields.Text(key, fallback);
    if (!IsDottedAddress(text)) {
        throw FieldError{fields.Path(key), "expected a dotted IPv4 address"};
    }
    return text;
}

void ParsePublisher(const Fields& fields, Publisher& publisher) {
    fields.Only({"startLatencyMs", "stopLatencyMs", "startEventDelayMs", "startOutcomes",
                 "abortError", "stopOutcome"});
    publisher.startLatencyMs = fields.Unsigned("startLatencyMs", publisher.startLatencyMs);
    publisher.startEventDelayMs = fields.Unsigned("startEventDelayMs", publisher.startEventDelayMs);
    publisher.stopLatencyMs = fields.Unsigned("stopLatencyMs", publisher.stopLatencyMs);
    auto outcomes = Strings(fields, "startOutcomes");
    for (size_t i = 0; i < outcomes.size(); ++i) {
        if (outcomes[i] == "started") {
            publisher.startOutcomes.push_back(Publisher::Outcome::Started);
        } else if (outcomes[i] == "aborted") {
            publisher.startOutcomes.push_back(Publisher::Outcome::Aborted);
        } else if (outcomes[i] == "silent") {
            publisher.startOutcomes.push_back(Publisher::Outcome::Silent);
        } else {
            throw FieldError{Indexed(fields.Path("startOutcomes"), i),
                             "expected started, aborted or silent"};
        }
    }
    std::string abortError = fields.Text("abortError", "radioNotAvailable");
    if (abortError == "radioNotAvailable") {
        publisher.abortError = platform::WiFiDirectError::RadioNotAvailable;
    } else if (abortError == "resourceInUse") {
        publisher.abortError = platform::WiFiDirectError::ResourceInUse;
    } else {
        throw FieldError{fields.Path("abortError"), "expected radioNotAvailable or resourceInUse"};
    }
    std::string stopOutcome = fields.Text("stopOutcome", "stopped");
    if (stopOutcome == "stopped") {
        publisher.stopOutcome = Publisher::StopOutcome::Stopped;
    } else if (stopOutcome == "stuck") {
        publisher.stopOutcome = Publisher::StopOutcome::Stuck;
    } else {
        throw FieldError{fields.Path("stopOutcome"), "expected stopped or stuck"};
    }
}

void ParseVirtualAdapter(const Fields& fields, SimWiFiDirectConfig::VirtualAdapter& adapter) {
    fields.Only({"present", "enabled", "index", "description", "mac", "macDelayMs",
                 "macAfterRepair", "ip", "ipPresent", "restartLatencyMs"});
    adapter.present = Flag(fields, "present", adapter.present);
    adapter.enabled = Flag(fields, "enabled", adapter.enabled);
    adapter.index = fields.Unsigned("index", adapter.index);
    if (adapter.index == 0) {
        throw FieldError{fields.Path("index"), "an adapter index is never 0"};
    }
    if (fields.Find("description")) {
        adapter.description = DE::UTF8ToUnicode(fields.Text("description"));
    }
    if (fields.Find("mac") && !ParseMac(fields.Text("mac"), adapter.mac)) {
        throw FieldError{fields.Path("mac"), "expected six hex pairs like 3a:7c:76:12:9e:51"};
    }
    if (const json* delay = fields.Find("macDelayMs"); delay && delay->is_null()) {
        adapter.macDelayMs.reset();
    } else if (delay) {
        adapter.macDelayMs = fields.Unsigned("macDelayMs", 0);
    }
    adapter.macAfterRepair = Flag(fields, "macAfterRepair", adapter.macAfterRepair);
    adapter.ip = Address(fields, "ip", adapter.ip);
    adapter.ipPresent = Flag(fields, "ipPresent", adapter.ipPresent);
    adapter.restartLatencyMs = fields.Unsigned("restartLatencyMs", adapter.restartLatencyMs);
}

SimWiFiDirectConfig::Phone ParsePhone(const Fields& fields) {
    fields.Only({"id", "address", "joinAfterMs", "leaveAfterMs", "fromIdLatencyMs", "fromIdFails",
                 "missDisconnectEvent"});
    SimWiFiDirectConfig::Phone phone;
    if (fields.Find("id")) {
        phone.id = DE::UTF8ToUnicode(fields.Text("id"));
        if (phone.id.empty()) {
            throw FieldError{fields.Path("id"), "a phone needs an id"};
        }
    }
    phone.address = Address(fields, "address", phone.address);
    phone.joinAfterMs = fields.Unsigned("joinAfterMs", phone.joinAfterMs);
    if (fields.Find("leaveAfterMs")) {
        phone.leaveAfterMs = fields.Unsigned("leaveAfterMs", 0);
    }
    phone.fromIdLatencyMs = fields.Unsigned("fromIdLatencyMs", phone.fromIdLatencyMs);
    phone.fromIdFails = Flag(fields, "fromIdFails", phone.fromIdFails);
    phone.missDisconnectEvent = Flag(fields, "missDisconnectEvent", phone.missDisconnectEvent);
    return phone;
}

}  // namespace

void ParseWiFiDirect(const json& value, const std::string& path, Scenario& scenario) {
    Fields section(value, path);
    auto& config = scenario.wifiDirect;
    section.Only(
        {"runtimeAvailable", "publisher", "virtualAdapter", "foreignGroupOwner", "phones"});
    config.runtimeAvailable = Flag(section, "runtimeAvailable", config.runtimeAvailable);
    if (const json* publisher = section.Find("publisher")) {
        ParsePublisher(Fields(*publisher, section.Path("publisher")), config.publisher);
    }
    if (const json* adapter = section.Find("virtualAdapter")) {
        ParseVirtualAdapter(Fields(*adapter, section.Path("virtualAdapter")),
                            config.virtualAdapter);
    }
    if (const json* foreign = section.Find("foreignGroupOwner")) {
        Fields fields(*foreign, section.Path("foreignGroupOwner"));
        fields.Only({"running", "survivesRestart"});
        config.foreignGroupOwner.running = Flag(fields, "running", false);
        config.foreignGroupOwner.survivesRestart = Flag(fields, "survivesRestart", false);
    }
    if (const json* phones = section.Find("phones")) {
        ForEachObject(*phones, section.Path("phones"),
                      [&](const Fields& phone) { config.phones.push_back(ParsePhone(phone)); });
    }
}

}  // namespace connectkit::sim::parse
