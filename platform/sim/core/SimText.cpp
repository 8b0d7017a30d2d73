#include "platform/sim/core/SimText.h"

#include <cwctype>

namespace connectkit::sim {

std::wstring Lower(const std::wstring& text) {
    std::wstring lower(text);
    for (auto& c : lower) {
        c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
    }
    return lower;
}

std::vector<std::wstring> SplitPath(const std::wstring& path) {
    std::vector<std::wstring> parts;
    std::wstring part;
    for (wchar_t c : path) {
        if (c == L'\\' || c == L'/') {
            if (!part.empty()) {
                parts.push_back(part);
            }
            part.clear();
        } else {
            part.push_back(c);
        }
    }
    if (!part.empty()) {
        parts.push_back(part);
    }
    return parts;
}

std::wstring NormalPath(const std::wstring& path) {
    std::wstring normal;
    for (const auto& part : SplitPath(Lower(path))) {
        if (!normal.empty()) {
            normal += L'\\';
        }
        normal += part;
    }
    return normal;
}

}  // namespace connectkit::sim
