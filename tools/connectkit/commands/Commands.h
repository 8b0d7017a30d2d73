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
void AddWifiRadioCommand(CLI::App& app, Context& context);
// The `wifi` command, created by whichever of its subcommands is added first.
CLI::App* WifiCommand(CLI::App& app);

}  // namespace connectkit::tool
