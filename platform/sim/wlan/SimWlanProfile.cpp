#include "platform/sim/wlan/SimWlanProfile.h"

#include <cwchar>
#include <optional>

#include "platform/suite/DEString.h"

namespace connectkit::sim::wlan {
namespace {

// The text of XML character data with its references resolved; nullopt for
// an unknown entity or a reference that is no character.
std::optional<std::wstring> Unescape(const std::wstring& text) {
    static const std::pair<const wchar_t*, wchar_t> kEntities[] = {
        {L"amp", L'&'}, {L"lt", L'<'}, {L"gt", L'>'}, {L"quot", L'"'}, {L"apos", L'\''}};
    std::wstring plain;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != L'&') {
            plain.push_back(text[i]);
            continue;
        }
        size_t end = text.find(L';', i);
        if (end == std::wstring::npos) {
            return std::nullopt;
        }
        std::wstring name = text.substr(i + 1, end - i - 1);
        std::optional<wchar_t> character;
        if (name.size() > 1 && name[0] == L'#') {
            bool hex = name[1] == L'x';
            std::wstring digits = name.substr(hex ? 2 : 1);
            wchar_t* stop = nullptr;
            unsigned long code = std::wcstoul(digits.c_str(), &stop, hex ? 16 : 10);
            if (!digits.empty() && *stop == L'\0' && code > 0 && code <= 0x10FFFF) {
                character = static_cast<wchar_t>(code);
            }
        }
        for (const auto& [entity, value] : kEntities) {
            if (name == entity) {
                character = value;
            }
        }
        if (!character) {
            return std::nullopt;
        }
        plain.push_back(*character);
        i = end;
    }
    return plain;
}

// The character data of the first <tag> at or after `from`, up to its
// closing tag (which may carry blanks before its '>').
std::optional<std::wstring> Element(const std::wstring& xml, const std::wstring& tag,
                                    size_t from = 0) {
    size_t open = xml.find(L"<" + tag + L">", from);
    if (open == std::wstring::npos) {
        return std::nullopt;
    }
    size_t begin = open + tag.size() + 2;
    size_t close = xml.find(L"</" + tag, begin);
    if (close == std::wstring::npos || xml.find(L'<', begin) != close) {
        return std::nullopt;
    }
    return Unescape(xml.substr(begin, close - begin));
}

}  // namespace

bool ReadTemporaryProfile(const std::wstring& xml, TemporaryProfile& profile) {
    size_t root = xml.find(L"<WLANProfile");
    size_t ssidElement = xml.find(L"<SSID>");
    if (root == std::wstring::npos || ssidElement == std::wstring::npos) {
        return false;
    }
    auto name = Element(xml, L"name", root);
    auto ssid = Element(xml, L"name", ssidElement);
    auto authentication = Element(xml, L"authentication");
    if (!name || name->empty() || !ssid) {
        return false;
    }
    profile.name = *name;
    profile.ssid = DE::UnicodeToUTF8(*ssid);
    if (profile.ssid.empty() || profile.ssid.size() > 32) {
        return false;
    }
    profile.secured = authentication && *authentication != L"open";
    auto key = Element(xml, L"keyMaterial");
    if (profile.secured && !key) {
        return false;
    }
    profile.key = key ? DE::UnicodeToUTF8(*key) : "";
    return true;
}

}  // namespace connectkit::sim::wlan
