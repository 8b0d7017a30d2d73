#include <sstream>

#include "Context.h"
#include "commands/Commands.h"
#include "platform/Platform.h"
#include "platform/suite/DEString.h"

namespace connectkit::tool {

void AddVersionCommand(CLI::App& app, Context& context) {
    auto* command =
        app.add_subcommand("version", "Print the tool's version and the machine it runs against");
    command->callback([&context] {
        std::string backend = DE::UnicodeToUTF8(platform::Current().Name());
        std::ostringstream text;
        text << "connectkit " << CONNECTKIT_VERSION << " (backend: " << backend << ")\n";
        context.Print(text.str(), {{"version", CONNECTKIT_VERSION}, {"backend", backend}});
    });
}

}  // namespace connectkit::tool
