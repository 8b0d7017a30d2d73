// The Realtek Bluetooth library double, found by name through the loader
// port as the library finds the real one: the simulated library's answers
// (a failed open, busy, refusals) over a controller model of its own.

#include <gtest/gtest.h>

#include "platform/ports/VendorBluetooth.h"
#include "platform/windows/machine/WinLoader.h"
#include "vendordll/CkRtkControl.h"

namespace connectkit::test {
namespace {

namespace rtk = platform::rtk;

template <typename Function>
Function Entry(platform::LoadedLibrary& library, const char* name) {
    auto found = reinterpret_cast<Function>(library.FindSymbol(name));
    EXPECT_TRUE(found) << name;
    return found;
}

TEST(RealtekBluetoothDouble, TheFiveEntriesAnswerAsTheSimulatedLibrary) {
    win::WinLoader loader;
    uint32_t error = 0;
    auto library = loader.Load(rtk::kLibraryName, error);
    ASSERT_TRUE(library) << error;
    auto configure = Entry<CkRtkConfigureFunction>(*library, kCkRtkConfigureName);
    auto open = Entry<rtk::OpenDeviceFn>(*library, rtk::kOpenDevice);
    auto close = Entry<rtk::CloseDeviceFn>(*library, rtk::kCloseDevice);
    auto setParameters = Entry<rtk::SetMultiAdvParamFn>(*library, rtk::kSetMultiAdvParam);
    auto send = Entry<rtk::SendAdvFn>(*library, rtk::kSendAdv);
    auto closeAdv = Entry<rtk::CloseAdvFn>(*library, rtk::kCloseAdv);
    ASSERT_FALSE(HasFailure());

    CkRtkSetup setup{};
    setup.busy[3] = 1;
    setup.failingOpens = 1;
    ASSERT_EQ(configure(&setup, nullptr), 0);
    rtk::Device device = nullptr;
    EXPECT_NE(open(&device), rtk::kRtkSuccess);
    EXPECT_EQ(device, rtk::InvalidDevice());
    ASSERT_EQ(open(&device), rtk::kRtkSuccess);
    rtk::MultiAdvParam parameters{0xA0, 0xA0, 3, 0, {}, 0, {}, 7, 0, 2, 0};
    const uint8_t data[] = {2, 1, 6};
    EXPECT_EQ(setParameters(device, &parameters), rtk::kRtkSuccess);
    EXPECT_EQ(send(2, data, sizeof data, nullptr, 0, device), rtk::kRtkBusy);
    EXPECT_EQ(send(2, data, sizeof data, nullptr, 0, device), rtk::kRtkSuccess);
    CkRtkReport report{};
    configure(nullptr, &report);
    EXPECT_EQ(report.hciEnabled, 1u << 2);
    EXPECT_NE(send(3, data, sizeof data, nullptr, 0, device), rtk::kRtkSuccess)
        << "an instance without parameters";
    EXPECT_EQ(closeAdv(2, device), rtk::kRtkSuccess);
    EXPECT_EQ(close(device), rtk::kRtkSuccess);
    configure(nullptr, &report);
    EXPECT_EQ(report.hciEnabled, 0u);
    EXPECT_FALSE(report.open);
}

}  // namespace
}  // namespace connectkit::test
