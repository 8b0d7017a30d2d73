#pragma once
// The suite's printf-style log functions. Each formats into a 513-element
// stack buffer and hands the line, ending in "(LogWarnFun)" or
// "(LogErrorFun)", to the process logger (GetLogger()) at warning (30000) or
// error (40000) level. A message of 512 or more elements is dropped whole.
// Nothing is ever thrown out of them.
//
// Wide strings are formatted with "%ls" in both forms.

// Lets the compiler check narrow formats against their arguments. mingw-w64
// builds format with its C99 stdio, hence GCC's GNU dialect there too.
#if defined(__clang__)
#define CONNECTKIT_PRINTF_FORMAT __attribute__((format(printf, 1, 2)))
#elif defined(__GNUC__)
#define CONNECTKIT_PRINTF_FORMAT __attribute__((format(gnu_printf, 1, 2)))
#else
#define CONNECTKIT_PRINTF_FORMAT
#endif

void LogWarnFun(const char* format, ...) CONNECTKIT_PRINTF_FORMAT;
void LogErrorFun(const char* format, ...) CONNECTKIT_PRINTF_FORMAT;
void LogWarnFun(const wchar_t* format, ...);
void LogErrorFun(const wchar_t* format, ...);
