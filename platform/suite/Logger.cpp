#include "SDK/Util/LogTool/Logger.h"

const log4cplus::Logger& GetLogger() {
    static const log4cplus::Logger logger =
        log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("connectkit"));
    return logger;
}
