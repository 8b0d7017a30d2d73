#pragma once
// The controller model both Bluetooth doubles send to, set up from the
// plain C fault list the tests hand them, and read back as plain counts.

#include "bthdll/CkBthControl.h"
#include "platform/sim/bluetooth/SimHciController.h"

namespace connectkit::bthdll {

// Nothing waits inside a double: Wine's clock is the real one.
inline sim::SimHciSettings HciSettings(const CkHciFault* faults, uint32_t count) {
    sim::SimHciSettings settings;
    settings.noAnswerWaitMs = 0;
    for (uint32_t index = 0; index < count && index < 4; ++index) {
        settings.faults.push_back({faults[index].subOpcode,
                                   static_cast<sim::SimHciFault::Kind>(faults[index].kind),
                                   faults[index].times});
    }
    return settings;
}

inline void Report(const sim::SimHciController& controller, uint32_t& commands, uint32_t& enabled) {
    commands = static_cast<uint32_t>(controller.Exchanges().size());
    enabled = 0;
    auto instances = controller.Instances();
    for (size_t index = 0; index < instances.size() && index < 31; ++index) {
        enabled |= instances[index].enabled ? 1u << (index + 1) : 0;
    }
}

}  // namespace connectkit::bthdll
