#pragma once
// The simulated PC's Native Wi-Fi: the Wi-Fi card's client interface, the
// networks in range, association with its notifications, and a DHCP server
// per network that gives the Wi-Fi adapter its address.
//
// One model, seen through three ports:
// - the WLAN port: one interface (while `interface.present`); its BSS list
//   shows the networks in range, a hidden one with an empty SSID, narrowed to
//   one network while the card driver's legacy group-owner scan filter is set;
// - the network adapters port: the Wi-Fi card's adapter (interface index
//   `interface.index`) gets the interface's GUID text as its name, the
//   friendly name and the leased address; without a card the model lists the
//   adapter itself. IpReleaseAddress and IpRenewAddress on it release and
//   renew the lease (renewing waits for the server, at most
//   kRenewTimeoutMs);
// - the processes port: "ipconfig /release [NAME]" and "ipconfig /renew
//   [NAME]" (NAME the friendly name, any case, quoted or not; none means every
//   adapter) release at once and start a renewal.
//
// Connecting (a temporary profile: the SSID is the <name> in <SSID>, the key
// the <keyMaterial>) to a network that is in range, visible and whose
// security and key match succeeds `associateMs` later, with the notification
// sequence Windows gives:
//   ACM connection_start, MSM associating, associated, authenticating,
//   MSM connected, ACM connection_complete (reason 0).
// A wrong key stops after authenticating: MSM disassociating, MSM
// disconnected, ACM connection_attempt_fail and connection_complete with
// kReasonPskMismatch. A network not in range, hidden (the profiles have no
// nonBroadcast, so the card never probes for it) or gone: ACM
// connection_start, connection_attempt_fail and connection_complete with
// kReasonNotVisible. A security mismatch: the same with
// kReasonNetworkNotCompatible. A network whose `completeReason` is set
// associates and then completes with that reason without connecting.
// Connecting while connected first disconnects. Disconnecting gives ACM
// disconnecting, MSM disassociating, MSM disconnected, ACM disconnected; a
// network that leaves the air (`dropAfterMs` after connecting) the same
// without the ACM disconnecting. Roaming (`roam`, `afterMs` after
// connecting): MSM roaming_start, associating, associated, authenticating,
// roaming_end, then the connection names the new BSSID, channel and RSSI.
// A network may connect by itself (`autoConnectAfterMs` after the world is
// applied), as Windows does with a saved profile.
//
// DHCP, per network: connecting starts a lease exchange; a renewal (ipconfig
// or IP Helper) starts one unless one is under way. Each ends
// `dhcp.leaseDelayMs` later: "lease" gives `dhcp.address`; "apipaThenLease"
// gives an automatic private 169.254 address on the first exchange of a
// connection and `dhcp.address` from the next; "never" gives nothing.
// Disconnecting drops the address.
//
// With `locationDenied` (location consent withheld) the BSS list and the
// current connection, channel and RSSI answer ERROR_ACCESS_DENIED.
//
// Notifications go to every registered handle whose sources match, one at a
// time and in order, on the clock's dispatcher threads and never with the
// model's lock held. CloseHandle waits for a delivery to that handle under
// way unless it is called from inside one.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ports/Wlan.h"
#include "platform/sim/core/SimModel.h"
#include "platform/sim/machine/SimNetworkAdapters.h"

