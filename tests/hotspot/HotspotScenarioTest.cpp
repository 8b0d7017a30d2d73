// Every example world named after a hotspot outcome reaches that outcome.
#include <gtest/gtest.h>

#include "connectkit/SoftAPManager.h"
#include "platform/sim/core/Scenario.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

struct Expectation {
    const char* world;
    int result;
};

void PrintTo(const Expectation& expectation, std::ostream* out) {
    *out << expectation.world << " -> " << expectation.result;
}

class HotspotScenarioTest : public SimTest, public ::testing::WithParamInterface<Expectation> {};

TEST_P(HotspotScenarioTest, CreateReachesTheResultTheWorldIsNamedFor) {
    sim::Scenario scenario;
    sim::ScenarioError error;
    std::string path = std::string(CONNECTKIT_WORLDS_DIR) + "/" + GetParam().world + ".json";
    ASSERT_TRUE(sim::LoadScenarioFile(path, scenario, error)) << error.ToString();
    pc().Apply(scenario);
    SoftAPInfo info;
    EXPECT_EQ(SystemCreateSoftAP(info), GetParam().result);
    SystemDestroySoftAP(info);
}

INSTANTIATE_TEST_SUITE_P(Worlds, HotspotScenarioTest,
                         ::testing::Values(Expectation{"hotspot-ok", 0},
                                           Expectation{"hotspot-start-fails", -26},
                                           Expectation{"hotspot-start-fails-after-restart", -95},
                                           Expectation{"hotspot-no-mac", -91},
                                           Expectation{"hotspot-no-mac-ip-present", -92},
                                           Expectation{"hotspot-foreign-go", -94},
                                           Expectation{"hotspot-no-virtual-adapter", -96},
                                           Expectation{"hotspot-virtual-adapter-disabled", -97},
                                           Expectation{"intel-de", 0}, Expectation{"intel-cn", 0},
                                           Expectation{"realtek-us", 0},
                                           Expectation{"phones-join-and-leave", 0}),
                         [](const ::testing::TestParamInfo<Expectation>& info) {
                             std::string name;
                             for (const char* c = info.param.world; *c; ++c) {
                                 name.push_back(*c == '-' ? '_' : *c);
                             }
                             return name;
                         });

}  // namespace
}  // namespace connectkit::test
