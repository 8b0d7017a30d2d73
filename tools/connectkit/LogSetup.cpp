#include "LogSetup.h"

#include <log4cplus/configurator.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <fstream>
#include <map>

#include "Context.h"
#include "StderrAppender.h"
#include "platform/suite/DEString.h"

namespace connectkit::tool {

bool SetUpLogging(const Options& options, std::string& error) {
    if (!options.logConfig.empty()) {
        if (!std::ifstream(options.logConfig)) {
            error = "log configuration " + options.logConfig + " cannot be opened";
            return false;
        }
        log4cplus::PropertyConfigurator::doConfigure(DE::UTF8ToUnicode(options.logConfig));
        return true;
    }
    static const std::map<std::string, log4cplus::LogLevel> levels = {
        {"trace", log4cplus::TRACE_LOG_LEVEL}, {"debug", log4cplus::DEBUG_LOG_LEVEL},
        {"info", log4cplus::INFO_LOG_LEVEL},   {"warn", log4cplus::WARN_LOG_LEVEL},
        {"error", log4cplus::ERROR_LOG_LEVEL}, {"fatal", log4cplus::FATAL_LOG_LEVEL},
        {"off", log4cplus::OFF_LOG_LEVEL}};
    // Answers come first: log lines only when asked for. A log file or -v
    // without a level shows every line the library writes (it writes at warn
    // and error).
    std::string wanted = options.logLevel;
    if (wanted.empty()) {
        wanted = options.verbose || !options.logFile.empty() ? "warn" : "off";
    }
    auto level = levels.find(wanted);
    if (level == levels.end()) {
        error = "unknown log level '" + options.logLevel +
                "' (trace, debug, info, warn, error, fatal, off)";
        return false;
    }
    log4cplus::SharedAppenderPtr appender;
    if (options.logFile.empty()) {
        appender = new StderrAppender();
    } else {
        if (!std::ofstream(options.logFile, std::ios::app)) {
            error = "log file " + options.logFile + " cannot be written";
            return false;
        }
        appender =
            new log4cplus::FileAppender(DE::UTF8ToUnicode(options.logFile), std::ios_base::app);
    }
    appender->setLayout(std::make_unique<log4cplus::PatternLayout>(
        LOG4CPLUS_TEXT("%D{%Y-%m-%d %H:%M:%S.%q} %-5p %m%n")));
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.removeAllAppenders();
    root.addAppender(appender);
    root.setLogLevel(level->second);
    return true;
}

}  // namespace connectkit::tool
