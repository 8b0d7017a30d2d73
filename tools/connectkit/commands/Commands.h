#pragma once
// Each command adds itself to the application; its callback runs with the
// shared context once the command line is parsed.

#include <CLI/CLI.hpp>

namespace connectkit::tool {

class Context;

void AddVersionCommand(CLI::App& app, Context& context);
void AddErrorsCommand(CLI::App& app, Context& context);
void AddReportCommand(CLI::App& app, Context& context);
void AddLogCommand(CLI::App& app, Context& context);
void AddDriverCommand(CLI::App& app, Context& context);
void AddChannelsCommand(CLI::App& app, Context& context);
void AddHotspotCommand(CLI::App& app, Context& context);
void AddIntegrityCommand(CLI::App& app, Context& context);
void AddSystemCommand(CLI::App& app, Context& context);
void AddRadiosCommand(CLI::App& app, Context& context);
void AddBluetoothCommand(CLI::App& app, Context& context);
void AddBleCommand(CLI::App& app, Context& context);
// The `wifi` group: several files add subcommands to it, whichever comes first
// makes it.
CLI::App* WifiGroup(CLI::App& app);
void AddWifiCommand(CLI::App& app, Context& context);
void AddWifiRadioCommand(CLI::App& app, Context& context);

}  // namespace connectkit::tool
