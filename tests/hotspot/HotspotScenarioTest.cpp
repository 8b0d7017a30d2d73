// Every example world named after a hotspot outcome reaches that outcome.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include "connectkit/SoftAPManager.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

struct Expectation {
    const char* world;
    SoftAPResult result;
};

void PrintTo(const Expectation& expectation, std::ostream* out) {
    *out << expectation.world << " -> " << SoftAPResultMeaning(expectation.result);
}

class HotspotScenarioTest : public SimTest, public ::testing::WithParamInterface<Expectation> {};

TEST_P(HotspotScenarioTest, CreateReachesTheResultTheWorldIsNamedFor) {
    ApplyExampleWorld(GetParam().world);
    SoftAPInfo info;
    int result = SystemCreateSoftAP(info);
    EXPECT_EQ(result, GetParam().result);
    // Only some outcomes stay for GetSoftApError.
    auto entry = std::find_if(std::begin(kSoftAPResults), std::end(kSoftAPResults),
                              [&](const auto& known) { return known.result == result; });
    ASSERT_NE(entry, std::end(kSoftAPResults)) << result;
    EXPECT_EQ(GetSoftApError(), entry->kept ? result : 0);
    SystemDestroySoftAP(info);
}

INSTANTIATE_TEST_SUITE_P(
    Worlds, HotspotScenarioTest,
    ::testing::Values(
        Expectation{"hotspot-ok", SOFTAP_READY},
        Expectation{"hotspot-start-fails", SOFTAP_START_FAILED},
        Expectation{"hotspot-start-fails-after-restart", SOFTAP_START_FAILED_AFTER_RESTART},
        Expectation{"hotspot-no-mac", SOFTAP_NO_MAC_IP_ABSENT},
        Expectation{"hotspot-no-mac-ip-present", SOFTAP_NO_MAC_IP_PRESENT},
        Expectation{"hotspot-foreign-go", SOFTAP_FOREIGN_GROUP_OWNER},
        Expectation{"hotspot-no-virtual-adapter", SOFTAP_START_FAILED_ADAPTER_MISSING},
        Expectation{"hotspot-virtual-adapter-disabled", SOFTAP_START_FAILED_ADAPTER_DISABLED},
        Expectation{"intel-de", SOFTAP_READY}, Expectation{"intel-cn", SOFTAP_READY},
        Expectation{"realtek-us", SOFTAP_READY},
        Expectation{"phones-join-and-leave", SOFTAP_READY}),
    [](const ::testing::TestParamInfo<Expectation>& info) {
        std::string name;
        for (const char* c = info.param.world; *c; ++c) {
            name.push_back(*c == '-' ? '_' : *c);
        }
        return name;
    });

}  // namespace
}  // namespace connectkit::test
