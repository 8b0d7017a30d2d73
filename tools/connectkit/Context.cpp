#include "Context.h"

#include <cstdio>
#include <cwchar>
#include <iostream>

#include "platform/suite/DEString.h"

namespace connectkit::tool {
namespace {

// A log configuration may put log4cplus's console appender on stdout or
// stderr; it writes through the wide streams, which turns the C stream wide,
// and narrow text written after that is silently dropped. Writing the way the
// stream is already oriented keeps the tool's answers and errors visible
// whatever the logging does.
void Write(std::FILE* file, std::ostream& narrow, std::wostream& wide, const std::string& text) {
    if (std::fwide(file, 0) > 0) {
        wide << DE::UTF8ToUnicode(text);
        wide.flush();
    } else {
        narrow << text;
        narrow.flush();
    }
}

void Out(const std::string& text) {
    Write(stdout, std::cout, std::wcout, text);
}

void Err(const std::string& text) {
    Write(stderr, std::cerr, std::wcerr, text);
}

}  // namespace

Context::~Context() {
    while (!atExit_.empty()) {
        auto step = std::move(atExit_.back());
        atExit_.pop_back();
        try {
            step();
        } catch (const std::exception& e) {
            Err("connectkit: while exiting: " + std::string(e.what()) + '\n');
        }
    }
}

void Context::Print(const std::string& human, const nlohmann::json& machine) {
    Out(options.json ? machine.dump() + '\n' : human);
}

void Context::Progress(const std::string& line) {
    if (!options.json) {
        Out(line + '\n');
    }
}

void Context::Fail(int code, const std::string& message) {
    exitCode = code;
    if (options.json) {
        Err(nlohmann::json{{"error", message}, {"exitCode", code}}.dump() + '\n');
    } else {
        Err("connectkit: " + message + '\n');
    }
}

void Context::AtExit(std::function<void()> step) {
    atExit_.push_back(std::move(step));
}

}  // namespace connectkit::tool
