#pragma once
// What the figures measured on the simulated PC share: the PC, how fast its
// virtual time runs against the wall clock, and how such a pair is added.

#include <functional>
#include <string>

#include "platform/sim/SimulatedPc.h"

namespace connectkit::bench {

// The simulated PC behind the process's backend (HandedWatcher.h).
sim::SimulatedPc& Pc();

// Virtual milliseconds that pass per wall-clock millisecond over `cycles`
// runs of `cycle`; -1 as soon as one fails.
double MeasureVirtualPerWall(int cycles, const std::function<bool()>& cycle);

// Adds `overhead` (virtual time beyond what the platform itself takes, which
// must be 0) and `speed` (virtual per wall time, at least 1000).
void AddSimFigures(std::string overheadName, std::function<double()> overhead,
                   std::string speedName, std::function<double()> speed);

}  // namespace connectkit::bench
