#include <gtest/gtest.h>

#include "connectkit/SystemEnvironment.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

using SystemFactsTest = SimTest;

// Each fact as the machine gives it, and what an empty source gives.
TEST_F(SystemFactsTest, FactsComeFromTheMachine) {
    const char* machines[] = {
        R"j({"system": {"os": {"version": "10.0.22631", "updateRevision": 2861,
             "displayVersion": "23H2"}, "biosVersion": "N3HET82W (1.54)", "model": "Book 14",
             "deviceId": "4C4C4544-0042-3510-8051-B2C04F4B4E32", "dpi": 120}})j",
        R"j({"system": {"os": {"version": "", "displayVersion": ""}, "biosVersion": "",
             "model": "", "deviceId": "", "dpi": 0}})j"};
    const std::vector<std::string> expected[] = {
        {"10.0.22631.2861", "22631", "23H2", "N3HET82W (1.54)", "Book 14",
         "4C4C4544-0042-3510-8051-B2C04F4B4E32", "120"},
        {"", "0", "", "", "", "", "96"}};
    for (int i = 0; i < 2; ++i) {
        ApplyJsonWorld(machines[i]);
        EXPECT_EQ((std::vector<std::string>{
                      SystemEnvironment::GetOsVersion(),
                      std::to_string(SystemEnvironment::GetOsBuildNumber()),
                      SystemEnvironment::GetOsDisplayVersion(), SystemEnvironment::GetBiosVersion(),
                      SystemEnvironment::GetModelName(), SystemEnvironment::GetDeviceId(),
                      std::to_string(SystemEnvironment::GetDisplayDpi())}),
                  expected[i]);
    }
}

TEST_F(SystemFactsTest, FeatureSwitchesByModelThenDefaultThenOff) {
    ApplyJsonWorld(R"j({"system": {"model": "Book 14"},
              "registry": [
                {"key": "HKLM\\SOFTWARE\\Veltra\\Brisklane\\ModelFeatures\\Book 14",
                 "values": {"Cast": {"dword": 1}, "Mirror": {"dword": 0}, "Text": {"string": "1"}}},
                {"key": "HKLM\\SOFTWARE\\Veltra\\Brisklane\\ModelFeatures\\Default",
                 "values": {"Mirror": {"dword": 1}, "Audio": {"dword": 1}}}]})j");
    EXPECT_TRUE(SystemEnvironment::GetModelFeatureSwitch("Cast"));
    // The model's own row wins over the default, even to say off.
    EXPECT_FALSE(SystemEnvironment::GetModelFeatureSwitch("Mirror"));
    EXPECT_TRUE(SystemEnvironment::GetModelFeatureSwitch("Audio"));
    EXPECT_FALSE(SystemEnvironment::GetModelFeatureSwitch("Text"));
    EXPECT_FALSE(SystemEnvironment::GetModelFeatureSwitch("Unknown"));
    EXPECT_FALSE(SystemEnvironment::GetModelFeatureSwitch(""));
}

}  // namespace
}  // namespace connectkit::test
