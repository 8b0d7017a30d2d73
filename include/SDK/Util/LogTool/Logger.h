#pragma once
// The suite's logging library: one process-wide log4cplus logger, named
// "connectkit". Where its lines go is the host's log4cplus configuration.

#include <log4cplus/logger.h>

const log4cplus::Logger& GetLogger();
