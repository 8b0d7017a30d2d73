#pragma once
// Runs the connectkit tool as a user would: its exit code, standard output
// and standard error.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
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

inline ToolRun Tool(const std::string& arguments) {
    std::string errFile = TempPath("tool.err");
    std::string command = std::string(CONNECTKIT_TOOL) + " " + arguments + " 2>" + errFile;
    ToolRun run;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) {
        return run;
    }
    std::array<char, 4096> chunk;
    size_t read = 0;
    while ((read = fread(chunk.data(), 1, chunk.size(), pipe)) > 0) {
        run.out.append(chunk.data(), read);
    }
    int status = pclose(pipe);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.err = ReadFile(errFile);
    return run;
}

}  // namespace connectkit::test
