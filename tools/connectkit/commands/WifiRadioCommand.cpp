// `wifi radio` reads and switches the PC's Wi-Fi radio the way the suite does
// (ConnectKitWifi::WifiManage) and prints its state changes as they come.
// The `wifi` command is shared with the Wi-Fi client's subcommands: whichever
// is added first creates it.

#include "Context.h"
#include "commands/Commands.h"
#include "commands/RadioStates.h"
#include "connectkit/WifiManage.h"
#include "platform/ports/Radios.h"

namespace connectkit::tool {
namespace {

using ConnectKitWifi::WifiManage;

class WifiObserver final : public WifiManage::IWifiStateChangeNotification, public RadioObserver {
public:
    explicit WifiObserver(Context& context) : RadioObserver(context, "wifi") {
        WifiManage::GetInstance()->RegistWifiStateChangeCallback(this);
    }
    ~WifiObserver() override { WifiManage::GetInstance()->UnRegistWifiStateChangeCallback(this); }
    void OnWifiStateChanged(platform::RadioState state) override {
        printer.Changed(static_cast<int>(state));
    }
};

}  // namespace

void AddWifiRadioCommand(CLI::App& app, Context& context) {
    auto* radio = WifiGroup(app)->add_subcommand("radio", "Read and switch the Wi-Fi radio");
    radio->require_subcommand(1);
    AddRadioSubcommands(
        *radio, context,
        {"Wi-Fi", "GetWifiState", [] { return WifiManage::GetInstance()->GetWifiState(); },
         [](int on) { return WifiManage::GetInstance()->EnableWifi(on); },
         [](Context& context) -> std::unique_ptr<RadioObserver> {
             return std::make_unique<WifiObserver>(context);
         }});
}

}  // namespace connectkit::tool
