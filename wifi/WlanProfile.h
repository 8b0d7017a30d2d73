#pragma once
// The temporary WLAN profile that WifiNetworkService hands to WlanConnect,
// and the hex form of the SSID it carries.
//
// The templates are kept byte for byte, blanks included. What the caller
// gives (SSID, name, key) is escaped on the way in, so that every profile is
// well-formed XML and its "us-ascii" declaration holds: & < > " ' become
// entity references, characters outside ASCII become character references,
// and characters XML cannot carry at all (control characters, lone
// surrogates) become U+FFFD's reference. The hex element keeps the SSID's
// exact bytes, so the network is still found by them. Ordinary ASCII input
// comes out exactly as the templates format it.

#include <string>

#include "connectkit/WifiNetworkService.h"

namespace connectkit::wifi {

// The bytes of the text's UTF-8 form in lower-case hex, each without a
// leading zero ("\n" gives "a", "ä" gives "c3a4"); empty for empty text.
std::wstring HexString(const std::wstring& text);

// `text` with XML's special and non-ASCII characters replaced by references.
std::wstring EscapeXml(const std::wstring& text);

// The secured profile when `info.key` is set, the open one otherwise. Empty
// when the inputs add up to more than 32767 characters, or (with
// `formatFailed` set) when the escaped profile does not fit the buffer they
// add up to.
std::wstring BuildProfile(const WifiConnectManage::ApInfo& info, const std::wstring& hex,
                          const std::wstring& profileNamespace,
                          const std::wstring& randomizationNamespace, bool& formatFailed);

}  // namespace connectkit::wifi
