// The vendor controller as the library meets it: the status each command
// earns, what it keeps, and the vendor control code's own refusals. The
// library's own builders write the commands; each fault is a byte changed or
// cut from them. Then the simulated Realtek Bluetooth library in front of the
// controller: busy answers to repeat, opens that fail, and commands that
// reach the controller.
#include <gtest/gtest.h>

#include <cstring>

#include "bluetooth/VendorHciCommand.h"
#include "platform/ports/BluetoothHci.h"
#include "platform/sim/bluetooth/SimHciController.h"
#include "platform/sim/bluetooth/SimRealtekBluetooth.h"

namespace connectkit::test {
namespace {

namespace hci = platform::hci;
namespace rtk = platform::rtk;
using namespace bluetooth;
using sim::SimHciController;
using sim::SimHciFault;
using namespace sim::rtkbt;
using Bytes = std::vector<uint8_t>;

Bytes Parameters(uint8_t instance, uint16_t interval = 80) {
    const uint8_t noAddress[6] = {};
    return SetParametersCommand(MultiAdvParameters(interval, false, false, noAddress, instance));
}

Bytes Data(uint8_t subOpcode, uint8_t instance, uint8_t length) {
    AdvBuffer data;
    data.fill(7);
    return SetDataCommand(subOpcode, data, length, instance);
}

Bytes With(Bytes bytes, size_t at, uint8_t value) {
    bytes.at(at) = value;
    return bytes;
}

// The first `size` bytes, zeros added where `bytes` is shorter.
Bytes Cut(Bytes bytes, size_t size) {
    bytes.resize(size);
    return bytes;
}

uint8_t StatusOf(const SimHciController::Answer& answer) {
    return answer.event.size() > 5 ? answer.event[5] : 0xFF;
}

// The commands the library's builders write unchanged succeed in the
// advertiser's tests; here each refusal and what it leaves untouched.
TEST(SimHciControllerTest, EachBadCommandEarnsItsStatusAndChangesNothing) {
    const uint8_t invalid = hci::kStatusInvalidParameters;
    const Bytes data = Data(hci::kSubSetData, 1, 31);
    const struct {
        const char* what;
        Bytes parameters;
        uint8_t status;
        uint8_t opcodeLow = static_cast<uint8_t>(hci::kOpMultiAdvertising);
    } cases[] = {
        {"parameters, instance 0", Parameters(0), invalid},
        {"parameters, instance 6", Parameters(6), invalid},
        {"parameters, 19 ms", Parameters(1, 31), invalid},
        {"parameters, no channel", With(Parameters(1), 20, 8), invalid},
        {"parameters cut short", Cut(Parameters(1), 23), invalid},
        {"data, 35 bytes", Cut(data, 35), invalid},
        {"data, length 32", With(data, 1, 32), invalid},
        {"response, instance 9", Data(hci::kSubSetScanResponse, 9, 1), invalid},
        {"enable before parameters", EnableCommand(true, 4), hci::kStatusCommandDisallowed},
        {"enable 2", With(EnableCommand(true, 1), 1, 2), invalid},
        {"sub-opcode 4", {4, 0, 1}, hci::kStatusUnknownCommand},
        {"no sub-opcode", {}, invalid},
        {"another opcode", EnableCommand(true, 1), hci::kStatusUnknownCommand, 0x53},
    };
    for (const auto& [what, parameters, status, opcodeLow] : cases) {
        SimHciController controller;
        const Bytes packet = With(HciCommandPacket(parameters), 0, opcodeLow);
        auto answer = controller.Command(packet);
        ASSERT_EQ(answer.event.size(), 7u) << what;
        EXPECT_EQ(answer.event[0], hci::kEventCommandComplete) << what;
        EXPECT_EQ(answer.event[3] | answer.event[4] << 8, packet[0] | packet[1] << 8) << what;
        EXPECT_EQ(StatusOf(answer), status) << what;
        for (const auto& instance : controller.Instances()) {
            EXPECT_FALSE(instance.parametersSet || !instance.data.empty() || instance.enabled)
                << what;
        }
    }
}

// Each row: the input, a fault, the room for the answer; the result, the
// wait and the EventSize the answer claims (0: none comes back).
TEST(SimHciControllerTest, TheVendorControlCodeChecksItsHeaderAndWaitsForItsPattern) {
    using Kind = SimHciFault::Kind;
    const Bytes input = VendorCommandInput(2, EnableCommand(false, 1));
    const size_t pattern = input.size() - 4;
    const struct {
        const char* what;
        Bytes input;
        std::vector<SimHciFault> faults;
        uint32_t room, error, waitMs, eventSize;
    } cases[] = {
        {"answered", input, {}, 64, 0, 0, 7},
        {"no room", input, {}, 18, 122, 0, 0},
        {"another maker", VendorCommandInput(29, EnableCommand(false, 1)), {}, 64, 50, 0, 0},
        {"no pattern", Cut(input, pattern), {}, 64, 87, 0, 0},
        {"pattern cut short", Cut(input, pattern + 3), {}, 64, 87, 0, 0},
        {"header only", Cut(input, hci::command::kData), {}, 64, 87, 0, 0},
        {"pattern never matches", With(input, pattern + 2, 0x55), {}, 64, 121, 5000, 0},
        {"no answer", input, {{0, Kind::Silent, 0}}, 64, 121, 5000, 0},
        {"command status handed over", input, {{0, Kind::WrongEvent, 0}}, 64, 0, 0, 6},
        {"oversized", input, {{0, Kind::OversizedEvent, 0}}, 64, 0, 0, 71},
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

class SimRealtekBluetoothTest : public ::testing::Test {
protected:
    void Configure(sim::SimRealtekBluetoothSettings settings, sim::SimHciSettings hci = {}) {
        controller_.Configure(std::move(hci));
        sim::ConfigureSimRealtekBluetooth(settings, [this](const std::vector<uint8_t>& packet) {
            return controller_.Command(packet).event;
        });
    }
    void TearDown() override { sim::ConfigureSimRealtekBluetooth({}, nullptr); }

    sim::SimHciController controller_;
};

// Busy answers come before a failing open, which hands back the invalid
// handle; the library's retries and reopening are the advertiser's tests.
TEST_F(SimRealtekBluetoothTest, OpensFailAsToldAndTheControllersRefusalsComeBack) {
    using Kind = sim::SimHciFault::Kind;
    Configure(
        {{{rtk::kOpenDevice, 1}, {rtk::kCloseAdv, 1}}, 1},
        {5, {}, 0, {{hci::kSubEnable, Kind::Disallowed, 1}, {hci::kSubSetData, Kind::Silent, 1}}});
    rtk::Device device = nullptr;
    EXPECT_EQ(RtkApplOpenDevice(&device), rtk::kRtkBusy);
    EXPECT_EQ(device, nullptr);
    EXPECT_EQ(RtkApplOpenDevice(&device), sim::kRtkFailure);
    EXPECT_EQ(device, rtk::InvalidDevice());
    EXPECT_EQ(RtkApplCloseAdv(1, device), rtk::kRtkBusy);
    EXPECT_EQ(RtkApplCloseAdv(1, device), sim::kRtkFailure);
    ASSERT_EQ(RtkApplOpenDevice(&device), rtk::kRtkSuccess);
    EXPECT_NE(device, rtk::InvalidDevice());

    const uint8_t noAddress[6] = {};
    auto parameters = MultiAdvParameters(80, false, false, noAddress, 2);
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

    size_t sent = controller_.Exchanges().size();
    uint8_t tooLong[32] = {};
    EXPECT_EQ(send(tooLong, sizeof(tooLong)), sim::kRtkFailure);
    EXPECT_EQ(send(nullptr, 3), sim::kRtkFailure);
    EXPECT_EQ(RtkSendHciLeSetMultiAdvParam(device, nullptr), sim::kRtkFailure);
    EXPECT_EQ(controller_.Exchanges().size(), sent);
    parameters.instance = 9;
    EXPECT_EQ(RtkSendHciLeSetMultiAdvParam(device, &parameters),
              sim::kRtkRefused + hci::kStatusInvalidParameters);
    EXPECT_EQ(RtkApplCloseAdv(2, device), rtk::kRtkSuccess);
    EXPECT_FALSE(controller_.Instances()[1].enabled);
    EXPECT_EQ(RtkApplCloseDevice(device), rtk::kRtkSuccess);
    EXPECT_EQ(RtkApplCloseAdv(2, device), sim::kRtkFailure);
    EXPECT_FALSE(sim::RealtekBluetoothLog().open);
}

}  // namespace
}  // namespace connectkit::test
