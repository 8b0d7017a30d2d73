#include "commands/RadioStates.h"

#include <CLI/CLI.hpp>

#include "Context.h"
#include "platform/Platform.h"

namespace connectkit::tool {
namespace {

// Long enough for a switch through the class installer and the radio's
// return (2 s between disable and enable, then the radio search).
constexpr uint32_t kSwitchWaitMs = 10000;

// EnableBTResult and EnableWifiResult share their values.
const char* SwitchResultMeaning(int result) {
    switch (result) {
        case 0:
            return "switch requested";
        case 1:
            return "already in that state";
        case 2:
            return "disabled: software cannot switch it";
        default:
            return "failed";
    }
}

// The switch's outcome on its own line, then the change it brought, if one
// comes in time; the exit code says whether the radio can switch.
void Switch(Context& context, const RadioCalls& calls, bool on) {
    auto observer = calls.observe(context);
    int result = calls.enable(on ? 1 : 0);
    context.Print("result  " + std::to_string(result) + " (" + SwitchResultMeaning(result) + ")\n",
                  {{"result", result}, {"meaning", SwitchResultMeaning(result)}});
    if (result == 0 && observer->printer.Changes() == 0) {
        context.Progress("waiting up to " + std::to_string(kSwitchWaitMs / 1000) +
                         " s for the radio to report its new state...");
        if (!observer->printer.WaitForChange(kSwitchWaitMs)) {
            context.Print("no state change reported\n", {{"event", "none"}});
        }
    }
    if (result >= 2) {
        context.exitCode = kExitFailed;
    }
}

void Watch(Context& context, const RadioCalls& calls, unsigned seconds) {
    auto observer = calls.observe(context);
    context.Progress("watching the " + std::string(calls.title) + " radio for " +
                     std::to_string(seconds) + " s...");
    platform::Current().clock().Sleep(seconds * 1000);
    unsigned changes = observer->printer.Changes();
    context.Print(std::to_string(changes) + " state changes\n", {{"changes", changes}});
}

}  // namespace

const char* RadioStateName(int state) {
    switch (state) {
        case 1:
            return "on";
        case 2:
            return "off";
        case 3:
            return "disabled";
        default:
            return "unknown";
    }
}

void PrintState(Context& context, int state, const std::string& more, nlohmann::json extra) {
    extra["state"] = RadioStateName(state);
    extra["value"] = state;
    context.Print("state    " + std::string(RadioStateName(state)) + " (" + std::to_string(state) +
                      ")" + more + '\n',
                  extra);
}

StateChangePrinter::StateChangePrinter(Context& context, std::string radio)
    : timeline_(context),
      radio_(std::move(radio)),
      changed_(platform::Current().clock().NewEvent(true, false)) {}

StateChangePrinter::~StateChangePrinter() {
    Stop();
}

void StateChangePrinter::Changed(int state) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (stopped_) {
            return;
        }
        ++changes_;
        timeline_.Emit(radio_ + ' ' + RadioStateName(state), {{"event", "state"},
                                                              {"radio", radio_},
                                                              {"state", RadioStateName(state)},
                                                              {"value", state}});
    }
    if (changed_) {
        changed_->Set();
    }
}

bool StateChangePrinter::WaitForChange(uint32_t timeoutMs) {
    return changed_ && changed_->Wait(timeoutMs) == platform::WaitResult::Signaled;
}

void StateChangePrinter::Stop() {
    std::lock_guard<std::mutex> lock(mutex_);
    stopped_ = true;
}

unsigned StateChangePrinter::Changes() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return changes_;
}

void AddRadioSubcommands(CLI::App& radio, Context& context, RadioCalls calls) {
    auto shared = std::make_shared<RadioCalls>(std::move(calls));
    radio.add_subcommand("state", "The radio's state (" + std::string(shared->stateCall) + ")")
        ->callback([&context, shared] { PrintState(context, shared->state()); });
    radio.add_subcommand("on", "Switch the radio on and wait for it to say so")
        ->callback([&context, shared] { Switch(context, *shared, true); });
    radio.add_subcommand("off", "Switch the radio off and wait for it to say so")
        ->callback([&context, shared] { Switch(context, *shared, false); });
    auto seconds = std::make_shared<unsigned>(10);
    auto* watch = radio.add_subcommand("watch", "Print the radio's state changes as they come");
    watch->add_option("--seconds", *seconds, "How long to watch")->check(CLI::Range(1u, 3600u));
    watch->callback([&context, shared, seconds] { Watch(context, *shared, *seconds); });
}

}  // namespace connectkit::tool
