#pragma once
// The bthprops double as the tests drive it: loaded for the holder's life,
// set up, and read back.

#include <gtest/gtest.h>

#include "bthdll/CkBthControl.h"

namespace connectkit::test {

class BthDouble {
public:
    BthDouble() : module_(LoadLibraryW(L"ckbthprops.dll")) {
        if (module_) {
            configure_ = reinterpret_cast<CkBthConfigureFunction>(
                reinterpret_cast<void*>(GetProcAddress(module_, kCkBthConfigureName)));
        }
        EXPECT_TRUE(configure_) << "the bthprops double cannot be loaded";
    }
    ~BthDouble() { FreeLibrary(module_); }
    BthDouble(const BthDouble&) = delete;
    BthDouble& operator=(const BthDouble&) = delete;

    void Configure(const CkBthSetup& setup) {
        ASSERT_TRUE(configure_);
        ASSERT_EQ(configure_(&setup, nullptr), 0);
    }
    CkBthReport Report() {
        CkBthReport report{};
        if (configure_) {
            configure_(nullptr, &report);
        }
        return report;
    }

private:
    HMODULE module_;
    CkBthConfigureFunction configure_ = nullptr;
};

}  // namespace connectkit::test
