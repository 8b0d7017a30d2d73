// `wifi radio` reads and switches the PC's Wi-Fi radio the way the suite does
// (ConnectKitWifi::WifiManage) and prints its state changes as they come.
// The `wifi` command is shared with the Wi-Fi client's subcommands: whichever
// is added first creates it.

#include "Context.h"
#include "commands/Commands.h"
#include "commands/RadioStates.h"
#include "connectkit/WifiManage.h"
#include "platform/Platform.h"
#include "platform/ports/Radios.h"

namespace connectkit::tool {
namespace {

using ConnectKitWifi::WifiManage;

constexpr uint32_t kSwitchWaitMs = 10000;

class WifiPrinter final : public WifiManage::IWifiStateChangeNotification {
public:
    explicit WifiPrinter(Context& context) : printer(context, "wifi") {
        WifiManage::GetInstance()->RegistWifiStateChangeCallback(this);
    }
    ~WifiPrinter() {
        WifiManage::GetInstance()->UnRegistWifiStateChangeCallback(this);
        printer.Stop();
    }
    void OnWifiStateChanged(platform::RadioState state) override {
        printer.Changed(static_cast<int>(state));
    }

    StateChangePrinter printer;
};

void Switch(Context& context, bool on) {
    WifiPrinter observer(context);
    int result = WifiManage::GetInstance()->EnableWifi(on ? 1 : 0);
    ReportSwitch(context, observer.printer, result, kSwitchWaitMs);
}

void Watch(Context& context, unsigned seconds) {
    WifiPrinter observer(context);
    context.Progress("watching the Wi-Fi radio for " + std::to_string(seconds) + " s...");
    platform::Current().clock().Sleep(seconds * 1000);
    unsigned changes = observer.printer.Changes();
    context.Print(std::to_string(changes) + " state changes\n", {{"changes", changes}});
}

}  // namespace

void AddWifiRadioCommand(CLI::App& app, Context& context) {
    auto* radio = WifiGroup(app)->add_subcommand("radio", "Read and switch the Wi-Fi radio");
    radio->require_subcommand(1);
    radio->add_subcommand("state", "The radio's state (GetWifiState)")->callback([&context] {
        int state = WifiManage::GetInstance()->GetWifiState();
        context.Print(
            "state    " + std::string(RadioStateName(state)) + " (" + std::to_string(state) + ")\n",
            {{"state", RadioStateName(state)}, {"value", state}});
    });
    radio->add_subcommand("on", "Switch the radio on and wait for it to say so")
        ->callback([&context] { Switch(context, true); });
    radio->add_subcommand("off", "Switch the radio off and wait for it to say so")
        ->callback([&context] { Switch(context, false); });
    static unsigned seconds = 10;
    auto* watch = radio->add_subcommand("watch", "Print the radio's state changes as they come");
    watch->add_option("--seconds", seconds, "How long to watch")->check(CLI::Range(1u, 3600u));
    watch->callback([&context] { Watch(context, seconds); });
}

}  // namespace connectkit::tool
