#pragma once
// What every command of the tool shares: the global options, the way results
// are printed (text for people, one JSON object for scripts), and what has to
// happen before the tool exits.

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace connectkit::tool {

// Exit codes of the tool.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;

struct Options {
    bool json = false;
    bool verbose = false;
    std::string logLevel;
    std::string logFile;
    std::string logConfig;
    std::string world;
};

class Context {
public:
    Context() = default;
    // Runs the exit steps, last added first. The context lives inside the
    // logging set-up, so whatever the steps make the library log still has
    // somewhere to go.
    ~Context();
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    Options options;
    int exitCode = kExitOk;

    // Prints `human` as it is, or `machine` as one line of JSON with --json.
    void Print(const std::string& human, const nlohmann::json& machine);
    // A line for people while a long command works; nothing with --json.
    void Progress(const std::string& line);
    // A failure: message on stderr (a JSON object with --json) and the exit code.
    void Fail(int code, const std::string& message);
    // How a command stops what it started once the tool is done with it.
    void AtExit(std::function<void()> step);

private:
    std::vector<std::function<void()>> atExit_;
};

}  // namespace connectkit::tool
