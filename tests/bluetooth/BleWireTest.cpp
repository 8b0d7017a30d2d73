// What goes on the wire and what comes off it, without a controller: the
// payload builder, the vendor command's bytes, the bounds of the answer
// parser and the scanner's filter.
#include <gtest/gtest.h>

#include <algorithm>

#include "bluetooth/AdvPayload.h"
#include "bluetooth/ScanFilter.h"
#include "bluetooth/VendorHciCommand.h"
#include "platform/ports/BluetoothLE.h"

namespace connectkit::test {
namespace {

using namespace connectkit::bluetooth;
using Bytes = std::vector<uint8_t>;

Bytes Payload(uint8_t first, size_t size) {
    Bytes bytes(size, 0xA5);
    if (size) {
        bytes[0] = first;
    }
    return bytes;
}

struct PayloadCase {
    const char* name;
    Bytes data;
    size_t used;  // 0: refused
    uint8_t adType;
    uint16_t identifier;
};

TEST(BlePayloadTest, FormFollowsTheFirstByteAndFitsThirtyOneBytes) {
    const PayloadCase cases[] = {
        {"manufacturer, 27 bytes", Payload(14, 27), 31, 0xFF, 0x027D},
        {"manufacturer, 28 bytes", Payload(14, 28), 0, 0xFF, 0x027D},
        {"service data, one byte", Payload(15, 1), 5, 0x16, 0xFE35},
        {"service data, 27 bytes", Payload(15, 27), 31, 0x16, 0xFE35},
        {"first byte 16", Payload(16, 3), 0, 0, 0},
        {"empty", {}, 0, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        AdvBuffer out;
        out.fill(0xEE);
        ASSERT_EQ(BuildByFirstByte(c.data, out), c.used);
        if (c.used == 0) {
            EXPECT_EQ(out[0], 0) << "the length byte is written only after the copy";
            continue;
        }
        EXPECT_EQ(out[0], c.used - 1);
        EXPECT_EQ(out[1], c.adType);
        EXPECT_EQ(out[2] | out[3] << 8, c.identifier);
        EXPECT_TRUE(std::equal(c.data.begin(), c.data.end(), out.begin() + 4));
        EXPECT_TRUE(std::all_of(out.begin() + c.used, out.end(), [](uint8_t b) { return b == 0; }));
    }
}

TEST(BleCommandTest, BytesOfEachSubOpcode) {
    const uint8_t noAddress[6] = {};
    auto parameters = SetParametersCommand(MultiAdvParameters(80, true, false, noAddress, 3));
    EXPECT_EQ(parameters,
              (Bytes{1, 80, 0, 80, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7, 0, 3, 0}));
    const uint8_t address[6] = {1, 2, 3, 4, 5, 6};
    auto random = SetParametersCommand(MultiAdvParameters(0x1234, false, true, address, 5));
    EXPECT_EQ(Bytes(random.begin() + 1, random.begin() + 14),
              (Bytes{0x34, 0x12, 0x34, 0x12, 3, 1, 1, 2, 3, 4, 5, 6, 0}));

    AdvBuffer data{};
    data[0] = 0x11;
    data[30] = 0x22;
    auto set = SetDataCommand(3, data, 31, 4);
    ASSERT_EQ(set.size(), 34u);
    EXPECT_EQ((Bytes{set[0], set[1], set[2], set[32], set[33]}), (Bytes{3, 31, 0x11, 0x22, 4}));
    EXPECT_EQ(EnableCommand(false, 2), (Bytes{5, 0, 2}));

    EXPECT_EQ(VendorCommandInput(0x005D, EnableCommand(true, 1)),
              (Bytes{0x5D, 0, 0, 0, 0, 1, 0x54, 0xFD, 3, 5, 1, 1, 1, 2, 0x54, 0xFD}));
    EXPECT_EQ(HciCommandPacket(EnableCommand(true, 1)), (Bytes{0x54, 0xFD, 3, 5, 1, 1}));
}

// BTH_VENDOR_EVENT_INFO: address (8), EventSize (4), the event.
Bytes Answer(uint32_t eventSize, const Bytes& event) {
    Bytes out(8, 0);
    for (int i = 0; i < 4; ++i) {
        out.push_back(static_cast<uint8_t>(eventSize >> (8 * i)));
    }
    out.insert(out.end(), event.begin(), event.end());
    return out;
}

TEST(BleCommandTest, AnswerIsReadWithinTheBytesReturned) {
    const Bytes complete{0x0E, 4, 1, 0x54, 0xFD, 0};
    const Bytes disallowed{0x0E, 4, 1, 0x54, 0xFD, 0x0C};
    struct {
        const char* name;
        Bytes output;
        bool complete;
        uint8_t status;
        size_t eventBytes;
    } cases[] = {
        {"success", Answer(6, complete), true, 0, 6},
        {"command disallowed", Answer(6, disallowed), true, 0x0C, 6},
        {"another opcode", Answer(6, {0x0E, 4, 1, 0x0C, 0x20, 0}), false, 0, 6},
        {"command status event", Answer(6, {0x0F, 4, 0, 1, 0x54, 0xFD}), false, 0, 6},
        {"size beyond the bytes", Answer(64, complete), false, 0, 6},
        {"size of all ones", Answer(0xFFFFFFFF, complete), false, 0, 6},
        {"length beyond the event", Answer(6, {0x0E, 9, 1, 0x54, 0xFD, 0}), false, 0, 6},
        {"complete too short", Answer(5, {0x0E, 3, 1, 0x54, 0xFD}), false, 0, 5},
        {"no event", Answer(0, {}), false, 0, 0},
        {"header cut short", Bytes(11, 0), false, 0, 0},
        {"nothing", {}, false, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto answer = ReadVendorAnswer(c.output);
        EXPECT_EQ(answer.complete, c.complete);
        EXPECT_EQ(answer.status, c.status);
        EXPECT_EQ(answer.event.size(), c.eventBytes);
        EXPECT_EQ(answer.fault.empty(), c.complete);
    }
}

TEST(BleScanFilterTest, ExactlyOneSectionOfOurKinds) {
    using enum ScanVerdict;
    const Bytes payload{1, 2, 3};
    struct {
        const char* name;
        std::vector<platform::BleManufacturerData> manufacturer;
        std::vector<platform::BleDataSection> sections;
        ScanVerdict verdict;
        uint16_t uuid = 0;
        Bytes delivered = {};
    } cases[] = {
        {"our company", {{0x027D, payload}, {0x004C, {9}}}, {}, Deliver, 0xFE35, payload},
        {"our company, no bytes", {{0x027D, {}}}, {}, Deliver, 0xFE35},
        {"service FE35", {}, {{0x16, {0x35, 0xFE, 1, 2, 3}}, {1, {6}}}, Deliver, 0xFE35, payload},
        {"service FDEE", {}, {{0x16, {0xEE, 0xFD, 1, 2, 3}}}, Deliver, 0xFDEE, payload},
        {"both kinds", {{0x027D, payload}}, {{0x16, {0x35, 0xFE, 1}}}, NotOurs},
        {"two services", {}, {{0x16, {0x35, 0xFE}}, {0x16, {0xEE, 0xFD}}}, NotOurs},
        {"other company only", {{0x0006, payload}}, {}, NotOurs},
        {"other uuid", {}, {{0x16, {0x34, 0x12, 1}}}, OtherUuid},
        {"one byte", {}, {{0x16, {0x35}}}, ShortSection},
        {"no bytes", {}, {{0x16, {}}}, ShortSection},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        platform::BleAdvertisementReceived received;
        received.manufacturerData = c.manufacturer;
        received.dataSections = c.sections;
        ScanDelivery delivery;
        ASSERT_EQ(ClassifyAdvertisement(received, delivery), c.verdict);
        if (c.verdict == Deliver) {
            EXPECT_EQ(delivery.uuid, c.uuid);
            EXPECT_EQ(delivery.payload, c.delivered);
        }
    }
}

}  // namespace
}  // namespace connectkit::test
