#pragma once
// Tests run against one simulated PC per process, installed before the
// library first needs a backend. Each test starts from a fresh world.

#include <gtest/gtest.h>

#include <string>

#include "platform/sim/SimulatedPc.h"
#include "platform/sim/core/Scenario.h"

namespace connectkit::test {

// The process's simulated PC (installed on first call).
sim::SimulatedPc& Pc();

// A world written as JSON in the test; a mistake in it fails the test.
sim::Scenario WorldFromJson(const std::string& json);
// Applies a world written as JSON, or one of examples/worlds by its name.
void ApplyJsonWorld(const std::string& json);
void ApplyExampleWorld(const std::string& name);

class SimTest : public ::testing::Test {
protected:
    void SetUp() override { Pc().Reset(); }
    // Lets notification threads still at work finish before the world goes
    // (and, after the last test, before the process tears down the logger).
    void TearDown() override {
        Pc().clock().Sleep(100);
        Pc().Reset();
        Pc().clock().Sleep(100);
    }
    sim::SimulatedPc& pc() { return Pc(); }
    uint64_t Now() { return Pc().clock().TickCount64(); }
};

}  // namespace connectkit::test
