#pragma once
// What the radio commands share: the names of radio states and of the
// library's switch results, the printer of state changes as the library's
// observers hear them, and the subcommands every radio has.

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>

#include "commands/Timeline.h"

namespace CLI {
class App;
}

namespace connectkit::platform {
class Event;
}

namespace connectkit::tool {

class Context;

// The platform's radio states, as BluetoothState and WifiState carry them.
const char* RadioStateName(int state);

// "state    on (1)" and whatever `more` adds to the line and to the JSON.
void PrintState(Context& context, int state, const std::string& more = "",
                nlohmann::json extra = nlohmann::json::object());

// Prints each state change on its own line with the PC's time since the
// printer started. Observers call Changed on whatever thread the library
// calls them on; once Stop returns, later calls print nothing.
class StateChangePrinter {
public:
    StateChangePrinter(Context& context, std::string radio);
    ~StateChangePrinter();

    void Changed(int state);
    // True once a change came, waiting for one up to `timeoutMs` of the PC's
    // time.
    bool WaitForChange(uint32_t timeoutMs);
    void Stop();
    uint64_t ElapsedMs() const { return timeline_.ElapsedMs(); }
    unsigned Changes() const;

private:
    Timeline timeline_;
    std::string radio_;
    std::unique_ptr<platform::Event> changed_;
    mutable std::mutex mutex_;
    bool stopped_ = false;
    unsigned changes_ = 0;
};

// A radio manager's observer: registered while it lives, it hands each change
// to its printer.
class RadioObserver {
public:
    RadioObserver(Context& context, std::string radio) : printer(context, std::move(radio)) {}
    virtual ~RadioObserver() = default;

    StateChangePrinter printer;
};

// How the radio commands reach one radio's manager.
struct RadioCalls {
    const char* title;      // in progress lines: "Bluetooth", "Wi-Fi"
    const char* stateCall;  // the manager's state call, for the help
    std::function<int()> state;
    std::function<int(int on)> enable;
    std::function<std::unique_ptr<RadioObserver>(Context&)> observe;
};

// `state`, `on`, `off` and `watch` under `radio`.
void AddRadioSubcommands(CLI::App& radio, Context& context, RadioCalls calls);

}  // namespace connectkit::tool
