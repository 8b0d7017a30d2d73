#pragma once
// The URL configuration service of the suite's utility library: addresses
// and namespaces looked up by service, region and key. Where the suite's
// library is absent this substitute answers from a fixed table holding what
// this library asks for, the WLAN profile namespaces.
//
// A key that is not in the table gives false and an empty value: the caller
// goes on with the empty text, as it would with the suite's service.

#include <string>

class UrlsManager {
public:
    static UrlsManager* Instance();

    bool GetUrl(const std::string& service, const std::string& region, const std::string& key,
                std::string& value) const;

private:
    UrlsManager() = default;
};
