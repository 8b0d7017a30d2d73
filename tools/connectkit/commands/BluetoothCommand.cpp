// `bluetooth` reads and switches the PC's Bluetooth radio the way the suite
// does (ConnectKitBluetooth::BluetoothManage): its state, its address and
// name, renaming it, an inquiry, the wake-up sequence, and its state changes
// as they come.

#include "Context.h"
#include "commands/Ble.h"
#include "commands/Commands.h"
#include "commands/RadioStates.h"
#include "connectkit/BluetoothManage.h"
#include "platform/Platform.h"
#include "platform/ports/Radios.h"
#include "platform/suite/DEString.h"

namespace connectkit::tool {
namespace {

using ConnectKitBluetooth::BluetoothManage;

// The last switch of the wake-up sequence is not awaited by setradio.
constexpr uint32_t kSettleMs = 2000;

class BluetoothObserver final : public BluetoothManage::IBluetoothStateChangeNotification,
                                public RadioObserver {
public:
    explicit BluetoothObserver(Context& context) : RadioObserver(context, "bluetooth") {
        BluetoothManage::GetInstance()->RegistBluetoothStateChangeCallback(this);
    }
    ~BluetoothObserver() override {
        BluetoothManage::GetInstance()->UnRegistBluetoothStateChangeCallback(this);
    }
    void OnBluetoothStateChanged(platform::RadioState state) override {
        printer.Changed(static_cast<int>(state));
    }
};

void Address(Context& context) {
    const auto* address = BluetoothManage::GetInstance()->GetBtMacAndName();
    if (!address) {
        context.Fail(kExitFailed, "the Bluetooth radio's information could not be read");
        return;
    }
    std::string name = DE::UnicodeToUTF8(address->name);
    context.Print("address  " + AddressText(address->address) + "\nname     " + name + '\n',
                  {{"address", AddressText(address->address)}, {"name", name}});
}

void Name(Context& context) {
    std::string name = DE::UnicodeToUTF8(BluetoothManage::GetInstance()->GetBtName());
    context.Print("name     " + name + '\n', {{"name", name}});
}

void Rename(Context& context, const std::string& name) {
    auto* manage = BluetoothManage::GetInstance();
    int result = manage->SetBTName(DE::UTF8ToUnicode(name));
    std::string now = DE::UnicodeToUTF8(manage->GetBtName());
    context.Print("result   " + std::to_string(result) + "\nname     " + now + '\n',
                  {{"result", result}, {"name", now}});
    if (result != 0) {
        context.exitCode = kExitFailed;
    }
}

void Scan(Context& context) {
    auto& clock = platform::Current().clock();
    auto* manage = BluetoothManage::GetInstance();
    context.Progress("running an inquiry (1.28 s)...");
    uint64_t start = clock.TickCount64();
    manage->BluetoothScan();
    uint64_t ms = clock.TickCount64() - start;
    context.Print("inquiry done after " + std::to_string(ms) + " ms\n", {{"ms", ms}});
}

void Wake(Context& context) {
    BluetoothObserver observer(context);
    context.Progress("waking the radio: up to 30 tries, a second apart...");
    auto* manage = BluetoothManage::GetInstance();
    manage->setradio();
    uint64_t ms = observer.printer.ElapsedMs();
    platform::Current().clock().Sleep(kSettleMs);
    PrintState(context, manage->GetBluetoothState2(),
               " once setradio returned after " + std::to_string(ms) + " ms", {{"ms", ms}});
}

}  // namespace

void AddBluetoothCommand(CLI::App& app, Context& context) {
    auto* bluetooth = app.add_subcommand(
        "bluetooth", "Read and switch the Bluetooth radio, its address and name");
    bluetooth->require_subcommand(1);
    AddRadioSubcommands(*bluetooth, context,
                        {"Bluetooth", "GetBluetoothState",
                         [] { return BluetoothManage::GetInstance()->GetBluetoothState(); },
                         [](int on) { return BluetoothManage::GetInstance()->EnableBluetooth(on); },
                         [](Context& context) -> std::unique_ptr<RadioObserver> {
                             return std::make_unique<BluetoothObserver>(context);
                         }});
    bluetooth->add_subcommand("address", "The radio's address and name (GetBtMacAndName)")
        ->callback([&context] { Address(context); });
    bluetooth->add_subcommand("name", "The radio's name (GetBtName)")->callback([&context] {
        Name(context);
    });
    static std::string newName;
    auto* rename = bluetooth->add_subcommand("rename", "Rename the radio (SetBTName)");
    rename->add_option("NAME", newName, "The new name")->required();
    rename->callback([&context] { Rename(context, newName); });
    bluetooth->add_subcommand("scan", "Make the radio run a short inquiry (BluetoothScan)")
        ->callback([&context] { Scan(context); });
    bluetooth->add_subcommand("wake", "Bring the radio up and back to its setting (setradio)")
        ->callback([&context] { Wake(context); });
}

}  // namespace connectkit::tool
