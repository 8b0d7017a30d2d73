// SSIDs and keys come from the caller and, through the suite, from the
// phone: whatever they hold, the profile must stay well-formed XML whose
// "us-ascii" declaration is true, or Windows refuses it (or reads it wrong).

#include <tinyxml2.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/suite/DEString.h"
#include "wifi/WlanProfile.h"

namespace {

// The first byte picks how the rest reads: as UTF-8 (bad sequences and all),
// or as raw 16-bit code units (lone surrogates and all). The byte after it
// splits the rest into SSID and key.
std::wstring Text(const uint8_t* data, size_t size, bool raw) {
    if (!raw) {
        return DE::UTF8ToUnicode(std::string(reinterpret_cast<const char*>(data), size));
    }
    std::wstring text;
    for (size_t i = 0; i + 1 < size; i += 2) {
        text.push_back(static_cast<wchar_t>(data[i] | (data[i + 1] << 8)));
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) {
        return 0;
    }
    const bool raw = data[0] & 1;
    const size_t split = std::min<size_t>(data[1], size - 2);
    const std::wstring ssid = Text(data + 2, split, raw);
    const std::wstring key = Text(data + 2 + split, size - 2 - split, raw);
    bool formatFailed = false;
    const std::wstring profile = connectkit::wifi::BuildProfile(
        {ssid, key, L"WPA2PSK", L"AES"}, connectkit::wifi::HexString(ssid),
        L"http://www.microsoft.com/networking/WLAN/profile/v1",
        L"http://www.microsoft.com/networking/WLAN/profile/v3", formatFailed);
    if (profile.empty()) {
        return 0;
    }
    std::string text;
    for (wchar_t c : profile) {
        if (c < 0x20 || c > 0x7E) {
            std::fprintf(stderr, "profile holds a character outside printable ASCII\n");
            std::abort();
        }
        text.push_back(static_cast<char>(c));
    }
    tinyxml2::XMLDocument document;
    if (document.Parse(text.c_str(), text.size()) != tinyxml2::XML_SUCCESS ||
        document.FirstChildElement("WLANProfile") == nullptr) {
        std::fprintf(stderr, "malformed profile: %s\n", text.c_str());
        std::abort();
    }
    return 0;
}
