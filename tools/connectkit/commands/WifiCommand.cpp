// `wifi` joins the phone's network the way the suite does
// (WifiNetworkService): scan, connect with a temporary profile and follow the
// state changes, get the DHCP address, disconnect, show the profile, and
// watch the PC's own link as the real-time monitor reports it.

#include <cstdio>
#include <mutex>
#include <sstream>

#include "Context.h"
#include "commands/Commands.h"
#include "commands/Timeline.h"
#include "connectkit/DataReport.h"
#include "connectkit/WifiNetworkService.h"
#include "connectkit/WifiRealMonitor.h"
#include "platform/Platform.h"
#include "platform/suite/DEString.h"
#include "platform/suite/UrlsManager.h"
#include "wifi/WlanProfile.h"

namespace connectkit::tool {
namespace {

using WifiConnectManage::WifiConnectState;
using WifiConnectManage::WifiNetworkService;

// A scan of the card ends within this; its results stay in the BSS list.
constexpr uint32_t kScanWaitMs = 2000;
// Longest wait for a connection attempt to settle after Connect returned.
constexpr uint32_t kSettleWaitMs = 30000;
constexpr uint32_t kMonitorPollMs = 100;

std::string StateName(WifiConnectState state) {
    return DE::UnicodeToUTF8(WifiNetworkService::StateToString(state));
}

// Prints each state the service reports and wakes the command once an
// attempt has settled (connected already, complete, or incomplete).
class StatePrinter final : public WifiNetworkService::IWifiNetworkServiceObserver {
public:
    explicit StatePrinter(Timeline& out)
        : out_(out), settled_(platform::Current().clock().NewEvent(true, false)) {}

    void OnWifiStateChanged(std::wstring ssid, WifiConnectState state) override {
        out_.Emit("state " + std::to_string(state) + " " + StateName(state) + " (" +
                      DE::UnicodeToUTF8(ssid) + ")",
                  {{"event", "state"},
                   {"state", state},
                   {"name", StateName(state)},
                   {"ssid", DE::UnicodeToUTF8(ssid)}});
        if (state == WifiConnectManage::WifiConnected ||
            state == WifiConnectManage::WifiConnectIncomplete ||
            state == WifiConnectManage::WifiDisConnected) {
            settled_->Set();
        }
    }

