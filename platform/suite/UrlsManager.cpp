#include "platform/suite/UrlsManager.h"

#include <array>

namespace {

struct Entry {
    const char* service;
    const char* region;
    const char* key;
    const char* value;
};

// The namespaces Windows expects of a WLAN profile (v1) and of its MAC
// randomisation element (v3).
constexpr std::array<Entry, 2> kTable{{
    {"SynergyService", "china", "config_WLAN_Profile",
     "http://www.microsoft.com/networking/WLAN/profile/v1"},
    {"SynergyService", "china", "config_Mac_Randomization",
     "http://www.microsoft.com/networking/WLAN/profile/v3"},
}};

}  // namespace

UrlsManager* UrlsManager::Instance() {
    static UrlsManager instance;
    return &instance;
}

bool UrlsManager::GetUrl(const std::string& service, const std::string& region,
                         const std::string& key, std::string& value) const {
    for (const auto& entry : kTable) {
        if (service == entry.service && region == entry.region && key == entry.key) {
            value = entry.value;
            return true;
        }
    }
    value.clear();
    return false;
}
