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

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace {

// Every test starts from the process's first singletons. ctest starts one
// process per test; run whole, this program does the same by starting
// itself once per test it selects.
struct ChildRun {
    bool passed = false;
    std::string output;
};

// Runs this program with `arguments` and collects what it prints.
ChildRun RunSelf(std::vector<std::string> arguments) {
    arguments[0] = std::filesystem::read_symlink("/proc/self/exe").string();
    std::string command;
    for (const auto& argument : arguments) {
        command += " '";
        for (char c : argument) {
            command += c == '\'' ? std::string("'\\''") : std::string(1, c);
        }
        command += "'";
    }
    ChildRun run;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe) {
        run.output = "cannot start the test process\n";
        return run;
    }
    char chunk[4096];
    for (size_t got; (got = fread(chunk, 1, sizeof(chunk), pipe)) > 0;) {
        run.output.append(chunk, got);
    }
    int status = pclose(pipe);
    run.passed = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return run;
}

// The full names gtest lists: "Suite." lines, then indented test names; a
// comment after either (type or parameter) is not part of the name.
std::vector<std::string> ListedTests(const std::string& listing) {
    std::vector<std::string> tests;
    std::string suite;
    std::istringstream lines(listing);
    for (std::string line; std::getline(lines, line);) {
        bool indented = line.starts_with("  ");
        std::string name = line.substr(indented ? 2 : 0);
        name = name.substr(0, name.find(' '));
        if (indented && !name.empty()) {
            tests.push_back(suite + name);
        } else if (!indented) {
            suite = name;
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
    setenv("CONNECTKIT_TEST_CHILD", "1", 1);
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
        ChildRun run = RunSelf(single);
        if (!run.passed) {
            std::fputs(run.output.c_str(), stdout);
            failed.push_back(test);
        }
        std::printf("[ %s ] %s\n", run.passed ? "      OK" : " FAILED ", test.c_str());
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
