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

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace {

// Every test starts from the process's first singletons. ctest starts one
// process per test; run whole, this program does the same by running itself
// as shard i of as many shards as it has tests: each shard then holds the
// i-th selected test or none, and the first empty one ends the round. The
// children get this run's arguments, but run their test once: a repeat
// inside one process would not start from fresh singletons, so this process
// repeats the rounds instead.
std::optional<int> RunEachTestInItsOwnProcess(std::vector<std::string> arguments) {
    const std::string filter = GTEST_FLAG_GET(filter);
    // ctest names exactly one test: no need to ask which tests there are.
    if (std::getenv("CONNECTKIT_TEST_CHILD") || GTEST_FLAG_GET(list_tests) ||
        filter.find_first_of("*?:-") == std::string::npos) {
        return std::nullopt;
    }
    const int shards = testing::UnitTest::GetInstance()->total_test_count();
    setenv("CONNECTKIT_TEST_CHILD", "1", 1);
    setenv("GTEST_TOTAL_SHARDS", std::to_string(shards).c_str(), 1);
    // A negative repeat asks for rounds without end, as gtest's own does.
    const int repeat = GTEST_FLAG_GET(repeat);
    arguments[0] = std::filesystem::read_symlink("/proc/self/exe").string();
    arguments.push_back("--gtest_repeat=1");
    std::string self;
    for (const auto& argument : arguments) {
        self += " '";
        for (char c : argument) {
            self += c == '\'' ? std::string("'\\''") : std::string(1, c);
        }
        self += "'";
    }
    self += " 2>&1";
    const std::string started = "[ RUN      ] ";
    std::vector<std::string> failed;
    int ran = 0;
    for (int round = 0; repeat < 0 || round < std::max(repeat, 1); ++round) {
        for (int shard = 0; shard < shards; ++shard, ++ran) {
            setenv("GTEST_SHARD_INDEX", std::to_string(shard).c_str(), 1);
            std::string output;
            FILE* pipe = popen(self.c_str(), "r");
            char chunk[4096];
            for (size_t got; pipe && (got = fread(chunk, 1, sizeof(chunk), pipe)) > 0;) {
                output.append(chunk, got);
            }
            const int status = pipe ? pclose(pipe) : -1;
            const bool passed = WIFEXITED(status) && WEXITSTATUS(status) == 0;
            size_t at = output.find(started);
            if (at == std::string::npos) {
                if (passed) {
                    break;
                }
                std::fputs(output.empty() ? "cannot start the test process\n" : output.c_str(),
                           stderr);
                return 1;
            }
            at += started.size();
            std::string test = output.substr(at, output.find('\n', at) - at);
            if (!passed) {
                std::fputs(output.c_str(), stdout);
                failed.push_back(test);
            }
            std::printf("[ %s ] %s\n", passed ? "      OK" : " FAILED ", test.c_str());
            std::fflush(stdout);
        }
    }
    std::printf("[==========] %d tests, each in a process of its own.\n[  PASSED  ] %zu tests.\n",
                ran, ran - failed.size());
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
    const std::vector<std::string> arguments(argv, argv + argc);
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
