// The scenario's "system" section:
//   "system": {"os": {"version": "10.0.22631", "updateRevision": 2861,
//                     "displayVersion": "23H2"},
//              "biosVersion": "...", "model": "...", "deviceId": "...", "dpi": 144}
#include <cstdio>

#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/ScenarioFields.h"
#include "platform/sim/system/SimSystemFacts.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim::parse {

void ParseSystem(const json& value, const std::string& path, Scenario& scenario) {
    Fields system(value, path);
    SimSystemConfig& config = scenario.system;
    system.Only({"os", "biosVersion", "model", "deviceId", "dpi"});
    if (const json* os = system.Find("os")) {
        Fields fields(*os, system.Path("os"));
        fields.Only({"version", "updateRevision", "displayVersion"});
        if (fields.Find("version")) {
            std::string text = fields.Text("version");
            unsigned major = 0, minor = 0, build = 0;
            char tail = 0;
            if (!text.empty() &&
                std::sscanf(text.c_str(), "%u.%u.%u%c", &major, &minor, &build, &tail) != 3) {
                throw FieldError{fields.Path("version"), "expected a version like 10.0.22631"};
            }
            config.os.major = major;
            config.os.minor = minor;
            config.os.build = build;
        }
        config.os.updateRevision = fields.Unsigned("updateRevision", config.os.updateRevision);
        if (fields.Find("displayVersion")) {
            config.os.displayVersion = DE::UTF8ToUnicode(fields.Text("displayVersion"));
        }
    }
    if (system.Find("biosVersion")) {
        config.biosVersion = DE::UTF8ToUnicode(system.Text("biosVersion"));
    }
    if (system.Find("model")) {
        config.model = DE::UTF8ToUnicode(system.Text("model"));
    }
    if (system.Find("deviceId")) {
        config.deviceId = DE::UTF8ToUnicode(system.Text("deviceId"));
    }
    config.dpi = system.Unsigned("dpi", config.dpi);
}

}  // namespace connectkit::sim::parse
