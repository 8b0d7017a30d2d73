#pragma once
// What every command of the tool shares: the global options and the way
// results are printed (text for people, one JSON object for scripts).

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>

namespace connectkit::tool {

// Exit codes of the tool.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;

struct Options {
    bool json = false;
    std::string logLevel = "warn";
    std::string logFile;
    std::string logConfig;
    std::string world;
};

class Context {
public:
    Context(std::ostream& out, std::ostream& err) : out_(out), err_(err) {}

    Options options;
    int exitCode = kExitOk;

    std::ostream& out() { return out_; }
    // Prints `human` as it is, or `machine` as one line of JSON with --json.
    void Print(const std::string& human, const nlohmann::json& machine);
    // A failure: message on stderr (a JSON object with --json) and the exit code.
    void Fail(int code, const std::string& message);

private:
    std::ostream& out_;
    std::ostream& err_;
};

}  // namespace connectkit::tool
