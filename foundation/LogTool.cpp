#include "SDK/Util/LogTool/LogTool.h"

#include <log4cplus/loggingmacros.h>
#include <cstdarg>

#include "SDK/Util/LogTool/Logger.h"
#include "foundation/LogFormat.h"

namespace {

// File, line and function handed to log4cplus are those of the log function
// itself, the same for every message of a variant.
constexpr char kLogToolFile[] = "include/SDK/Util/LogTool/LogTool.h";

struct Variant {
    log4cplus::LogLevel level;
    const wchar_t* shortName;
    int line;
    const char* signature;
};

constexpr Variant kWarnNarrow{log4cplus::WARN_LOG_LEVEL, L"LogWarnFun", 55,
                              "void __cdecl LogWarnFun(const char *,...)"};
constexpr Variant kErrorNarrow{log4cplus::ERROR_LOG_LEVEL, L"LogErrorFun", 69,
                               "void __cdecl LogErrorFun(const char *,...)"};
constexpr Variant kWarnWide{log4cplus::WARN_LOG_LEVEL, L"LogWarnFun", 111,
                            "void __cdecl LogWarnFun(const wchar_t *,...)"};
constexpr Variant kErrorWide{log4cplus::ERROR_LOG_LEVEL, L"LogErrorFun", 125,
                             "void __cdecl LogErrorFun(const wchar_t *,...)"};

// Each char becomes the wchar_t of the same value: no code page is involved.
void WriteText(log4cplus::tostringstream& stream, const char* text) {
    wchar_t widened[connectkit::kLogBufferElements];
    size_t length = 0;
    while (text[length] != '\0' && length < connectkit::kLogBufferElements - 1) {
        widened[length] = static_cast<wchar_t>(static_cast<unsigned char>(text[length]));
        ++length;
    }
    stream.write(widened, static_cast<std::streamsize>(length));
}

void WriteText(log4cplus::tostringstream& stream, const wchar_t* text) {
    stream << text;
}

template <class Char>
void Emit(const Variant& variant, const Char* format, va_list args) {
    try {
        Char buffer[connectkit::kLogBufferElements];
        if (connectkit::FormatLogMessage(buffer, format, args) < 0) {
            return;
        }
        // Through the reference, not a copy: a copy only takes and drops a
        // reference on the shared logger, two atomic read-modify-writes that
        // cost a disabled call about a tenth of its formatting and that every
        // logging thread contends on. GetLogger()'s own copy keeps the logger
        // alive while the library is loaded.
        const log4cplus::Logger& logger = GetLogger();
        if (!logger.isEnabledFor(variant.level)) {
            return;
        }
        log4cplus::tostringstream& stream = log4cplus::detail::get_macro_body_oss();
        WriteText(stream, buffer);
        stream << L"(" << variant.shortName << L")";
        log4cplus::detail::macro_forced_log(logger, variant.level, stream.str(), kLogToolFile,
                                            variant.line, variant.signature);
    } catch (...) {
        // A logger that throws must not take its caller down.
    }
}

}  // namespace

void LogWarnFun(const char* format, ...) {
    va_list args;
    va_start(args, format);
    Emit(kWarnNarrow, format, args);
    va_end(args);
}

void LogErrorFun(const char* format, ...) {
    va_list args;
    va_start(args, format);
    Emit(kErrorNarrow, format, args);
    va_end(args);
}

void LogWarnFun(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    Emit(kWarnWide, format, args);
    va_end(args);
}

void LogErrorFun(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    Emit(kErrorWide, format, args);
    va_end(args);
}
