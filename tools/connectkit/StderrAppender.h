#pragma once

#include <log4cplus/appender.h>

namespace connectkit::tool {

// Log lines on stderr as UTF-8, through the narrow stream the tool's own
// messages use. log4cplus's console appender writes through std::wcerr: that
// turns stderr wide, after which narrow writes are dropped, and in the C
// locale every character outside ASCII is lost.
class StderrAppender final : public log4cplus::Appender {
public:
    StderrAppender() = default;
    ~StderrAppender() override;
    void close() override;

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override;
};

}  // namespace connectkit::tool
