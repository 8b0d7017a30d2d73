#pragma once
// The formatting step of the log functions, kept apart so that it can be
// measured and tested on its own: it must never touch the heap.

#include <cstdarg>
#include <cstddef>

namespace connectkit {

inline constexpr size_t kLogBufferElements = 513;

// Zero-fills the buffer and formats into it with the secure truncating
// formatter's contract: 512 elements of room, and a text that does not fit
// (or a formatting error) gives -1 and is not to be logged. Otherwise the
// length of the text.
int FormatLogMessage(char (&buffer)[kLogBufferElements], const char* format, va_list args);
int FormatLogMessage(wchar_t (&buffer)[kLogBufferElements], const wchar_t* format, va_list args);

}  // namespace connectkit