    bool WaitSettled(uint32_t ms) { return settled_->Wait(ms) == platform::WaitResult::Signaled; }

private:
    Timeline& out_;
    std::unique_ptr<platform::Event> settled_;
};

void PrintAddress(Context& context, Timeline& out) {
    context.Progress("asking for a DHCP address (GetDynamicIP, up to about 5 s)...");
    std::string ip;
    int result = WifiNetworkService::GetInstance()->GetDynamicIP(ip);
    out.Emit("address " + ip + (result == 0 ? "" : " (no usable address, result -1)"),
             {{"event", "address"}, {"result", result}, {"ip", ip}});
    if (result != 0) {
        context.exitCode = kExitFailed;
    }
}

void Scan(Context& context) {
    auto* service = WifiNetworkService::GetInstance();
    bool started = service->Scan();
    context.Progress("scanning...");
    platform::Current().clock().Sleep(kScanWaitMs);
    auto networks = service->getScanResults();
    nlohmann::json list = nlohmann::json::array();
    std::ostringstream text;
    text << "scan " << (started ? "started" : "not started (no Wi-Fi interface)") << '\n';
    for (const auto& ssid : networks) {
        text << "  " << (ssid.empty() ? "(hidden)" : ssid) << '\n';
        list.push_back(ssid);
    }
    text << networks.size() << " network(s)\n";
    context.Print(text.str(), {{"started", started}, {"networks", list}});
    if (!started) {
        context.exitCode = kExitFailed;
    }
}

struct ConnectOptions {
    std::string ssid;
    std::string key;
    int channel = 0;
    std::string bssid;
    bool noWaitScan = false;
    bool scanFilter = false;
};

// "02:1a:11:f0:00:01" as the bytes Connect takes; any other text gives its
// bytes as they are, so that odd lengths reach the library unchanged.
std::vector<char> BssidBytes(const std::string& text) {
    std::vector<char> bytes;
    unsigned value[6];
    if (std::sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x", &value[0], &value[1], &value[2],
                    &value[3], &value[4], &value[5]) == 6 &&
        text.size() == 17) {
        for (unsigned byte : value) {
            bytes.push_back(static_cast<char>(byte));
        }
        return bytes;
    }
    return std::vector<char>(text.begin(), text.end());
}

void Connect(Context& context, const ConnectOptions& options) {
    auto* service = WifiNetworkService::GetInstance();
    Timeline out(context);
    StatePrinter printer(out);
    service->RegistObserver(&printer);
    context.Progress("connecting to " + options.ssid + "...");
    bool started = service->Connect(DE::UTF8ToUnicode(options.ssid), DE::UTF8ToUnicode(options.key),
                                    !options.noWaitScan, options.channel, BssidBytes(options.bssid),
                                    options.scanFilter);
    out.Emit(std::string("Connect returned ") + (started ? "true" : "false"),
             {{"event", "connect"}, {"result", started}});
    bool settled = started && printer.WaitSettled(kSettleWaitMs);
    service->UnregistObserver(&printer);
    auto state = service->GetCurentWifiState();
    out.Emit("settled in state " + std::to_string(state) + " " + StateName(state),
             {{"event", "settled"}, {"settled", settled}, {"state", state}});
    if (!started || state != WifiConnectManage::WifiDisConnected) {
        context.exitCode = kExitFailed;
    }
    if (started) {
        PrintAddress(context, out);
    }
}

void Disconnect(Context& context) {
    auto* service = WifiNetworkService::GetInstance();
    Timeline out(context);
    StatePrinter printer(out);
    service->RegistObserver(&printer);
    bool done = service->DisConnnect();
    out.Emit(std::string("DisConnnect returned ") + (done ? "true" : "false"),
             {{"event", "disconnect"}, {"result", done}});
    if (done) {
        printer.WaitSettled(kSettleWaitMs);
    }
    service->UnregistObserver(&printer);
    if (!done) {
        context.exitCode = kExitFailed;
    }
}

void Profile(Context& context, const std::string& ssid, const std::string& key) {
    auto namespaceOf = [](const char* urlKey) {
        std::string value;
        UrlsManager::Instance()->GetUrl("SynergyService", "china", urlKey, value);
        return DE::ANSIToUnicode(value);
    };
    WifiConnectManage::ApInfo info{DE::UTF8ToUnicode(ssid), DE::UTF8ToUnicode(key), L"WPA2PSK",
                                   L"AES"};
    bool formatFailed = false;
    std::wstring profile = connectkit::wifi::BuildProfile(
        info, connectkit::wifi::HexString(info.ssid), namespaceOf("config_WLAN_Profile"),
        namespaceOf("config_Mac_Randomization"), formatFailed);
    std::string xml = DE::UnicodeToUTF8(profile);
    context.Print(xml + '\n', {{"profile", xml}, {"empty", profile.empty()}});
    if (profile.empty()) {
        context.exitCode = kExitFailed;
    }
}

// Tells the channel of each new connection or roam; it outlives the monitor
// because the monitor may still call it while stopping.
class ChannelPrinter final : public WifiRealMonitorStateCallBack {
public:
    void OnWifiChannelChanged(uint32_t channel) override {
        std::lock_guard<std::mutex> lock(mutex_);
        if (out_) {
            out_->Emit("channel now " + std::to_string(channel),
                       {{"event", "channel"}, {"channel", channel}});
        }
    }
    void Attach(Timeline* out) {
        std::lock_guard<std::mutex> lock(mutex_);
        out_ = out;
    }

private:
    std::mutex mutex_;
    Timeline* out_ = nullptr;
};

void Monitor(Context& context, unsigned seconds) {
    static ChannelPrinter channels;
    Timeline out(context);
    channels.Attach(&out);
    auto* reports = SynergyDataReportClass::GetInstance();
    size_t seen = reports->Records().size();
    auto* monitor = WifiRealMonitor::GetInstance();
    monitor->RegistWifiStateChangeCallBack(&channels);
    bool running = StartWifiRealMonitor();
    out.Emit(std::string("monitor ") + (running ? "running" : "not running"),
             {{"event", "monitor"}, {"running", running}});
    auto& clock = platform::Current().clock();
    for (uint64_t waited = 0; running && waited < seconds * 1000ull; waited += kMonitorPollMs) {
        clock.Sleep(kMonitorPollMs);
        auto records = reports->Records();
        for (; seen < records.size(); ++seen) {
            const auto& record = records[seen];
            if (record.type != SYNERGY_REPORT_WIFI_REAL_MONITOR || record.values.size() != 6) {
                continue;
            }
            const auto& v = record.values;
            out.Emit("report " + v[1] + " type=" + v[0] + " ssid=" + v[2] + " rssi=" + v[3] +
                         " channel=" + v[4] + " quality=" + v[5],
                     {{"event", "report"},
                      {"wifiType", v[0]},
                      {"state", v[1]},
                      {"ssid", v[2]},
                      {"rssi", v[3]},
                      {"channel", v[4]},
                      {"quality", v[5]}});
        }
    }
    StopWifiRealMonitor();
    monitor->RegistWifiStateChangeCallBack(nullptr);
    channels.Attach(nullptr);
    if (!running) {
        context.exitCode = kExitFailed;
    }
}

}  // namespace

