#pragma once
// String conversions of the suite's utility library. Invalid input never
// throws: bad UTF-8 sequences become U+FFFD.

#include <string>

namespace DE {

std::wstring UTF8ToUnicode(const std::string& text);
std::string UnicodeToUTF8(const std::wstring& text);
// "A1B2" to the bytes A1 B2. False, with `bytes` empty, for text of odd
// length or with a character that is not a hexadecimal digit.
bool HexStringToBytesString(const std::string& hex, std::string& bytes);

}  // namespace DE