namespace connectkit::sim {

class FaultInjector;
class SimProcesses;
class VirtualClock;
namespace wlan {
struct World;
}

// WLAN_REASON_CODE values the simulated card gives, under wlanapi's names.
// WLAN_REASON_CODE_NETWORK_NOT_COMPATIBLE (WLAN_REASON_CODE_AC_BASE + 1).
inline constexpr uint32_t kReasonNetworkNotCompatible = 0x00020001;
// WLAN_REASON_CODE_NOT_VISIBLE (WLAN_REASON_CODE_AC_CONNECT_BASE + 2).
inline constexpr uint32_t kReasonNotVisible = 0x00028002;
// WLAN_REASON_CODE_MSMSEC_PSK_MISMATCH_SUSPECTED
// (WLAN_REASON_CODE_MSMSEC_CONNECT_BASE + 20).
inline constexpr uint32_t kReasonPskMismatch = 0x00048014;
// How long IpRenewAddress waits for a server that never answers.
inline constexpr uint32_t kRenewTimeoutMs = 10000;
// How long a scan takes before its scan_complete notification.
inline constexpr uint32_t kScanDurationMs = 1500;

struct SimWlanConfig {
    struct Interface {
        bool present = true;
        platform::Guid guid{
            0x5A1E2D3C, 0x11F0, 0x4B7A, {0x9C, 0x21, 0x3C, 0x6A, 0xA7, 0x12, 0x34, 0x56}};
        // Empty keeps the card adapter's description.
        std::wstring description;
        std::wstring friendlyName = L"Wi-Fi";
        uint32_t index = 12;
    } interface;
    bool locationDenied = false;
    uint32_t associateMs = 600;

    struct Network {
        enum class Security { Open, Wpa2Psk };
        enum class Dhcp { Lease, ApipaThenLease, Never };
        std::string ssid;
        platform::MacAddress bssid{};
        uint32_t channel = 6;
        int32_t rssi = -50;
        Security security = Security::Wpa2Psk;
        std::string passphrase;
        bool hidden = false;
        // A connection-complete with this reason instead of a connection.
        uint32_t completeReason = 0;
        Dhcp dhcp = Dhcp::Lease;
        std::string address = "192.168.1.23";
        uint32_t leaseDelayMs = 500;
        std::optional<uint32_t> autoConnectAfterMs;
        std::optional<uint32_t> dropAfterMs;
        struct Roam {
            platform::MacAddress bssid{};
            uint32_t channel = 11;
            int32_t rssi = -65;
            uint32_t afterMs = 3000;
        };
        std::optional<Roam> roam;
    };
    std::vector<Network> networks;
};

// What the model saw, for tests and figures.
struct SimWlanHistory {
    uint32_t scans = 0;
    uint32_t connects = 0;
    uint64_t notifications = 0;
    // The desired-BSSID list of the last connect that reached the card.
    std::optional<platform::Dot11BssidList> desiredBssids;
};

class SimWlan final : public platform::Wlan, public SimModel {
public:
    SimWlan(VirtualClock& clock, FaultInjector& faults, SimNetworkAdapters& adapters,
            SimProcesses& processes);
    ~SimWlan() override;

    uint32_t OpenHandle(uint32_t clientVersion, uint32_t& negotiatedVersion,
                        platform::WlanHandle& handle) override;
    uint32_t CloseHandle(platform::WlanHandle handle) override;
    uint32_t EnumInterfaces(platform::WlanHandle handle,
                            std::vector<platform::WlanInterfaceInfo>& interfaces) override;
    uint32_t Scan(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                  const std::optional<platform::Dot11Ssid>& ssid,
                  const std::vector<uint8_t>& ieData) override;
    uint32_t GetNetworkBssList(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                               const std::optional<platform::Dot11Ssid>& ssid,
                               platform::Dot11BssType bssType, bool securityEnabled,
                               std::vector<platform::WlanBssEntry>& entries) override;
    uint32_t QueryInterface(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                            platform::WlanIntfOpcode opcode,
                            platform::WlanInterfaceAnswer& answer) override;
    uint32_t Connect(platform::WlanHandle handle, const platform::Guid& interfaceGuid,
                     const platform::WlanConnectionParameters& parameters) override;
    uint32_t Disconnect(platform::WlanHandle handle, const platform::Guid& interfaceGuid) override;
    uint32_t RegisterNotification(platform::WlanHandle handle, uint32_t sources,
                                  bool ignoreDuplicate, platform::WlanNotificationCallback callback,
                                  void* context, uint32_t* previousSources) override;

    void Reset() override;
    // Takes the scenario's "wlan"; connections and leases of the earlier
    // world end without notifications, handles stay open.
    void Apply(const Scenario& scenario) override;
    void Count(SimCensus& census) const override;

    SimWlanHistory History() const;

private:
    SimNetworkAdapters::Share share_;
    std::shared_ptr<wlan::World> world_;
};

}  // namespace connectkit::sim
