#include "foundation/LogFormat.h"

#include <cstdio>
#include <cstring>
#include <cwchar>

namespace connectkit {
namespace {

constexpr size_t kRoom = kLogBufferElements - 1;

}  // namespace

int FormatLogMessage(char (&buffer)[kLogBufferElements], const char* format, va_list args) {
    std::memset(buffer, 0, sizeof(buffer));
    if (!format) {
        return -1;
    }
    int length = std::vsnprintf(buffer, kRoom, format, args);
    if (length < 0 || static_cast<size_t>(length) >= kRoom) {
        return -1;
    }
    buffer[kRoom] = '\0';
    return length;
}

int FormatLogMessage(wchar_t (&buffer)[kLogBufferElements], const wchar_t* format, va_list args) {
    std::wmemset(buffer, 0, kLogBufferElements);
    if (!format) {
        return -1;
    }
    // glibc reports -1 when the text does not fit; mingw-w64's C99 stdio
    // reports the length it needed. Either way the text is dropped.
    int length = std::vswprintf(buffer, kRoom, format, args);
    if (length < 0 || static_cast<size_t>(length) >= kRoom) {
        return -1;
    }
    buffer[kRoom] = L'\0';
    return length;
}

}  // namespace connectkit
