#include "platform/suite/NetworkAdapter.h"

#include <cwctype>

#include "platform/Platform.h"

namespace {

bool Mentions(const std::wstring& text, const std::wstring& word) {
    std::wstring lower;
    for (wchar_t c : text) {
        lower.push_back(static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c))));
    }
    return lower.find(word) != std::wstring::npos;
}

}  // namespace

WifiCardManuType NetworkAdapter::GetWifiManuType() {
    std::vector<connectkit::platform::NetworkAdapterInfo> adapters;
    connectkit::platform::Current().adapters().List(adapters);
    for (const auto& adapter : adapters) {
        if (adapter.kind != connectkit::platform::NetworkAdapterInfo::Kind::Wifi) {
            continue;
        }
        if (Mentions(adapter.description, L"intel")) {
            return WIFI_CARD_INTEL;
        }
        if (Mentions(adapter.description, L"realtek")) {
            return WIFI_CARD_REALTEK;
        }
        return WIFI_CARD_OTHER;
    }
    return WIFI_CARD_OTHER;
}
