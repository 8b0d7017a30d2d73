#pragma once
// Debug-level traces: formatted into a 512-byte buffer, as the suite's
// release builds do, and then dropped. They cost what the real ones cost and
// never reach the logger.

#include "SDK/Util/LogTool/LogTool.h"

void DebugTrace(const char* format, ...) CONNECTKIT_PRINTF_FORMAT;
