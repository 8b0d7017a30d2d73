#include "wifi/WlanProfile.h"

#include <algorithm>
#include <cstdio>
#include <initializer_list>
#include <iterator>
#include <utility>

#include "platform/suite/DEString.h"

namespace connectkit::wifi {
namespace {

constexpr size_t kMaxProfileChars = 32767;

// clang-format off
constexpr wchar_t kSecuredTemplate[] =
    L"<?xml version = \"1.0\" encoding = \"us-ascii\" ?>     <WLANProfile xmlns = \"%s\">         <name>%s</name>         <SSIDConfig>             <SSID>                 <hex>%s</hex>                 <name>%s</name>             </SSID>         </SSIDConfig>         <connectionType>ESS</connectionType>         <connectionMode>manual</connectionMode>         <MSM>             <security>                 <authEncryption>                     <authentication>%s</authentication>                     <encryption>%s</encryption>                     <useOneX>false</useOneX>                 </authEncryption>                 <sharedKey>                     <keyType>passPhrase</keyType>                     <protected>false</protected>                     <keyMaterial>%s</keyMaterial >                 </sharedKey>             </security>         </MSM>          <MacRandomization xmlns = \"%s\">             <enableRandomization>false</enableRandomization>         </MacRandomization>     </WLANProfile>";

constexpr wchar_t kOpenTemplate[] =
    L"<?xml version = \"1.0\" encoding = \"us-ascii\" ?>     <WLANProfile xmlns = \"%s\">         <name>%s</name>         <SSIDConfig>             <SSID>                 <hex>%s</hex>                 <name>%s</name>             </SSID>             <nonBroadcast>false</nonBroadcast>         </SSIDConfig>         <connectionType>ESS</connectionType>         <connectionMode>manual</connectionMode>         <MSM>             <security>                 <authEncryption>                     <authentication>open</authentication>                     <encryption>none</encryption>                     <useOneX>false</useOneX>                 </authEncryption>             </security>         </MSM>     </WLANProfile>";
// clang-format on

constexpr char32_t kReplacement = 0xFFFD;

constexpr std::pair<char32_t, const wchar_t*> kEntities[] = {
    {U'&', L"&amp;"}, {U'<', L"&lt;"}, {U'>', L"&gt;"}, {U'"', L"&quot;"}, {U'\'', L"&apos;"},
};

bool XmlCanCarry(char32_t code) {
    return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
           (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

void AppendReference(std::wstring& out, char32_t code) {
    out += L"&#" + std::to_wstring(static_cast<uint32_t>(code)) + L";";
}

// Fills each "%s" of the template with the next argument, as swprintf_s
// would with already escaped texts.
std::wstring Format(const wchar_t* pattern, std::initializer_list<std::wstring> arguments) {
    std::wstring out;
    auto next = arguments.begin();
    for (const wchar_t* p = pattern; *p; ++p) {
        if (p[0] == L'%' && p[1] == L's' && next != arguments.end()) {
            out += *next++;
            ++p;
        } else {
            out.push_back(*p);
        }
    }
    return out;
}

size_t Length(const wchar_t* text) {
    return std::char_traits<wchar_t>::length(text);
}

}  // namespace

std::wstring HexString(const std::wstring& text) {
    const std::string utf8 = DE::UnicodeToUTF8(text);
    std::wstring hex;
    for (unsigned char byte : utf8) {
        wchar_t digits[3] = {};
        std::swprintf(digits, 3, L"%x", static_cast<unsigned int>(byte));
        hex += digits;
    }
    return hex;
}

std::wstring EscapeXml(const std::wstring& text) {
    std::wstring out;
    out.reserve(text.size());
    for (char32_t code : DE::CodePoints(text)) {
        const auto* entity =
            std::find_if(std::begin(kEntities), std::end(kEntities),
                         [code](const auto& candidate) { return candidate.first == code; });
        if (entity != std::end(kEntities)) {
            out += entity->second;
            continue;
        }
        if (!XmlCanCarry(code)) {
            AppendReference(out, kReplacement);
        } else if (code > 0x7E || (code < 0x20)) {
            AppendReference(out, code);
        } else {
            out.push_back(static_cast<wchar_t>(code));
        }
    }
    return out;
}

std::wstring BuildProfile(const WifiConnectManage::ApInfo& info, const std::wstring& hex,
                          const std::wstring& profileNamespace,
                          const std::wstring& randomizationNamespace, bool& formatFailed) {
    formatFailed = false;
    const size_t total = profileNamespace.size() + randomizationNamespace.size() +
                         info.ssid.size() + info.key.size() + info.authentication.size() +
                         info.encryption.size() + hex.size() + Length(kSecuredTemplate) +
                         Length(kOpenTemplate);
    if (total > kMaxProfileChars) {
        return {};
    }
    const std::wstring ssid = EscapeXml(info.ssid);
    std::wstring profile;
    if (!info.key.empty()) {
        profile = Format(kSecuredTemplate,
                         {profileNamespace, ssid, hex, ssid, EscapeXml(info.authentication),
                          EscapeXml(info.encryption), EscapeXml(info.key), randomizationNamespace});
    } else {
        profile = Format(kOpenTemplate, {profileNamespace, ssid, hex, ssid});
    }
    // The text and its terminator must fit the buffer the lengths add up to.
    if (profile.size() + 1 > total) {
        formatFailed = true;
        return {};
    }
    return profile;
}

}  // namespace connectkit::wifi
