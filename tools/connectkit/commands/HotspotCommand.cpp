// `hotspot` opens the Wi-Fi Direct legacy access point the way the suite
// does (SystemCreateSoftAP) and shows what a phone would be given to join it.
// `watch` keeps it open for a while and prints the publisher's status changes
// and phones joining and leaving as they happen.

#include <cstdio>
#include <sstream>

#include "Context.h"
#include "commands/Commands.h"
#include "commands/Timeline.h"
#include "connectkit/SoftAPManager.h"
#include "platform/Platform.h"
#include "platform/suite/DEString.h"

namespace connectkit::tool {
namespace {

const char* AdvertiserStatusName(int status) {
    switch (status) {
        case ConnectKit::LEGACY_AP_CREATED:
            return "created";
        case ConnectKit::LEGACY_AP_STARTED:
            return "started";
        case ConnectKit::LEGACY_AP_STOPPED:
            return "stopped";
        case ConnectKit::LEGACY_AP_ABORTED:
            return "aborted";
        default:
            return "unknown";
    }
}

std::string MacText(const unsigned char mac[6]) {
    char text[18];
    std::snprintf(text, sizeof(text), "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2],
                  mac[3], mac[4], mac[5]);
    return text;
}

struct CreateOptions {
    bool apFlag = false;
    bool newCredentials = false;
};

// Creates the hotspot and prints the outcome; true when it is up.
bool Create(Context& context, const CreateOptions& options) {
    auto* manager = SoftAPManager::GetInstance();
    if (options.newCredentials) {
        manager->ChangeSSIDAndPasswd();
    }
    context.Progress("creating the hotspot (the access point may take up to a minute)...");
    SoftAPInfo info;
    info.apFlag = options.apFlag;
    int result = SystemCreateSoftAP(info);
    std::ostringstream text;
    nlohmann::json machine = {{"result", result}, {"meaning", SoftAPResultMeaning(result)}};
    text << "result      " << result << " (" << SoftAPResultMeaning(result) << ")\n";
    if (result == 0) {
        text << "ssid        " << info.ssid << "\npassphrase  " << info.passphrase
             << "\nmac         " << MacText(info.mac) << "\nchannel     "
             << static_cast<int>(info.channel) << "\nip          " << info.ip << '\n';
        machine["ssid"] = info.ssid;
        machine["passphrase"] = info.passphrase;
        machine["mac"] = MacText(info.mac);
        machine["channel"] = info.channel;
        machine["ip"] = info.ip;
    }
    int lastError = GetSoftApError();
    if (lastError != 0 && lastError != result) {
        text << "last error  " << lastError << '\n';
    }
    machine["lastError"] = lastError;
    context.Print(text.str(), machine);
    if (result != 0) {
        context.exitCode = kExitFailed;
    }
    return result == 0;
}

// Prints events from the library's notification threads, one line each.
class EventPrinter final : public ConnectKit::LegacyAP::ILegacyAPNotification,
                           public ISoftApConnectStatus {
public:
    explicit EventPrinter(Context& context) : timeline_(context, Timeline::Start::AtFirstLine) {}

    void OnLegacyAPAdvertiserStatusChanged(ConnectKit::LegacyAPAdvertisemenStatus status) override {
        timeline_.Emit("advertiser " + std::string(AdvertiserStatusName(status)),
                       {{"event", "advertiser"}, {"status", AdvertiserStatusName(status)}});
    }

    void OnLegacyAPConnectionStatusChanged(ConnectKit::LegacyAPDeviceConnectionStatus status,
                                           ConnectKit::LegacyAPDeviceInformation device) override {
        bool connected = status == ConnectKit::LEGACY_AP_DEVICE_CONNECTED;
        auto id = DE::UnicodeToUTF8(device.deviceId);
        auto address = DE::UnicodeToUTF8(device.ipAddress);
        timeline_.Emit(std::string("phone ") + (connected ? "connected    " : "disconnected ") +
                           id + (address.empty() ? "" : " at " + address),
                       {{"event", "phone"},
                        {"status", connected ? "connected" : "disconnected"},
                        {"device", id},
                        {"address", address}});
    }

    void OnSoftApConnectStatus(int status) override {
        timeline_.Emit("suite observer told " + std::to_string(status),
                       {{"event", "observer"}, {"status", status}});
    }

private:
    Timeline timeline_;
};

void Watch(Context& context, const CreateOptions& options, unsigned seconds) {
    EventPrinter printer(context);
    auto* legacyAP = ConnectKit::LegacyAP::GetInstance();
    legacyAP->RegisterLegacyAPNotificationEventCallback(&printer);
    RegistSoftApConnectStatus(&printer);
    if (Create(context, options)) {
        context.Progress("watching for " + std::to_string(seconds) + " s...");
        platform::Current().clock().Sleep(seconds * 1000);
    }
    // Phones dropped by the stop itself are not news.
    RegistSoftApConnectStatus(nullptr);
    legacyAP->UnRegisterLegacyAPNotificationEventCallback(&printer);
    SoftAPInfo info;
    SystemDestroySoftAP(info);
}

// The legacy AP reports on detached threads. Before the tool exits (and
// logging with it) the hotspot it opened is stopped, so that no phone can
// start another report, and the reports under way run to their end: the
// simulated PC's clock moves on only once they have.
void FinishAtExit(Context& context, bool stopHotspot) {
    context.AtExit([&context, stopHotspot] {
        if (stopHotspot) {
            context.Progress("stopping the hotspot: it lives as long as connectkit runs");
            SoftAPInfo info;
            SystemDestroySoftAP(info);
        }
        platform::Current().clock().Sleep(50);
    });
}

}  // namespace

void AddHotspotCommand(CLI::App& app, Context& context) {
    auto* hotspot = app.add_subcommand(
        "hotspot", "Open, close and watch the Wi-Fi Direct legacy access point for a phone");
    hotspot->require_subcommand(1);

    static CreateOptions options;
    auto addCreateOptions = [](CLI::App* command) {
        command->add_flag("--ap-flag", options.apFlag,
                          "Ask the channel planner to follow the phone's current channel");
        command->add_flag("--new-credentials", options.newCredentials,
                          "Make a new SSID part and pass phrase instead of reusing the kept ones");
    };

    auto* create = hotspot->add_subcommand(
        "create",
        "Create the hotspot (SystemCreateSoftAP) and print what a phone needs to join; it "
        "stops when connectkit exits (watch keeps it open)");
    addCreateOptions(create);
    create->callback([&context] { FinishAtExit(context, Create(context, options)); });

    auto* destroy = hotspot->add_subcommand(
        "destroy", "Stop the hotspot (SystemDestroySoftAP) and print its result");
    destroy->callback([&context] {
        SoftAPInfo info;
        int result = SystemDestroySoftAP(info);
        FinishAtExit(context, false);
        context.Print("result      " + std::to_string(result) + '\n', {{"result", result}});
    });

    auto* refresh = hotspot->add_subcommand(
        "refresh-channel", "Ask the channel planner which channel the access point uses now");
    refresh->callback([&context] {
        int channel = SystemRefreshSoftAPChannel();
        int error = GetSoftApError();
        context.Print("channel     " + std::to_string(channel) + "\nerror       " +
                          std::to_string(error) + '\n',
                      {{"channel", channel}, {"error", error}});
    });

    static unsigned seconds = 30;
    auto* watch = hotspot->add_subcommand(
        "watch",
        "Create the hotspot, print status changes and phones joining and leaving, then stop it");
    addCreateOptions(watch);
    watch->add_option("--seconds", seconds, "How long to watch (default 30)")
        ->check(CLI::Range(1u, 86400u));
    watch->callback([&context] {
        Watch(context, options, seconds);
        FinishAtExit(context, false);
    });
}

}  // namespace connectkit::tool
