// Scenario files come from users: any bytes must give a scenario or a clear
// error, never a crash.

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/sim/core/Scenario.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    connectkit::sim::Scenario scenario;
    connectkit::sim::ScenarioError error;
    std::string text(reinterpret_cast<const char*>(data), size);
    if (!connectkit::sim::ParseScenario(text, "fuzz.json", scenario, error)) {
        if (error.field.empty() || error.message.empty()) {
            __builtin_trap();
        }
    }
    return 0;
}
