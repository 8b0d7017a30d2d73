// A host program as the suite's modules are: it links connectkit as a shared
// library, configures log4cplus its own way and expects the library's lines
// to reach its appenders with their file, line and function. One mode per
// run, each in a fresh process:
//   properties FILE       a properties file whose appender writes to a file
//   unconfigured          nothing configured at all
// Exits 0 when the library's lines (or, unconfigured, log4cplus's own
// diagnostic) arrived and nothing crashed.

#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

#include <connectkit/ChannelList.h>

#include <cstdio>
#include <cwchar>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace {

// The channel planner logs through log4cplus's own macros, so its lines carry
// its source file, line and function.
constexpr wchar_t kLibraryFile[] = L"ChannelSelect.cpp";
constexpr wchar_t kLibraryFunction[] = L"GetPCChannelList";
constexpr wchar_t kLibraryText[] = L"GetPCChannelList PC countryCode:";

void UseTheLibrary() {
    std::string list24;
    std::string list5;
    int countryCode = -1;
    GetPCChannelList(list24, list5, countryCode);
}

int Fail(const std::string& why) {
    std::fprintf(stderr, "log host: %s\n", why.c_str());
    return 1;
}

// The properties file's layout writes "file:line function | message".
int ConfiguredByFile(const std::string& properties) {
    std::remove("host-log.txt");
    log4cplus::PropertyConfigurator::doConfigure(
        std::wstring(properties.begin(), properties.end()));
    UseTheLibrary();
    log4cplus::Logger::getRoot().closeNestedAppenders();
    std::wifstream log("host-log.txt");
    for (std::wstring line; std::getline(log, line);) {
        std::wstring origin = line.substr(0, line.find(L" | "));
        size_t file = origin.find(std::wstring(kLibraryFile) + L":");
        if (line.find(kLibraryText) != std::wstring::npos && file != std::wstring::npos &&
            std::wcstol(origin.c_str() + file + std::wcslen(kLibraryFile) + 1, nullptr, 10) > 0 &&
            origin.find(kLibraryFunction) != std::wstring::npos) {
            return 0;
        }
    }
    return Fail("host-log.txt holds no line of the library with its file, line and function");
}

// With nothing configured log4cplus says so on the wide standard error
// stream, naming the library's logger: its lines went to log4cplus and no
// appender of ours stood in for the host's.
int Unconfigured() {
    std::wstringstream captured;
    std::wstreambuf* previous = std::wcerr.rdbuf(captured.rdbuf());
    UseTheLibrary();
    std::wcerr.rdbuf(previous);
    if (captured.str().find(L"No appenders could be found for logger (connectkit)") ==
        std::wstring::npos) {
        return Fail("log4cplus did not report the missing configuration");
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    log4cplus::Initializer initializer;
    std::string mode = argc > 1 ? argv[1] : "";
    std::string file = argc > 2 ? argv[2] : "";
    if (mode == "properties" && !file.empty()) {
        return ConfiguredByFile(file);
    }
    if (mode == "unconfigured") {
        return Unconfigured();
    }
    return Fail("usage: connectkit_log_host properties FILE | unconfigured");
}
