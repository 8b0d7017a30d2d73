// VendorMultiAdv on the Windows backend against the doubles: the own HCI
// path through the bthprops double's radio and its controller model, the
// Realtek path through the RealtekBTVeltra.dll double, which the loader
// port finds by name.

#include <gtest/gtest.h>

#include <string>

#include "DoubleControl.h"
#include "bluetooth/VendorMultiAdv.h"
#include "bthdll/BthDouble.h"
#include "connectkit/BLEAdvertiser.h"
#include "platform/ports/BluetoothHci.h"
#include "platform/ports/Radios.h"
#include "support/LogCapture.h"
#include "vendordll/CkRtkControl.h"

namespace connectkit::test {
namespace {

namespace hci = platform::hci;
using platform::RadioState;

const std::vector<uint8_t> kAdv{14, 1, 2, 3};
const std::vector<uint8_t> kResp{15, 4, 5};

// An instance on a radio that just came on, as BluetoothManage tells it.
std::unique_ptr<VendorMultiAdv> Instance(int vendor, uint8_t instance) {
    auto advertiser = std::make_unique<VendorMultiAdv>(vendor, instance);
    advertiser->OnBluetoothStateChanged(RadioState::On);
    return advertiser;
}

// The commands reach the radio through DeviceIoControl, and an unanswered
// one's error comes back through it to the front; stopping sends enable 0.
// The version the controller reports is logged. Which command fails with
// which code is the advertiser's logic, shown on the simulated PC.
TEST(VendorMultiAdvOnWine, TheOwnPathReachesTheRadioThroughDeviceIoControl) {
    struct Case {
        CkHciFault fault;
        uint32_t commands;
        unsigned long error;
    } cases[] = {
        {{}, 4, 0}, {{hci::kSubSetParameters, 2, 1}, 1, 121},  // no answer: ERROR_SEM_TIMEOUT
    };
    BthDouble bluetooth;
    auto* front = BLEAdvertiser::GetUniqueInstance();
    for (const auto& test : cases) {
        CkBthSetup setup{};
        setup.radioCount = 1;
        setup.radios[0].info.manufacturer = 15;
        setup.radios[0].lmpVersion = 9;
        setup.hciFaultCount = test.fault.subOpcode ? 1 : 0;
        setup.hciFaults[0] = test.fault;
        bluetooth.Configure(setup);
        LogCapture log;
        auto advertiser = Instance(VendorMultiAdv::kVendorOwnHci, 2);
        front->SetLastError(0);
        uint32_t before = bluetooth.Report().hciCommands;
        EXPECT_EQ(advertiser->StartAdvertise(kAdv, kResp), test.error == 0);
        EXPECT_EQ(bluetooth.Report().hciCommands - before, test.commands) << test.error;
        EXPECT_EQ(front->GetLastError(), test.error);
        EXPECT_TRUE(log.Contains(L"GetBtVersion bluetooth version is = 5.0"));
        EXPECT_EQ(bluetooth.Report().hciEnabled, test.error ? 0u : 1u << 2);
        if (test.error == 0) {
            EXPECT_TRUE(advertiser->StopAdvertise());
            EXPECT_EQ(bluetooth.Report().hciEnabled, 0u);
        }
    }
    BLEAdvertiser::ReleaseUniqueInstance();
    bluetooth.Configure({});
}

// The library is found by name through the loader port, and its busy
// answers come back as the library gave them: the send is repeated.
TEST(VendorMultiAdvOnWine, TheRealtekPathReachesTheLibraryByName) {
    DoubleControl<CkRtkSetup, CkRtkReport> library(platform::rtk::kLibraryName,
                                                   kCkRtkConfigureName);
    ASSERT_TRUE(library.Ready());
    CkRtkSetup setup{};
    setup.busy[3] = 2;
    library.Configure(setup);
    auto advertiser = Instance(VendorMultiAdv::kVendorRealtek, 3);
    EXPECT_TRUE(advertiser->StartAdvertise(kAdv, kResp));
    auto report = library.Report();
    EXPECT_EQ(report.hciEnabled, 1u << 3);
    int sends = 0;
    for (uint32_t call = 0; call < report.callCount && call < 32; ++call) {
        sends += std::string(report.calls[call]) == platform::rtk::kSendAdv;
    }
    EXPECT_EQ(sends, 3);
    EXPECT_TRUE(advertiser->StopAdvertise());
    advertiser->CloseDevice();
    report = library.Report();
    EXPECT_EQ(report.hciEnabled, 0u);
    EXPECT_FALSE(report.open);
}

}  // namespace
}  // namespace connectkit::test
