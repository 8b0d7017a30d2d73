// The vendor controller as the library meets it: the status each command
// earns, what it keeps, and the vendor control code's own refusals.
#include <gtest/gtest.h>

#include <cstring>

#include "platform/ports/BluetoothHci.h"
#include "platform/sim/bluetooth/SimHciController.h"
#include "support/HciCommands.h"

namespace connectkit::test {
namespace {

namespace hci = platform::hci;
using sim::SimHciController;
using sim::SimHciFault;
using Bytes = std::vector<uint8_t>;
using namespace hcicmd;

uint8_t StatusOf(const SimHciController::Answer& answer) {
    return answer.event.size() > 5 ? answer.event[5] : 0xFF;
}

TEST(SimHciControllerTest, EachCommandEarnsItsStatus) {
    Bytes cutShort = SetParameters(1);
    cutShort.pop_back();
    Bytes tooLong = SetData(hci::kSubSetData, 1, {});
    tooLong.push_back(0);
    Bytes dataLength32 = SetData(hci::kSubSetData, 1, {});
    dataLength32[1] = 32;
    struct Case {
        const char* what;
        Bytes packet;
        uint8_t status;
    };
    const Case cases[] = {
        {"parameters", Packet(SetParameters(1)), hci::kStatusSuccess},
        {"parameters, last instance", Packet(SetParameters(5)), hci::kStatusSuccess},
        {"parameters, instance 0", Packet(SetParameters(0)), hci::kStatusInvalidParameters},
        {"parameters, instance 6", Packet(SetParameters(6)), hci::kStatusInvalidParameters},
        {"parameters, 19 ms", Packet(SetParameters(1, 31)), hci::kStatusInvalidParameters},
        {"parameters, no channel", Packet(SetParameters(1, 80, 8)), hci::kStatusInvalidParameters},
        {"parameters cut short", Packet(cutShort), hci::kStatusInvalidParameters},
        {"data", Packet(SetData(hci::kSubSetData, 2, Bytes(31, 7))), hci::kStatusSuccess},
        {"data, 35 bytes", Packet(tooLong), hci::kStatusInvalidParameters},
        {"data, length 32", Packet(dataLength32), hci::kStatusInvalidParameters},
        {"response, instance 9", Packet(SetData(hci::kSubSetScanResponse, 9, {1})),
         hci::kStatusInvalidParameters},
        {"enable before parameters", Packet(Enable(4)), hci::kStatusCommandDisallowed},
        {"enable 2", Packet(Enable(1, 2)), hci::kStatusInvalidParameters},
        {"sub-opcode 4", Packet({4, 0, 1}), hci::kStatusUnknownCommand},
        {"no sub-opcode", Packet({}), hci::kStatusInvalidParameters},
        {"another opcode", Packet(Enable(1), 0xFD53), hci::kStatusUnknownCommand},
    };
    for (const auto& [what, packet, status] : cases) {
        SimHciController controller;
        auto answer = controller.Command(packet);
        ASSERT_EQ(answer.event.size(), 7u) << what;
        EXPECT_EQ(answer.event[0], hci::kEventCommandComplete) << what;
        EXPECT_EQ(answer.event[3] | answer.event[4] << 8, packet[0] | packet[1] << 8) << what;
        EXPECT_EQ(StatusOf(answer), status) << what;
        for (const auto& instance : controller.Instances()) {
            bool touched = instance.parametersSet || !instance.data.empty() || instance.enabled;
            EXPECT_TRUE(status == hci::kStatusSuccess || !touched) << what;
        }
    }
}

TEST(SimHciControllerTest, KeepsEachInstanceAndScriptsItsFaults) {
    sim::SimHciSettings settings;
    settings.latencyMs = {{hci::kSubEnable, 7}};
    settings.faults = {{hci::kSubSetData, SimHciFault::Kind::Disallowed, 1},
                       {hci::kSubEnable, SimHciFault::Kind::Silent, 1}};
    SimHciController controller(settings);
    EXPECT_EQ(StatusOf(controller.Command(Packet(SetParameters(3)))), hci::kStatusSuccess);
    EXPECT_EQ(StatusOf(controller.Command(Packet(SetData(hci::kSubSetData, 3, {2, 1, 6})))),
              hci::kStatusCommandDisallowed);
    EXPECT_EQ(StatusOf(controller.Command(Packet(SetData(hci::kSubSetData, 3, {2, 1, 6})))),
              hci::kStatusSuccess);
    EXPECT_TRUE(controller.Command(Packet(Enable(3))).event.empty());
    auto enabled = controller.Command(Packet(Enable(3)));
    EXPECT_EQ(enabled.latencyMs, 7u);
    EXPECT_EQ(StatusOf(enabled), hci::kStatusSuccess);

    auto instance = controller.Instances()[2];
    EXPECT_TRUE(instance.enabled);
    EXPECT_EQ(instance.parameters.instance, 3);
    EXPECT_EQ(instance.parameters.intervalMin, 80);
    EXPECT_EQ(instance.data, (Bytes{2, 1, 6}));
    EXPECT_FALSE(controller.Instances()[0].enabled);
    EXPECT_EQ(controller.Exchanges().size(), 5u);
    EXPECT_TRUE(controller.Exchanges()[3].event.empty());
}

TEST(SimHciControllerTest, TheVendorControlCodeChecksItsHeaderAndWaitsForItsPattern) {
    using Kind = SimHciFault::Kind;
    struct Case {
        const char* what;
        Bytes input;
        std::vector<SimHciFault> faults;
        uint32_t error;
        uint32_t waitMs;
    };
    const Bytes enable = Enable(1, 0);
    Bytes headerOnly = VendorInput(enable);
    headerOnly.resize(hci::command::kData);
    const Case cases[] = {
        {"answered", VendorInput(enable), {}, 0, 0},
        {"another maker", VendorInput(enable, 29), {}, 50, 0},
        {"no pattern", VendorInput(enable, 2, {}), {}, 87, 0},
        {"pattern cut short", VendorInput(enable, 2, {1, 2, 0x54}), {}, 87, 0},
        {"header only", headerOnly, {}, 87, 0},
        {"pattern never matches", VendorInput(enable, 2, {1, 2, 0x55, 0xFD}), {}, 121, 5000},
        {"no answer", VendorInput(enable), {{0, Kind::Silent, 0}}, 121, 5000},
        {"command status handed over", VendorInput(enable), {{0, Kind::WrongEvent, 0}}, 0, 0},
    };
    for (const auto& [what, input, faults, error, waitMs] : cases) {
        sim::SimHciSettings settings;
        settings.faults = faults;
        SimHciController controller(settings);
        Bytes output;
        uint32_t waited = 99;
        EXPECT_EQ(controller.VendorCommand(2, 0xA1B2C3D4E5F6, input, output, 64, waited), error)
            << what;
        EXPECT_EQ(waited, waitMs) << what;
        EXPECT_EQ(output.empty(), error != 0) << what;
    }
}

TEST(SimHciControllerTest, TheEventInfoSaysWhatCameBack) {
    for (bool oversized : {false, true}) {
        sim::SimHciSettings settings;
        if (oversized) {
            settings.faults = {{0, SimHciFault::Kind::OversizedEvent, 0}};
        }
        SimHciController controller(settings);
        Bytes output;
        uint32_t waited = 0;
        ASSERT_EQ(controller.VendorCommand(2, 0xA1B2C3D4E5F6, VendorInput(Enable(1, 0)), output, 64,
                                           waited),
                  0u);
        ASSERT_EQ(output.size(), hci::event::kEventInfo + 7);
        uint32_t eventSize = 0;
        std::memcpy(&eventSize, output.data() + hci::event::kEventSize, 4);
        EXPECT_EQ(eventSize > 7, oversized);
        EXPECT_EQ(output[hci::event::kAddress], 0xF6);
        EXPECT_EQ(output[hci::event::kEventInfo + 5], hci::kStatusSuccess);

        EXPECT_EQ(controller.VendorCommand(2, 0, VendorInput(Enable(1, 0)), output, 18, waited),
                  122u);
    }
}

}  // namespace
}  // namespace connectkit::test
