#include "Context.h"

#include <ostream>

namespace connectkit::tool {

void Context::Print(const std::string& human, const nlohmann::json& machine) {
    if (options.json) {
        out_ << machine.dump() << '\n';
    } else {
        out_ << human;
    }
    out_.flush();
}

void Context::Fail(int code, const std::string& message) {
    exitCode = code;
    if (options.json) {
        err_ << nlohmann::json{{"error", message}, {"exitCode", code}}.dump() << '\n';
    } else {
        err_ << "connectkit: " << message << '\n';
    }
}

}  // namespace connectkit::tool
