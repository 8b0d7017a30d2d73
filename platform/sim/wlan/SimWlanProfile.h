#pragma once
// What the simulated card reads from a temporary profile's XML: wlansvc
// checks it, so an ill-formed one is refused with ERROR_BAD_PROFILE.

#include <string>

namespace connectkit::sim::wlan {

struct TemporaryProfile {
    std::wstring name;
    std::string ssid;  // UTF-8, at most 32 bytes
    std::string key;   // UTF-8
    bool secured = false;
};

// False when the profile lacks its name or SSID, an element is not closed,
// an entity is unknown, or the SSID is longer than 32 bytes.
bool ReadTemporaryProfile(const std::wstring& xml, TemporaryProfile& profile);

}  // namespace connectkit::sim::wlan
