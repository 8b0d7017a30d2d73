#pragma once
// The fuzzers that drive the library run it on one simulated PC per
// process, given a fresh world for every input.

#include <memory>

#include "platform/Platform.h"
#include "platform/sim/SimulatedPc.h"

namespace connectkit::fuzz {

inline sim::SimulatedPc& Pc() {
    static std::shared_ptr<sim::SimulatedPc> pc = [] {
        auto created = std::make_shared<sim::SimulatedPc>();
        if (!platform::Install(created)) {
            __builtin_trap();
        }
        return created;
    }();
    return *pc;
}

}  // namespace connectkit::fuzz
