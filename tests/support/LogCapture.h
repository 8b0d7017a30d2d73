#pragma once
// Captures what reaches the library's logger while it lives, with the file,
// line and function log4cplus was handed.

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <mutex>
#include <string>
#include <vector>

namespace connectkit::test {

struct CapturedLine {
    int level = 0;
    std::wstring message;
    std::string file;
    int line = 0;
    std::string function;
};

class LogCapture {
public:
    // Sets the logger's level for the capture's lifetime.
    explicit LogCapture(log4cplus::LogLevel level = log4cplus::TRACE_LOG_LEVEL);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<CapturedLine> Lines() const;
    // Messages that contain `part`.
    size_t Count(const std::wstring& part) const;
    bool Contains(const std::wstring& part) const { return Count(part) > 0; }

private:
    class Appender;
    log4cplus::SharedAppenderPtr appender_;
    Appender* sink_;
    log4cplus::LogLevel previousLevel_;
};

}  // namespace connectkit::test
