#pragma once
// The suite's printf-style log functions. Each formats into a 513-element
// stack buffer and hands the line, ending in "(LogWarnFun)" or
// "(LogErrorFun)", to the process logger (GetLogger()) at warning (30000) or
// error (40000) level. A message of 512 or more elements is dropped whole.
// Nothing is ever thrown out of them.
//
// Wide strings are formatted with "%ls" in both forms.

void LogWarnFun(const char* format, ...);
void LogErrorFun(const char* format, ...);
void LogWarnFun(const wchar_t* format, ...);
void LogErrorFun(const wchar_t* format, ...);
