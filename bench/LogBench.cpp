// The log functions against log4cplus's own formatting macro, to the same
// appender, and with warnings disabled against a bare vsnprintf of the text.
//
// The appender is what a host really configures: a file appender with a
// time-stamped pattern layout (writing to a scratch file), so both sides pay
// the same for the event's trip through log4cplus.

#include <benchmark/benchmark.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/layout.h>
#include <log4cplus/loggingmacros.h>

#include <cstdarg>
#include <cstdio>
#include <filesystem>

#include "Ratios.h"
#include "SDK/Util/LogTool/LogTool.h"
#include "SDK/Util/LogTool/Logger.h"

namespace connectkit::bench {
namespace {

constexpr const wchar_t* kWideFormat =
    L"%ls 6 Starting soft AP success,totalCount=%llu,succCount=%llu,failCount=%llu, "
    L"continueFailCount=%u";
constexpr const char* kNarrowFormat =
    "%s 6 Starting soft AP success,totalCount=%llu,succCount=%llu,failCount=%llu, "
    "continueFailCount=%u";

void UseFileAppender() {
    static bool done = [] {
        auto path = std::filesystem::temp_directory_path() / "connectkit-bench.log";
        log4cplus::SharedAppenderPtr appender(
            new log4cplus::FileAppender(path.wstring(), std::ios_base::trunc));
        appender->setLayout(std::make_unique<log4cplus::PatternLayout>(
            LOG4CPLUS_TEXT("%D{%Y-%m-%d %H:%M:%S.%q} %-5p %m%n")));
        log4cplus::Logger logger = GetLogger();
        logger.removeAllAppenders();
        logger.addAppender(appender);
        logger.setAdditivity(false);
        return true;
    }();
    (void)done;
}

void SetLevel(log4cplus::LogLevel level) {
    log4cplus::Logger logger = GetLogger();
    logger.setLogLevel(level);
}

void LogWarnFunEnabled(benchmark::State& state) {
    UseFileAppender();
    SetLevel(log4cplus::TRACE_LOG_LEVEL);
    unsigned long long n = 0;
    for (auto _ : state) {
        ++n;
        LogWarnFun(kWideFormat, L"ConnectKit::LegacyAP::Start", n, n, 0ull, 0u);
    }
}
BENCHMARK(LogWarnFunEnabled);

void Log4cplusWarnFmt(benchmark::State& state) {
    UseFileAppender();
    log4cplus::Logger logger = GetLogger();
    logger.setLogLevel(log4cplus::TRACE_LOG_LEVEL);
    unsigned long long n = 0;
    for (auto _ : state) {
        ++n;
        LOG4CPLUS_WARN_FMT(logger, kWideFormat, L"ConnectKit::LegacyAP::Start", n, n, 0ull, 0u);
    }
}
BENCHMARK(Log4cplusWarnFmt);

void LogWarnFunDisabled(benchmark::State& state) {
    SetLevel(log4cplus::ERROR_LOG_LEVEL);
    unsigned long long n = 0;
    for (auto _ : state) {
        ++n;
        LogWarnFun(kNarrowFormat, "ConnectKit::LegacyAP::Start", n, n, 0ull, 0u);
    }
    SetLevel(log4cplus::TRACE_LOG_LEVEL);
}
BENCHMARK(LogWarnFunDisabled);

int FormatPlain(char* buffer, size_t size, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int length = std::vsnprintf(buffer, size, format, args);
    va_end(args);
    return length;
}

void PlainVsnprintf(benchmark::State& state) {
    char buffer[513];
    unsigned long long n = 0;
    for (auto _ : state) {
        ++n;
        benchmark::DoNotOptimize(
            FormatPlain(buffer, 512, kNarrowFormat, "ConnectKit::LegacyAP::Start", n, n, 0ull, 0u));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(PlainVsnprintf);

unsigned long long g_counter = 0;

const bool registered = [] {
    AddRatio({"log_enabled",
              [] {
                  UseFileAppender();
                  SetLevel(log4cplus::TRACE_LOG_LEVEL);
              },
              [] {
                  ++g_counter;
                  LogWarnFun(kWideFormat, L"ConnectKit::LegacyAP::Start", g_counter, g_counter,
                             0ull, 0u);
              },
              [] {
                  ++g_counter;
                  LOG4CPLUS_WARN_FMT(GetLogger(), kWideFormat, L"ConnectKit::LegacyAP::Start",
                                     g_counter, g_counter, 0ull, 0u);
              },
              "<=",
              1.10,
              50,
              {}});
    AddRatio({"log_disabled",
              [] { SetLevel(log4cplus::ERROR_LOG_LEVEL); },
              [] {
                  ++g_counter;
                  LogWarnFun(kNarrowFormat, "ConnectKit::LegacyAP::Start", g_counter, g_counter,
                             0ull, 0u);
              },
              [] {
                  char buffer[513];
                  ++g_counter;
                  benchmark::DoNotOptimize(FormatPlain(buffer, 512, kNarrowFormat,
                                                       "ConnectKit::LegacyAP::Start", g_counter,
                                                       g_counter, 0ull, 0u));
              },
              "<=",
              1.10,
              500,
              {}});
    return true;
}();

}  // namespace
}  // namespace connectkit::bench
