#include "commands/RadioStates.h"

#include <iomanip>
#include <sstream>

#include "Context.h"
#include "platform/Platform.h"

namespace connectkit::tool {

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

StateChangePrinter::StateChangePrinter(Context& context, std::string radio)
    : context_(&context),
      radio_(std::move(radio)),
      start_(platform::Current().clock().TickCount64()),
      changed_(platform::Current().clock().NewEvent(true, false)) {}

StateChangePrinter::~StateChangePrinter() {
    Stop();
}

void StateChangePrinter::Changed(int state) {
    uint64_t ms = ElapsedMs();
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!context_) {
            return;
        }
        ++changes_;
        std::ostringstream line;
        line << "[+" << std::setw(6) << ms << " ms] " << radio_ << ' ' << RadioStateName(state)
             << '\n';
        context_->Print(line.str(), {{"event", "state"},
                                     {"radio", radio_},
                                     {"state", RadioStateName(state)},
                                     {"value", state},
                                     {"ms", ms}});
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
    context_ = nullptr;
}

uint64_t StateChangePrinter::ElapsedMs() const {
    return platform::Current().clock().TickCount64() - start_;
}

unsigned StateChangePrinter::Changes() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return changes_;
}

void ReportSwitch(Context& context, StateChangePrinter& printer, int result, uint32_t waitMs) {
    context.Print("result  " + std::to_string(result) + " (" + SwitchResultMeaning(result) + ")\n",
                  {{"result", result}, {"meaning", SwitchResultMeaning(result)}});
    if (result == 0 && printer.Changes() == 0) {
        context.Progress("waiting up to " + std::to_string(waitMs / 1000) +
                         " s for the radio to report its new state...");
        if (!printer.WaitForChange(waitMs)) {
            context.Print("no state change reported\n", {{"event", "none"}});
        }
    }
    if (result >= 2) {
        context.exitCode = kExitFailed;
    }
}

}  // namespace connectkit::tool
