#pragma once
// One part of the simulated PC's world (the registry, the Wi-Fi card, Wi-Fi
// Direct, ...). SimulatedPc holds its models in one list and drives them all
// alike, so a new part of the world is a folder with its model, and one entry
// in that list.

#include <cstddef>

namespace connectkit::sim {

struct Scenario;

// What is still open or running: the figures a leak check compares. Each
// model adds the figures it owns.
struct SimCensus {
    size_t knownThreads = 0;
    size_t pendingEvents = 0;
    size_t openLibraries = 0;
    size_t driverBuffers = 0;
    // Wi-Fi Direct publishers, listeners and devices still alive, and the
    // handlers still registered on them.
    size_t wifiDirectObjects = 0;
    size_t wifiDirectRegistrations = 0;
    // Platform radio objects still alive, and their StateChanged handlers.
    size_t radioObjects = 0;
    size_t radioRegistrations = 0;
    // Advertisement watchers still alive, and their handlers.
    size_t bleWatchers = 0;
    size_t bleRegistrations = 0;
    // Native Wi-Fi client handles still open.
    size_t wlanHandles = 0;
};

// A model overrides the steps it takes part in; the others do nothing.
class SimModel {
public:
    virtual ~SimModel() = default;

    // Forgets what the last scenario put into the model. Every model is reset
    // before any is applied, so a model may fill another (a card installs its
    // driver files) without the other wiping it again.
    virtual void Reset() {}
    // Puts the model's section of the scenario into the world.
    virtual void Apply(const Scenario&) {}
    // Adds the figures the model owns.
    virtual void Count(SimCensus&) const {}
};

}  // namespace connectkit::sim
