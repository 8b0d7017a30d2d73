#include "platform/windows/machine/MultiSz.h"

#include <algorithm>

namespace connectkit::win {

std::vector<std::wstring> SplitMultiSz(const wchar_t* data, size_t count) {
    std::vector<std::wstring> strings;
    const wchar_t* end = data + count;
    for (const wchar_t* cursor = data; cursor < end;) {
        const wchar_t* stop = std::find(cursor, end, L'\0');
        if (stop == cursor) {
            break;
        }
        strings.emplace_back(cursor, stop);
        cursor = stop + 1;
    }
    return strings;
}

}  // namespace connectkit::win
