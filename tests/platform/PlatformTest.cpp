#include <gtest/gtest.h>

#include "platform/Platform.h"
#include "support/LogCapture.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

TEST(Platform, TheBackendCannotBeReplacedOnceInUse) {
    LogCapture capture;
    EXPECT_EQ(&platform::Current(), static_cast<platform::Backend*>(&Pc()));
    EXPECT_FALSE(platform::Install(std::make_shared<sim::SimulatedPc>()));
    EXPECT_FALSE(platform::Install(nullptr));
    EXPECT_EQ(&platform::Current(), static_cast<platform::Backend*>(&Pc()));
    EXPECT_EQ(capture.Count(L"connectkit::platform::Install refused"), 2u);
}

}  // namespace
}  // namespace connectkit::test
