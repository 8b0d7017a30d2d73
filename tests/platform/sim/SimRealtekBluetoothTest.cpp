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
        rtk::MultiAdvParam parameters{};
        parameters.intervalMin = parameters.intervalMax = 80;
        parameters.advertisingType = 3;
        parameters.channelMap = 7;
        parameters.instance = instance;
        return parameters;
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

TEST_F(SimRealtekBluetoothTest, WhatItSendsReachesTheController) {
    Configure({});
    rtk::Device device = rtk::InvalidDevice();
    ASSERT_EQ(RtkApplOpenDevice(&device), rtk::kRtkSuccess);
    auto parameters = Parameters(2);
    const uint8_t data[] = {3, 0xFF, 0x7D, 0x02};
    const uint8_t response[] = {2, 0x16, 0x35};
    EXPECT_EQ(RtkSendHciLeSetMultiAdvParam(device, &parameters), rtk::kRtkSuccess);
    EXPECT_EQ(RtkApplSendAdv(2, data, sizeof(data), response, sizeof(response), device),
              rtk::kRtkSuccess);
    auto instance = controller_.Instances()[1];
    EXPECT_TRUE(instance.enabled);
    EXPECT_EQ(instance.data, std::vector<uint8_t>(data, data + sizeof(data)));
    EXPECT_EQ(instance.scanResponse, std::vector<uint8_t>(response, response + sizeof(response)));
    EXPECT_EQ(RtkApplCloseAdv(2, device), rtk::kRtkSuccess);
    EXPECT_FALSE(controller_.Instances()[1].enabled);

    size_t sent = controller_.Exchanges().size();
    uint8_t tooLong[32] = {};
    EXPECT_EQ(RtkApplSendAdv(2, tooLong, sizeof(tooLong), nullptr, 0, device), sim::kRtkFailure);
    EXPECT_EQ(RtkApplSendAdv(2, nullptr, 3, nullptr, 0, device), sim::kRtkFailure);
    EXPECT_EQ(RtkSendHciLeSetMultiAdvParam(device, nullptr), sim::kRtkFailure);
    EXPECT_EQ(controller_.Exchanges().size(), sent);
}

TEST_F(SimRealtekBluetoothTest, TheControllersRefusalsComeBack) {
    using Kind = sim::SimHciFault::Kind;
    sim::SimHciSettings hci;
    hci.faults = {{hci::kSubEnable, Kind::Disallowed, 1}, {hci::kSubSetData, Kind::Silent, 1}};
    Configure({}, hci);
    rtk::Device device = rtk::InvalidDevice();
    ASSERT_EQ(RtkApplOpenDevice(&device), rtk::kRtkSuccess);
    auto parameters = Parameters(1);
    ASSERT_EQ(RtkSendHciLeSetMultiAdvParam(device, &parameters), rtk::kRtkSuccess);
    const uint8_t data[] = {2, 1, 6};
    EXPECT_EQ(RtkApplSendAdv(1, data, sizeof(data), nullptr, 0, device), sim::kRtkNoAnswer);
    EXPECT_EQ(RtkApplSendAdv(1, data, sizeof(data), nullptr, 0, device),
              sim::kRtkRefused + hci::kStatusCommandDisallowed);
    EXPECT_EQ(RtkApplSendAdv(1, data, sizeof(data), nullptr, 0, device), rtk::kRtkSuccess);
    parameters.instance = 9;
    EXPECT_EQ(RtkSendHciLeSetMultiAdvParam(device, &parameters),
              sim::kRtkRefused + hci::kStatusInvalidParameters);
}

}  // namespace
}  // namespace connectkit::test
