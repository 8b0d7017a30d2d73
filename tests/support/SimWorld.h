#pragma once
// Tests run against one simulated PC per process, installed before the
// library first needs a backend. Each test starts from a fresh world.

#include <gtest/gtest.h>

#include "platform/sim/SimulatedPc.h"

namespace connectkit::test {

// The process's simulated PC (installed on first call).
sim::SimulatedPc& Pc();

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
};

}  // namespace connectkit::test
