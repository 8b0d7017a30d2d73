#pragma once
// REG_MULTI_SZ text: strings each ended by a NUL, the list ended by one more.

#include <string>
#include <vector>

namespace connectkit::win {

// The strings of `count` characters of multi-string data. Stops at the empty
// string that ends the list or at `count`, so a missing final terminator never
// reads past the data.
std::vector<std::wstring> SplitMultiSz(const wchar_t* data, size_t count);

}  // namespace connectkit::win
