#pragma once
// Runs the connectkit tool as a user would: its exit code, standard output
// and standard error.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace connectkit::test {

struct ToolRun {
    int exitCode = -1;  // -1: killed by a signal
    std::string out;
    std::string err;
};

// ctest runs the tool tests side by side: every file a test writes carries
// its process id, so no test reads another's output.
inline std::string TempPath(const std::string& name) {
    return ::testing::TempDir() + "connectkit-" + std::to_string(getpid()) + "-" + name;
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream file(path);
    return std::string((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
}

inline std::string WriteFile(const std::string& name, const std::string& text) {
    std::string path = TempPath(name);
    std::ofstream(path) << text;
    return path;
}

inline std::string WorldPath(const std::string& name) {
    return std::string(CONNECTKIT_WORLDS_DIR) + "/" + name + ".json";
}

inline ToolRun Tool(const std::string& arguments) {
    std::string out = TempPath("tool.out");
    std::string err = TempPath("tool.err");
    int status = std::system(
        (std::string(CONNECTKIT_TOOL) + " " + arguments + " >" + out + " 2>" + err).c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(out), ReadFile(err)};
}

}  // namespace connectkit::test
