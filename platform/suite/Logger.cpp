#include "SDK/Util/LogTool/Logger.h"

// One logger of the process's log4cplus hierarchy, which the host configures:
// log4cplus is a shared library, so the host's appenders and levels (set on
// the root or on "connectkit") are the library's. The library adds none.
// log4cplus is loaded before the library and unloaded after it, so the logger
// kept here never outlives the hierarchy it belongs to.
const log4cplus::Logger& GetLogger() {
    static const log4cplus::Logger logger =
        log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("connectkit"));
    return logger;
}
