#include "platform/suite/DEString.h"

#include <cstdint>
#include <vector>

#include "foundation/Hex.h"

namespace DE {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

void AppendWide(std::wstring& out, char32_t code) {
    if constexpr (sizeof(wchar_t) == 2) {
        if (code >= 0x10000) {
            code -= 0x10000;
            out.push_back(static_cast<wchar_t>(0xD800 + (code >> 10)));
            out.push_back(static_cast<wchar_t>(0xDC00 + (code & 0x3FF)));
            return;
        }
    }
    out.push_back(static_cast<wchar_t>(code));
}

void AppendUtf8(std::string& out, char32_t code) {
    if (code < 0x80) {
        out.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (code >> 6)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else if (code < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (code >> 12)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (code >> 18)));
        out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
}

}  // namespace

std::wstring UTF8ToUnicode(const std::string& text) {
    std::wstring out;
    out.reserve(text.size());
    size_t i = 0;
    while (i < text.size()) {
        auto lead = static_cast<uint8_t>(text[i]);
        int length = lead < 0x80           ? 1
                     : (lead >> 5) == 0x6  ? 2
                     : (lead >> 4) == 0xE  ? 3
                     : (lead >> 3) == 0x1E ? 4
                                           : 0;
        if (length == 0 || i + length > text.size()) {
            AppendWide(out, kReplacement);
            ++i;
            continue;
        }
        char32_t code = length == 1 ? lead : lead & (0x7F >> length);
        bool valid = true;
        for (int k = 1; k < length; ++k) {
            auto next = static_cast<uint8_t>(text[i + k]);
            valid = valid && (next & 0xC0) == 0x80;
            code = (code << 6) | (next & 0x3F);
        }
        static constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
        if (!valid || code < kSmallest[length] || code > 0x10FFFF ||
            (code >= 0xD800 && code <= 0xDFFF)) {
            AppendWide(out, kReplacement);
            ++i;
            continue;
        }
        AppendWide(out, code);
        i += length;
    }
    return out;
}

std::u32string CodePoints(const std::wstring& text) {
    std::u32string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        auto code = static_cast<char32_t>(text[i]);
        if constexpr (sizeof(wchar_t) == 2) {
            code &= 0xFFFF;
            if (code >= 0xD800 && code <= 0xDBFF && i + 1 < text.size()) {
                auto low = static_cast<char32_t>(text[i + 1]) & 0xFFFF;
                if (low >= 0xDC00 && low <= 0xDFFF) {
                    out.push_back(0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00));
                    ++i;
                    continue;
                }
            }
        }
        if ((code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF) {
            code = kReplacement;
        }
        out.push_back(code);
    }
    return out;
}

std::string UnicodeToUTF8(const std::wstring& text) {
    std::string out;
    out.reserve(text.size());
    for (char32_t code : CodePoints(text)) {
        AppendUtf8(out, code);
    }
    return out;
}

bool HexStringToBytesString(const std::string& hex, std::string& bytes) {
    bytes.clear();
    std::vector<uint8_t> raw;
    if (!connectkit::HexToBytes(hex, raw)) {
        return false;
    }
    bytes.assign(raw.begin(), raw.end());
    return true;
}

std::wstring ANSIToUnicode(const std::string& text) {
    std::wstring out;
    out.reserve(text.size());
    for (unsigned char c : text) {
        out.push_back(static_cast<wchar_t>(c));
    }
    return out;
}

}  // namespace DE
