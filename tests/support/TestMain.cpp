#include <gtest/gtest.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <optional>
#include <string>
#include <vector>

#include "support/SimWorld.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

extern char** environ;

namespace {

// Every test starts from the process's first singletons. ctest starts one
// process per test; run whole, this program does the same by starting
// itself once per test it selects.
constexpr const char kChildMarker[] = "CONNECTKIT_TEST_CHILD=1";

struct ChildRun {
    bool passed = false;
    std::string output;
};

// Runs this program with `arguments`, marked as a child, and collects what it
// prints. Only async-signal-safe calls between fork and exec.
ChildRun RunSelf(const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    for (const auto& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    std::vector<char*> envp{const_cast<char*>(kChildMarker)};
    for (char** variable = environ; *variable; ++variable) {
        envp.push_back(*variable);
    }
    envp.push_back(nullptr);

    ChildRun run;
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0) {
        run.output = "cannot create a pipe for the test process\n";
        return run;
    }
    pid_t child = fork();
    if (child == 0) {
        dup2(pipeEnds[1], STDOUT_FILENO);
        dup2(pipeEnds[1], STDERR_FILENO);
        close(pipeEnds[0]);
        close(pipeEnds[1]);
        execve("/proc/self/exe", argv.data(), envp.data());
        _exit(127);
    }
    close(pipeEnds[1]);
    char chunk[4096];
    for (ssize_t got; (got = read(pipeEnds[0], chunk, sizeof(chunk))) != 0;) {
        if (got > 0) {
            run.output.append(chunk, static_cast<size_t>(got));
        }
    }
    close(pipeEnds[0]);
    int status = 0;
    run.passed = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
                 WEXITSTATUS(status) == 0;
    return run;
}

// The full names gtest lists: "Suite." lines, then indented test names; a
// comment after either (type or parameter) is not part of the name.
std::vector<std::string> ListedTests(const std::string& listing) {
    std::vector<std::string> tests;
    std::string suite;
    size_t start = 0;
    while (start < listing.size()) {
        size_t end = listing.find('\n', start);
        std::string line = listing.substr(start, end - start);
        start = end == std::string::npos ? listing.size() : end + 1;
        bool indented = line.rfind("  ", 0) == 0;
        std::string name = line.substr(indented ? 2 : 0);
        name = name.substr(0, name.find(' '));
        if (name.empty()) {
            continue;
        }
        if (!indented) {
            suite = name;
        } else {
            tests.push_back(suite + name);
        }
    }
    return tests;
}

std::optional<int> RunEachTestInItsOwnProcess(const std::vector<std::string>& arguments) {
    // ctest names exactly one test: no need to ask which tests there are.
    std::string filter = GTEST_FLAG_GET(filter);
    bool oneTest = filter.find_first_of("*?:-") == std::string::npos;
    if (std::getenv("CONNECTKIT_TEST_CHILD") || GTEST_FLAG_GET(list_tests) || oneTest) {
        return std::nullopt;
    }
    std::vector<std::string> listing = arguments;
    listing.push_back("--gtest_list_tests");
    ChildRun list = RunSelf(listing);
    if (!list.passed) {
        std::fputs(list.output.c_str(), stderr);
        return 1;
    }
    std::vector<std::string> tests = ListedTests(list.output);
    if (tests.size() < 2) {
        return std::nullopt;
    }
    std::printf("[==========] %zu tests, each in a process of its own\n", tests.size());
    std::vector<std::string> failed;
    for (const auto& test : tests) {
        std::vector<std::string> single = arguments;
        single.push_back("--gtest_filter=" + test);
        auto began = std::chrono::steady_clock::now();
        ChildRun run = RunSelf(single);
        auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                      std::chrono::steady_clock::now() - began)
                      .count();
        if (!run.passed) {
            std::fputs(run.output.c_str(), stdout);
            failed.push_back(test);
        }
        std::printf("[ %s ] %s (%lld ms)\n", run.passed ? "      OK" : " FAILED ", test.c_str(),
                    static_cast<long long>(ms));
        std::fflush(stdout);
    }
    std::printf("[==========] %zu tests ran.\n[  PASSED  ] %zu tests.\n", tests.size(),
                tests.size() - failed.size());
    for (const auto& test : failed) {
        std::printf("[  FAILED  ] %s\n", test.c_str());
    }
    return failed.empty() ? 0 : 1;
}

}  // namespace
#endif

int main(int argc, char** argv) {
    log4cplus::Initializer initializer;
    // Lines go nowhere unless a test captures them.
    log4cplus::Logger::getRoot().addAppender(
        log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
#if !defined(_WIN32)
    std::vector<std::string> arguments(argv, argv + argc);
    testing::InitGoogleTest(&argc, argv);
    if (auto exitCode = RunEachTestInItsOwnProcess(arguments)) {
        return *exitCode;
    }
#else
    testing::InitGoogleTest(&argc, argv);
#endif
    connectkit::test::Pc();
    return RUN_ALL_TESTS();
}
