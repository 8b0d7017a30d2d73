#include <log4cplus/initializer.h>
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "Context.h"
#include "LogSetup.h"
#include "Machine.h"
#include "commands/Commands.h"

namespace {

using namespace connectkit::tool;

void AddGlobalOptions(CLI::App& app, Options& options) {
    app.add_flag("--json", options.json,
                 "Print results as JSON, one object per line; errors as {\"error\", \"exitCode\"} "
                 "on stderr");
    app.add_flag("-v,--verbose", options.verbose,
                 "Show the library's log lines on stderr (as --log-level warn)");
    app.add_option("--log-level", options.logLevel,
                   "Show log lines from LEVEL up: trace, debug, info, warn, error, fatal or off "
                   "(default: off unless -v, --log-file or --log-config asks for lines)")
        ->type_name("LEVEL");
    app.add_option("--log-file", options.logFile,
                   "Append log lines to FILE instead of stderr (at warn unless --log-level)")
        ->type_name("FILE");
    app.add_option("--log-config", options.logConfig,
                   "Configure logging from a log4cplus properties FILE instead")
        ->type_name("FILE");
    app.add_option("--world", options.world, kWorldHelp)->type_name("FILE");
}

// Runs the command line; the context's exit steps have run when it returns.
int Run(int argc, char** argv) {
    Context context;
    Options& options = context.options;
    // Known before parsing, so that a command line CLI11 rejects is reported
    // the way the caller asked for.
    options.json = std::any_of(argv + 1, argv + argc, [](const char* argument) {
        return std::string(argument) == "--json";
    });

    CLI::App app{std::string("connectkit: the PC suite's system-access layer from the command "
                             "line.\n") +
                 kMachineHelp};
    app.require_subcommand(1);
    app.fallthrough();
    AddGlobalOptions(app, options);
    app.parse_complete_callback([&] {
        std::string error;
        if (!SetUpLogging(options, error) || !UseMachine(options, error)) {
            context.Fail(kExitUsage, error);
            throw CLI::RuntimeError(kExitUsage);
        }
    });
    AddVersionCommand(app, context);
    AddErrorsCommand(app, context);
    AddReportCommand(app, context);
    AddLogCommand(app, context);
    AddDriverCommand(app, context);
    AddChannelsCommand(app, context);
    AddHotspotCommand(app, context);
    AddIntegrityCommand(app, context);
    AddSystemCommand(app, context);
    AddRadiosCommand(app, context);
    AddBluetoothCommand(app, context);
    AddBleCommand(app, context);
    AddWifiRadioCommand(app, context);
    AddWifiCommand(app, context);

    try {
        app.parse(argc, argv);
    } catch (const CLI::RuntimeError& e) {
        return e.get_exit_code();
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() != 0 && options.json) {
            context.Fail(kExitUsage, e.what());
            return kExitUsage;
        }
        return app.exit(e) == 0 ? kExitOk : kExitUsage;
    } catch (const std::exception& e) {
        context.Fail(kExitFailed, e.what());
    }
    return context.exitCode;
}

}  // namespace

int main(int argc, char** argv) {
    log4cplus::Initializer initializer;
    int exitCode = Run(argc, argv);
    // The hotspot is stopped and the reports under way have ended, but a
    // platform completion started before the stop (a phone being looked up)
    // may still arrive and log. Logging stays up for it: the process ends
    // here, without tearing log4cplus down under a running thread.
    std::fflush(nullptr);
    std::_Exit(exitCode);
}
