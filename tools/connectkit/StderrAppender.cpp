#include "StderrAppender.h"

#include <iostream>

#include "platform/suite/DEString.h"

namespace connectkit::tool {

StderrAppender::~StderrAppender() {
    destructorImpl();
}

void StderrAppender::close() {
    closed = true;
}

// log4cplus calls this under the appender's own lock, one line at a time.
void StderrAppender::append(const log4cplus::spi::InternalLoggingEvent& event) {
    std::cerr << DE::UnicodeToUTF8(formatEvent(event));
    std::cerr.flush();
}

}  // namespace connectkit::tool
