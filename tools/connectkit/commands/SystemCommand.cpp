// `system` prints the machine's facts as host modules get them, and the
// model feature switches asked for with --feature.

#include <sstream>

#include "Context.h"
#include "commands/Commands.h"
#include "connectkit/SystemEnvironment.h"

namespace connectkit::tool {
namespace {

void Show(Context& context, const std::vector<std::string>& features) {
    nlohmann::json result = {
        {"osVersion", SystemEnvironment::GetOsVersion()},
        {"osBuild", SystemEnvironment::GetOsBuildNumber()},
        {"osDisplayVersion", SystemEnvironment::GetOsDisplayVersion()},
        {"biosVersion", SystemEnvironment::GetBiosVersion()},
        {"model", SystemEnvironment::GetModelName()},
        {"deviceId", SystemEnvironment::GetDeviceId()},
        {"displayDpi", SystemEnvironment::GetDisplayDpi()},
    };
    std::ostringstream text;
    auto shown = [](const std::string& value) { return value.empty() ? "(unknown)" : value; };
    text << "OS version       " << shown(result["osVersion"]) << " ("
         << shown(result["osDisplayVersion"]) << ")\n"
         << "BIOS version     " << shown(result["biosVersion"]) << '\n'
         << "model            " << shown(result["model"]) << '\n'
         << "device id        " << shown(result["deviceId"]) << '\n'
         << "display DPI      " << SystemEnvironment::GetDisplayDpi() << '\n';
    nlohmann::json switches = nlohmann::json::object();
    for (const auto& name : features) {
        bool on = SystemEnvironment::GetModelFeatureSwitch(name);
        switches[name] = on;
        text << "feature " << name << ": " << (on ? "on" : "off") << '\n';
    }
    result["features"] = switches;
    context.Print(text.str(), result);
}

}  // namespace

void AddSystemCommand(CLI::App& app, Context& context) {
    auto* system = app.add_subcommand(
        "system", "The machine's facts: OS version, BIOS, model, device id, DPI, feature switches");
    static std::vector<std::string> features;
    system->add_option("-f,--feature", features, "Also show this model feature switch");
    system->callback([&context] { Show(context, features); });
}

}  // namespace connectkit::tool
