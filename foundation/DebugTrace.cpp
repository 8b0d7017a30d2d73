#include "foundation/DebugTrace.h"

#include <cstdarg>
#include <cstdio>

void DebugTrace(const char* format, ...) {
    char buffer[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof(buffer), format, args);
    va_end(args);
}
