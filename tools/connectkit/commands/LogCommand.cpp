// `log` writes one line through the library's log functions, to check where
// a log configuration sends the library's lines.

#include "Context.h"
#include "SDK/Util/LogTool/LogTool.h"
#include "commands/Commands.h"
#include "platform/suite/DEString.h"

namespace connectkit::tool {

void AddLogCommand(CLI::App& app, Context& context) {
    auto* log = app.add_subcommand(
        "log", "Write MESSAGE through LogWarnFun (or LogErrorFun with --error) to the logger");
    static std::string message;
    static bool error = false;
    static bool wide = false;
    log->add_option("MESSAGE", message, "Text of the line")->required();
    log->add_flag("--error", error, "Log at error level");
    log->add_flag("--wide", wide, "Use the wide-character form");
    log->callback([&context] {
        if (wide) {
            std::wstring text = DE::UTF8ToUnicode(message);
            error ? LogErrorFun(L"%ls", text.c_str()) : LogWarnFun(L"%ls", text.c_str());
        } else {
            error ? LogErrorFun("%s", message.c_str()) : LogWarnFun("%s", message.c_str());
        }
        context.Print("", {{"logged", message}, {"level", error ? "error" : "warn"}});
    });
}

}  // namespace connectkit::tool
