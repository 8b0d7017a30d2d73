#include "platform/windows/machine/AdapterKind.h"

#include <algorithm>
#include <cwctype>

namespace connectkit::win {
namespace {

constexpr std::wstring_view kWiFiDirectVirtualName = L"wi-fi direct virtual adapter";

bool ContainsIgnoringCase(std::wstring_view text, std::wstring_view lowerNeedle) {
    auto found = std::search(
        text.begin(), text.end(), lowerNeedle.begin(), lowerNeedle.end(), [](wchar_t a, wchar_t b) {
            return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(a))) == b;
        });
    return found != text.end();
}

}  // namespace

platform::NetworkAdapterInfo::Kind AdapterKind(uint32_t ifType, std::wstring_view description) {
    using Kind = platform::NetworkAdapterInfo::Kind;
    if (ContainsIgnoringCase(description, kWiFiDirectVirtualName)) {
        return Kind::WiFiDirectVirtual;
    }
    return ifType == kIfTypeIeee80211 ? Kind::Wifi : Kind::Other;
}

}  // namespace connectkit::win
