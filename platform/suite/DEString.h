#pragma once
// String conversions of the suite's utility library. Invalid input never
// throws: bad UTF-8 sequences become U+FFFD.

#include <string>

namespace DE {

std::wstring UTF8ToUnicode(const std::string& text);
std::string UnicodeToUTF8(const std::wstring& text);
// The text's Unicode code points; lone surrogates become U+FFFD.
std::u32string CodePoints(const std::wstring& text);
// Text in the ANSI code page, taken as Windows-1252's ASCII and Latin-1 range.
std::wstring ANSIToUnicode(const std::string& text);

}  // namespace DE
