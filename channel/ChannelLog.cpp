#include "channel/ChannelLog.h"

#include <cstdarg>

#include "foundation/LogFormat.h"

namespace ConnectKit {

std::wstring ChannelLogText(const char* format, ...) {
    char buffer[connectkit::kLogBufferElements];
    va_list args;
    va_start(args, format);
    int length = connectkit::FormatLogMessage(buffer, format, args);
    va_end(args);
    if (length < 0) {
        return L"";
    }
    std::wstring text;
    for (int i = 0; i < length; ++i) {
        text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(buffer[i])));
    }
    return text;
}

}  // namespace ConnectKit
