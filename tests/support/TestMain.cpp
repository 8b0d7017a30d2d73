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

namespace {

// Every test starts from the process's first singletons. ctest starts one
// process per test; run whole, this program does the same by running itself
// as shard i of as many shards as it has tests: each shard then holds the
// i-th selected test or none, and the first empty one ends the run.
bool RunShard(const std::vector<std::string>& arguments, int shard, int shards,
              std::string& output) {
    setenv("GTEST_TOTAL_SHARDS", std::to_string(shards).c_str(), 1);
    setenv("GTEST_SHARD_INDEX", std::to_string(shard).c_str(), 1);
    std::string command = std::filesystem::read_symlink("/proc/self/exe").string();
    for (size_t i = 1; i < arguments.size(); ++i) {
        command += " '";
        for (char c : arguments[i]) {
            command += c == '\'' ? std::string("'\\''") : std::string(1, c);
        }
        command += "'";
    }
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe) {
        output = "cannot start the test process\n";
        return false;
    }
    char chunk[4096];
    for (size_t got; (got = fread(chunk, 1, sizeof(chunk), pipe)) > 0;) {
        output.append(chunk, got);
    }
    int status = pclose(pipe);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::optional<int> RunEachTestInItsOwnProcess(const std::vector<std::string>& arguments) {
    // ctest names exactly one test: no need to ask which tests there are.
    std::string filter = GTEST_FLAG_GET(filter);
    bool oneTest = filter.find_first_of("*?:-") == std::string::npos;
    if (std::getenv("CONNECTKIT_TEST_CHILD") || GTEST_FLAG_GET(list_tests) || oneTest) {
        return std::nullopt;
    }
    setenv("CONNECTKIT_TEST_CHILD", "1", 1);
    const int shards = testing::UnitTest::GetInstance()->total_test_count();
    const std::string started = "[ RUN      ] ";
    std::vector<std::string> failed;
    int ran = 0;
    for (; ran < shards; ++ran) {
        std::string output;
        bool passed = RunShard(arguments, ran, shards, output);
        size_t at = output.find(started);
        if (at == std::string::npos) {
            if (passed) {
                break;
            }
            std::fputs(output.c_str(), stderr);
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
