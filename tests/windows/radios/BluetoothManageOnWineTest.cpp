// BluetoothManage on the Windows backend with no radio anywhere: Wine's
// Radio class is not registered, the bthprops double holds no radio and
// Wine's Bluetooth setup class no device, so every answer comes from the
// library's failure paths running against a real implementation.

#include <gtest/gtest.h>

#include "bthdll/BthDouble.h"
#include "connectkit/BluetoothManage.h"
#include "support/LogCapture.h"
#include "winrt/FakeRuntime.h"

namespace connectkit::test {
namespace {

using namespace ConnectKitBluetooth;

TEST(BluetoothManageOnWine, WithoutAnyRadioEveryAnswerIsTheFailureOne) {
    BthDouble noRadio;
    noRadio.Configure({});
    InstalledRuntime().UseSystem(true);
    auto* manage = BluetoothManage::GetInstance();
    LogCapture log;
    EXPECT_EQ(manage->GetBluetoothState(), BT_STATE_OFF);
    EXPECT_TRUE(log.Contains(L"failed to get bluetooth radio"));
    EXPECT_FALSE(manage->IsBluetoothAvailable());
    EXPECT_FALSE(manage->IsRadioAvailable());
    const BT_ADDRESS* address = manage->GetBtMacAndName();
    ASSERT_NE(address, nullptr);
    EXPECT_EQ(address->address, 0u);
    EXPECT_TRUE(address->name.empty());
    EXPECT_TRUE(manage->GetBtName().empty());
    EXPECT_EQ(manage->EnableBluetooth(1), ENABLE_BT_FAILED);
    EXPECT_EQ(manage->EnableBluetooth(0), ENABLE_BT_FAILED);
    InstalledRuntime().UseSystem(false);
}

}  // namespace
}  // namespace connectkit::test
