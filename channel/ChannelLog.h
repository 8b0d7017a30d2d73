#pragma once
// How the channel planner logs. Its lines go through log4cplus's own macros,
// not through LogWarnFun/LogErrorFun, so that each line carries the file,
// line and function that wrote it; the text is formatted as the log
// functions format it (a text of 512 or more elements is dropped).
//
// Every line of the channel lists and the planner is written from
// ChannelSelect.cpp, so each carries that file name; the pure decision
// (ChannelPlan.cpp) does not log.

#include <log4cplus/loggingmacros.h>

#include <string>

#include "SDK/Util/LogTool/LogTool.h"
#include "SDK/Util/LogTool/Logger.h"

namespace ConnectKit {

// The formatted text widened byte by byte; empty when it does not fit.
std::wstring ChannelLogText(const char* format, ...) CONNECTKIT_PRINTF_FORMAT;

}  // namespace ConnectKit

#define CHANNEL_WARN(...) LOG4CPLUS_WARN_STR(GetLogger(), ::ConnectKit::ChannelLogText(__VA_ARGS__))
#define CHANNEL_ERROR(...) \
    LOG4CPLUS_ERROR_STR(GetLogger(), ::ConnectKit::ChannelLogText(__VA_ARGS__))
