#include "support/LogCapture.h"

#include <log4cplus/spi/loggingevent.h>

#include "SDK/Util/LogTool/Logger.h"

namespace connectkit::test {

class LogCapture::Appender final : public log4cplus::Appender {
public:
    ~Appender() override { destructorImpl(); }
    void close() override {}

    std::vector<CapturedLine> Lines() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return lines_;
    }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override {
        std::lock_guard<std::mutex> lock(mutex_);
        lines_.push_back(CapturedLine{
            event.getLogLevel(), event.getMessage(),
            std::string(event.getFile().begin(), event.getFile().end()), event.getLine(),
            std::string(event.getFunction().begin(), event.getFunction().end())});
    }

private:
    mutable std::mutex mutex_;
    std::vector<CapturedLine> lines_;
};

LogCapture::LogCapture(log4cplus::LogLevel level)
    : sink_(new Appender()), previousLevel_(GetLogger().getLogLevel()) {
    appender_ = log4cplus::SharedAppenderPtr(sink_);
    log4cplus::Logger logger = GetLogger();
    logger.addAppender(appender_);
    logger.setLogLevel(level);
}

LogCapture::~LogCapture() {
    log4cplus::Logger logger = GetLogger();
    logger.removeAppender(appender_);
    logger.setLogLevel(previousLevel_);
}

std::vector<CapturedLine> LogCapture::Lines() const {
    return sink_->Lines();
}

size_t LogCapture::Count(const std::wstring& part) const {
    size_t count = 0;
    for (const auto& line : sink_->Lines()) {
        count += line.message.find(part) != std::wstring::npos ? 1 : 0;
    }
    return count;
}

}  // namespace connectkit::test
