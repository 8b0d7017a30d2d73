#include <log4cplus/initializer.h>
#include <CLI/CLI.hpp>
#include <iostream>

#include "Context.h"
#include "LogSetup.h"
#include "World.h"
#include "commands/Commands.h"

int main(int argc, char** argv) {
    using namespace connectkit::tool;
    log4cplus::Initializer initializer;
    Context context(std::cout, std::cerr);

    CLI::App app{
        "connectkit: the PC suite's system-access layer from the command line.\n"
        "Off Windows every command runs against a simulated PC; --world FILE describes it."};
    app.require_subcommand(1);
    app.fallthrough();
    Options& options = context.options;
    app.add_flag("--json", options.json, "Print results as JSON (one object per command)");
    app.add_option("--log-level", options.logLevel,
                   "trace, debug, info, warn, error, fatal or off (default warn)");
    app.add_option("--log-file", options.logFile, "Append log lines to FILE instead of stderr");
    app.add_option("--log-config", options.logConfig,
                   "Configure logging from a log4cplus "
                   "properties FILE");
    app.add_option("--world", options.world, "Simulated PC scenario (JSON) to run against");

    app.parse_complete_callback([&] {
        std::string error;
        if (!SetUpLogging(options, error) || !InstallWorld(options.world, error)) {
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

    try {
        app.parse(argc, argv);
    } catch (const CLI::RuntimeError& e) {
        return e.get_exit_code();
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? kExitOk : kExitUsage;
    } catch (const std::exception& e) {
        context.Fail(kExitFailed, e.what());
    }
    return context.exitCode;
}
