#pragma once
// What the radio commands share: the names of radio states and of the
// library's switch results, and the printer of state changes as the
// library's observers hear them.

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace connectkit::platform {
class Event;
}

namespace connectkit::tool {

class Context;

// The platform's radio states, as BluetoothState and WifiState carry them.
const char* RadioStateName(int state);
// EnableBTResult and EnableWifiResult share their values.
const char* SwitchResultMeaning(int result);

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
    uint64_t ElapsedMs() const;
    unsigned Changes() const;

private:
    Context* context_;
    std::string radio_;
    uint64_t start_;
    std::unique_ptr<platform::Event> changed_;
    mutable std::mutex mutex_;
    unsigned changes_ = 0;
};

// The switch's outcome on its own line, then the change it brought, if one
// comes within `waitMs`; the exit code says whether the radio can switch.
void ReportSwitch(Context& context, StateChangePrinter& printer, int result, uint32_t waitMs);

}  // namespace connectkit::tool
