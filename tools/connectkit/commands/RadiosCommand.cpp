// `radios` asks the radio device manager for a radio of each kind, as the
// Bluetooth and Wi-Fi radio objects do, and prints its kind, state and name.
// The manager lists the radios again while it knows fewer than two, waiting
// at most 3 s each time, so a slow radio stack shows here as missing radios.

#include <sstream>

#include "Context.h"
#include "bluetooth/RadioDeviceMgr.h"
#include "commands/Commands.h"
#include "commands/RadioStates.h"
#include "platform/Platform.h"
#include "platform/suite/DEString.h"

namespace connectkit::tool {
namespace {

using platform::RadioKind;

constexpr std::pair<RadioKind, const char*> kKinds[] = {
    {RadioKind::WiFi, "wifi"},
    {RadioKind::Bluetooth, "bluetooth"},
    {RadioKind::MobileBroadband, "mobile-broadband"},
    {RadioKind::FM, "fm"},
    {RadioKind::Other, "other"},
};

void Show(Context& context) {
    auto& clock = platform::Current().clock();
    uint64_t start = clock.TickCount64();
    std::ostringstream text;
    nlohmann::json radios = nlohmann::json::array();
    for (const auto& [kind, kindName] : kKinds) {
        RadioHolder holder;
        auto radio =
            RadioDeviceMgr::GetInstance()->FindRadio(kind, &holder) ? holder.Get() : nullptr;
        if (!radio) {
            continue;
        }
        std::string state;
        std::string name;
        try {
            state = RadioStateName(static_cast<int>(radio->State()));
            name = DE::UnicodeToUTF8(radio->Name());
        } catch (const std::exception& e) {
            state = std::string("unreadable (") + e.what() + ")";
        }
        text << kindName << std::string(18 - std::string(kindName).size(), ' ') << state
             << std::string(state.size() < 10 ? 10 - state.size() : 1, ' ') << name << '\n';
        radios.push_back({{"kind", kindName}, {"state", state}, {"name", name}});
    }
    uint64_t ms = clock.TickCount64() - start;
    if (radios.empty()) {
        text << "no radio found\n";
        context.exitCode = kExitFailed;
    }
    text << "(asked in " << ms << " ms)\n";
    context.Print(text.str(), {{"radios", radios}, {"ms", ms}});
}

}  // namespace

void AddRadiosCommand(CLI::App& app, Context& context) {
    app.add_subcommand("radios", "The PC's radios as the radio device manager finds them")
        ->callback([&context] { Show(context); });
}

}  // namespace connectkit::tool
