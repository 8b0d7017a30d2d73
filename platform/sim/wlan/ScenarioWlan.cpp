// The scenario's "wlan" section: the Wi-Fi card's client interface and the
// networks in range (see SimWlan.h for how they behave).
//
//   "wlan": {
//     "interface": {"present": true, "guid": "{5A1E2D3C-11F0-4B7A-9C21-3C6AA7123456}",
//                   "description": "Intel(R) Wireless-AC 9560 160MHz" (empty: the card's),
//                   "friendlyName": "Wi-Fi", "index": 12},
//     "locationDenied": false,
//     "associateMs": 600,
//     "networks": [{"ssid": "DIRECT-phone", "bssid": "02:1a:11:f0:00:01", "channel": 6,
//                   "rssi": -45, "security": "wpa2psk|open", "passphrase": "12345678",
//                   "hidden": false, "completeReason": 0,
//                   "dhcp": "lease|apipaThenLease|never", "address": "192.168.137.45",
//                   "leaseDelayMs": 500, "autoConnectAfterMs": 1000, "dropAfterMs": 9000,
//                   "roam": {"bssid": "02:1a:11:f0:00:02", "channel": 11, "rssi": -60,
//                            "afterMs": 3000}}]
//   }
#include <cstdio>
#include <limits>

#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/ScenarioFields.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim::parse {
namespace {

using Network = SimWlanConfig::Network;

constexpr int64_t kLongestDelayMs = 24 * 3600 * 1000;
constexpr std::pair<const char*, Network::Security> kSecurities[] = {
    {"wpa2psk", Network::Security::Wpa2Psk}, {"open", Network::Security::Open}};
constexpr std::pair<const char*, Network::Dhcp> kDhcp[] = {
    {"lease", Network::Dhcp::Lease},
    {"apipaThenLease", Network::Dhcp::ApipaThenLease},
    {"never", Network::Dhcp::Never}};

platform::MacAddress Mac(const Fields& fields, const char* key) {
    platform::MacAddress mac{};
    if (fields.Find(key) && !ParseMac(fields.Text(key), mac)) {
        throw FieldError{fields.Path(key), "expected six hex pairs like 02:1a:11:f0:00:01"};
    }
    return mac;
}

uint32_t Delay(const Fields& fields, const char* key, uint32_t fallback) {
    return static_cast<uint32_t>(fields.Integer(key, fallback, 0, kLongestDelayMs));
}

std::optional<uint32_t> OptionalDelay(const Fields& fields, const char* key) {
    if (!fields.Find(key)) {
        return std::nullopt;
    }
    return Delay(fields, key, 0);
}

platform::Guid ParseGuid(const Fields& fields, const char* key, const platform::Guid& fallback) {
    if (!fields.Find(key)) {
        return fallback;
    }
    std::string text = fields.Text(key);
    unsigned parts[11];
    int used = 0;
    platform::Guid guid;
    if (text.size() != 38 ||
        std::sscanf(text.c_str(), "{%8x-%4x-%4x-%2x%2x-%2x%2x%2x%2x%2x%2x}%n", &parts[0], &parts[1],
                    &parts[2], &parts[3], &parts[4], &parts[5], &parts[6], &parts[7], &parts[8],
                    &parts[9], &parts[10], &used) != 11 ||
        used != 38) {
        throw FieldError{fields.Path(key), "expected a GUID like {5A1E2D3C-11F0-4B7A-9C21-...}"};
    }
    guid.data1 = parts[0];
    guid.data2 = static_cast<uint16_t>(parts[1]);
    guid.data3 = static_cast<uint16_t>(parts[2]);
    for (size_t i = 0; i < guid.data4.size(); ++i) {
        guid.data4[i] = static_cast<uint8_t>(parts[3 + i]);
    }
    return guid;
}

Network ParseNetwork(const Fields& fields) {
    fields.Only({"ssid", "bssid", "channel", "rssi", "security", "passphrase", "hidden",
                 "completeReason", "dhcp", "address", "leaseDelayMs", "autoConnectAfterMs",
                 "dropAfterMs", "roam"});
    Network network;
    network.ssid = fields.Text("ssid");
    if (network.ssid.empty() || network.ssid.size() > 32) {
        throw FieldError{fields.Path("ssid"), "expected 1 to 32 bytes"};
    }
    network.bssid = Mac(fields, "bssid");
    network.channel = static_cast<uint32_t>(fields.Integer("channel", 6, 1, 196));
    network.rssi = static_cast<int32_t>(fields.Integer("rssi", -50, -100, 0));
    network.security = Choice(fields, "security", kSecurities, network.security);
    network.passphrase = fields.Text("passphrase");
    network.hidden = Flag(fields, "hidden", false);
    network.completeReason = fields.Unsigned("completeReason", 0);
    network.dhcp = Choice(fields, "dhcp", kDhcp, network.dhcp);
    network.address = fields.Text("address", network.address);
    network.leaseDelayMs = Delay(fields, "leaseDelayMs", network.leaseDelayMs);
    network.autoConnectAfterMs = OptionalDelay(fields, "autoConnectAfterMs");
    network.dropAfterMs = OptionalDelay(fields, "dropAfterMs");
    if (const json* roam = fields.Find("roam")) {
        Fields to(*roam, fields.Path("roam"));
        to.Only({"bssid", "channel", "rssi", "afterMs"});
        Network::Roam next;
        next.bssid = Mac(to, "bssid");
        next.channel = static_cast<uint32_t>(to.Integer("channel", next.channel, 1, 196));
        next.rssi = static_cast<int32_t>(to.Integer("rssi", next.rssi, -100, 0));
        next.afterMs = Delay(to, "afterMs", next.afterMs);
        network.roam = next;
    }
    return network;
}

}  // namespace

void ParseWlan(const json& value, const std::string& path, Scenario& scenario) {
    Fields wlan(value, path);
    wlan.Only({"interface", "locationDenied", "associateMs", "networks"});
    SimWlanConfig config;
    if (const json* interface = wlan.Find("interface")) {
        Fields fields(*interface, wlan.Path("interface"));
        fields.Only({"present", "guid", "description", "friendlyName", "index"});
        auto& card = config.interface;
        card.present = Flag(fields, "present", true);
        card.guid = ParseGuid(fields, "guid", card.guid);
        card.description = DE::UTF8ToUnicode(fields.Text("description"));
        card.friendlyName =
            DE::UTF8ToUnicode(fields.Text("friendlyName", DE::UnicodeToUTF8(card.friendlyName)));
        card.index = fields.Unsigned("index", card.index);
    }
    config.locationDenied = Flag(wlan, "locationDenied", false);
    config.associateMs = Delay(wlan, "associateMs", config.associateMs);
    if (const json* networks = wlan.Find("networks")) {
        ForEachObject(*networks, wlan.Path("networks"), [&config](const Fields& fields) {
            config.networks.push_back(ParseNetwork(fields));
        });
    }
    scenario.wlan = config;
}

}  // namespace connectkit::sim::parse
