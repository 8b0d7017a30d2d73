#pragma once
// Which of our kinds an IP Helper adapter is. The card maker is read from the
// Wi-Fi adapter's description, so the Wi-Fi Direct virtual adapter (which IP
// Helper also reports as IEEE 802.11) must never count as the Wi-Fi card:
//   - a description containing "Wi-Fi Direct Virtual Adapter", in any case,
//     is WiFiDirectVirtual whatever its interface type;
//   - otherwise interface type IF_TYPE_IEEE80211 (71) is Wifi;
//   - everything else is Other.

#include <cstdint>
#include <string_view>

#include "platform/ports/NetworkAdapters.h"

namespace connectkit::win {

inline constexpr uint32_t kIfTypeIeee80211 = 71;

platform::NetworkAdapterInfo::Kind AdapterKind(uint32_t ifType, std::wstring_view description);

}  // namespace connectkit::win
