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

// Each row: the input, a fault, the room for the answer; the result, the
// wait and the EventSize the answer claims (0: none comes back).
TEST(SimHciControllerTest, TheVendorControlCodeChecksItsHeaderAndWaitsForItsPattern) {
    using Kind = SimHciFault::Kind;
    const Bytes enable = Enable(1, 0);
    Bytes headerOnly = VendorInput(enable);
    headerOnly.resize(hci::command::kData);
    const struct {
        const char* what;
        Bytes input;
        std::vector<SimHciFault> faults;
        uint32_t room, error, waitMs, eventSize;
    } cases[] = {
        {"answered", VendorInput(enable), {}, 64, 0, 0, 7},
        {"no room", VendorInput(enable), {}, 18, 122, 0, 0},
        {"another maker", VendorInput(enable, 29), {}, 64, 50, 0, 0},
        {"no pattern", VendorInput(enable, 2, {}), {}, 64, 87, 0, 0},
        {"pattern cut short", VendorInput(enable, 2, {1, 2, 0x54}), {}, 64, 87, 0, 0},
        {"header only", headerOnly, {}, 64, 87, 0, 0},
        {"pattern never matches", VendorInput(enable, 2, {1, 2, 0x55, 0xFD}), {}, 64, 121, 5000, 0},
        {"no answer", VendorInput(enable), {{0, Kind::Silent, 0}}, 64, 121, 5000, 0},
        {"command status handed over",
         VendorInput(enable),
         {{0, Kind::WrongEvent, 0}},
         64,
         0,
         0,
         6},
        {"oversized", VendorInput(enable), {{0, Kind::OversizedEvent, 0}}, 64, 0, 0, 71},
    };
    for (const auto& [what, input, faults, room, error, waitMs, eventSize] : cases) {
        SimHciController controller({5, {}, 5000, faults});
        Bytes output;
        uint32_t waited = 99;
        EXPECT_EQ(controller.VendorCommand(2, 0xA1B2C3D4E5F6, input, output, room, waited), error)
            << what;
        EXPECT_EQ(waited, waitMs) << what;
        uint32_t claimed = 0;
        if (!output.empty()) {
            std::memcpy(&claimed, output.data() + hci::event::kEventSize, 4);
            EXPECT_EQ(output[hci::event::kAddress], 0xF6) << what;
        }
        EXPECT_EQ(claimed, eventSize) << what;
    }
}

}  // namespace
}  // namespace connectkit::test