CLI::App* WifiGroup(CLI::App& app) {
    auto found =
        app.get_subcommands([](const CLI::App* command) { return command->get_name() == "wifi"; });
    if (!found.empty()) {
        return const_cast<CLI::App*>(found.front());
    }
    auto* wifi = app.add_subcommand("wifi", "The Wi-Fi radio and the PC's Wi-Fi connection");
    wifi->require_subcommand(1);
    return wifi;
}

void AddWifiCommand(CLI::App& app, Context& context) {
    auto* wifi = WifiGroup(app);

    wifi->add_subcommand("scan", "Scan (WifiNetworkService::Scan) and list the SSIDs in range")
        ->callback([&context] { Scan(context); });

    static ConnectOptions options;
    auto* connect = wifi->add_subcommand(
        "connect",
        "Connect with a temporary profile, print each state change, then get the address");
    connect->add_option("SSID", options.ssid, "Network name")->required();
    connect->add_option("KEY", options.key, "Pass phrase; empty for an open network")->required();
    connect->add_option("--channel", options.channel, "Channel for the driver's scan filter");
    connect->add_option("--bssid", options.bssid, "The access point's MAC, 02:1a:11:f0:00:01");
    connect->add_flag("--no-wait-scan", options.noWaitScan,
                      "Connect at once instead of waiting for the network in scans");
    connect->add_flag("--scan-filter", options.scanFilter,
                      "Narrow the card's scans to the network (needs --bssid)");
    connect->callback([&context] { Connect(context, options); });

    wifi->add_subcommand("disconnect", "Disconnect the Wi-Fi interface (DisConnnect)")
        ->callback([&context] { Disconnect(context); });

    wifi->add_subcommand("ip", "Get a usable DHCP address for the Wi-Fi adapter (GetDynamicIP)")
        ->callback([&context] {
            Timeline out(context);
            PrintAddress(context, out);
        });

    static std::string profileSsid;
    static std::string profileKey;
    auto* profile = wifi->add_subcommand("profile", "Print the temporary profile's XML");
    profile->add_option("SSID", profileSsid, "Network name")->required();
    profile->add_option("KEY", profileKey, "Pass phrase; none gives the open profile");
    profile->callback([&context] { Profile(context, profileSsid, profileKey); });

    static unsigned seconds = 30;
    auto* monitor = wifi->add_subcommand(
        "monitor", "Run the real-time monitor and print its reports as they happen");
    monitor->add_option("--seconds", seconds, "How long to watch (default 30)")
        ->check(CLI::Range(1u, 86400u));
    monitor->callback([&context] { Monitor(context, seconds); });
}

}  // namespace connectkit::tool
