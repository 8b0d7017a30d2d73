#pragma once
// The bthprops double as the tests drive it: loaded for the holder's life,
// set up, and read back.

#include <gtest/gtest.h>

#include "DoubleControl.h"
#include "bthdll/CkBthControl.h"

namespace connectkit::test {

class BthDouble : public DoubleControl<CkBthSetup, CkBthReport> {
public:
    BthDouble() : DoubleControl(L"ckbthprops.dll", kCkBthConfigureName) {
        EXPECT_TRUE(Ready()) << "the bthprops double cannot be loaded";
    }
};

}  // namespace connectkit::test
