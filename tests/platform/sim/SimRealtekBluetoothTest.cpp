// The simulated Realtek Bluetooth library as the advertiser meets it: busy
// answers to repeat, opens that fail, and commands that reach the controller.
#include <gtest/gtest.h>

#include "platform/ports/BluetoothHci.h"
#include "platform/sim/bluetooth/SimHciController.h"
#include "platform/sim/bluetooth/SimRealtekBluetooth.h"

namespace connectkit::test {
namespace {

namespace hci = platform::hci;
namespace rtk = platform::rtk;
using namespace sim::rtkbt;

class SimRealtekBluetoothTest : public ::testing::Test {
protected:
    void Configure(sim::SimRealtekBluetoothSettings settings, sim::SimHciSettings hci = {}) {
        controller_.Configure(std::move(hci));
        sim::ConfigureSimRealtekBluetooth(settings, [this](const std::vector<uint8_t>& packet) {
            return controller_.Command(packet).event;
        });
    }
    void TearDown() override { sim::ConfigureSimRealtekBluetooth({}, nullptr); }

    static rtk::MultiAdvParam Parameters(uint8_t instance) {
        return {80, 80, 3, 0, {}, 0, {}, 7, 0, instance, 0};
    }

    sim::SimHciController controller_;
};

TEST_F(SimRealtekBluetoothTest, BusyAnswersAndFailedOpensComeFirst) {
    Configure({{{rtk::kOpenDevice, 2}, {rtk::kCloseAdv, 1}}, 1});
    rtk::Device device = nullptr;
    EXPECT_EQ(RtkApplOpenDevice(&device), rtk::kRtkBusy);
    EXPECT_EQ(device, nullptr);
    EXPECT_EQ(RtkApplOpenDevice(&device), rtk::kRtkBusy);
    EXPECT_EQ(RtkApplOpenDevice(&device), sim::kRtkFailure);
    EXPECT_EQ(device, rtk::InvalidDevice());
    EXPECT_EQ(RtkApplCloseAdv(1, device), rtk::kRtkBusy);
    EXPECT_EQ(RtkApplCloseAdv(1, device), sim::kRtkFailure);
    ASSERT_EQ(RtkApplOpenDevice(&device), rtk::kRtkSuccess);
    EXPECT_NE(device, rtk::InvalidDevice());
    EXPECT_EQ(RtkApplCloseAdv(1, device), rtk::kRtkSuccess);
    EXPECT_EQ(RtkApplCloseDevice(device), rtk::kRtkSuccess);
    EXPECT_EQ(RtkApplCloseAdv(1, device), sim::kRtkFailure);
    EXPECT_FALSE(sim::RealtekBluetoothLog().open);
    EXPECT_EQ(sim::RealtekBluetoothLog().calls.size(), 9u);
}

TEST_F(SimRealtekBluetoothTest, WhatItSendsReachesTheControllerAndItsRefusalsComeBack) {
    using Kind = sim::SimHciFault::Kind;
    Configure(
        {},
        {5, {}, 0, {{hci::kSubEnable, Kind::Disallowed, 1}, {hci::kSubSetData, Kind::Silent, 1}}});
    rtk::Device device = rtk::InvalidDevice();
    ASSERT_EQ(RtkApplOpenDevice(&device), rtk::kRtkSuccess);
    auto parameters = Parameters(2);
    const std::vector<uint8_t> data{3, 0xFF, 0x7D, 0x02}, response{2, 0x16, 0x35};
    auto send = [&](const uint8_t* bytes, uint8_t length) {
        return RtkApplSendAdv(2, bytes, length, response.data(), 3, device);
    };
    EXPECT_EQ(RtkSendHciLeSetMultiAdvParam(device, &parameters), rtk::kRtkSuccess);
    EXPECT_EQ(send(data.data(), 4), sim::kRtkNoAnswer);
    EXPECT_EQ(send(data.data(), 4), sim::kRtkRefused + hci::kStatusCommandDisallowed);
    EXPECT_EQ(send(data.data(), 4), rtk::kRtkSuccess);
    auto instance = controller_.Instances()[1];
    EXPECT_TRUE(instance.enabled);
    EXPECT_EQ(instance.data, data);
    EXPECT_EQ(instance.scanResponse, response);
    EXPECT_EQ(RtkApplCloseAdv(2, device), rtk::kRtkSuccess);
    EXPECT_FALSE(controller_.Instances()[1].enabled);

    size_t sent = controller_.Exchanges().size();
    uint8_t tooLong[32] = {};
    EXPECT_EQ(send(tooLong, sizeof(tooLong)), sim::kRtkFailure);
    EXPECT_EQ(send(nullptr, 3), sim::kRtkFailure);
    EXPECT_EQ(RtkSendHciLeSetMultiAdvParam(device, nullptr), sim::kRtkFailure);
    EXPECT_EQ(controller_.Exchanges().size(), sent);
    parameters.instance = 9;
    EXPECT_EQ(RtkSendHciLeSetMultiAdvParam(device, &parameters),
              sim::kRtkRefused + hci::kStatusInvalidParameters);
}

}  // namespace
}  // namespace connectkit::test
