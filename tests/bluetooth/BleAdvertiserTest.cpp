// The advertiser front and its instances against the simulated controller:
// routing, the send sequence and its faults, bad input, the radio observer,
// and the quirks the suite relies on. Each test runs in a process of its
// own, so each builds the front in the world it applied first.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "bluetooth/HciCapture.h"
#include "bluetooth/VendorHciDevice.h"
#include "connectkit/BLEAdvertiser.h"
#include "support/RadioWorld.h"

namespace connectkit::test {
namespace {

using Bytes = std::vector<uint8_t>;
using platform::RadioKind;
using platform::RadioState;
using Fault = sim::SimHciFault;

class BleAdvertiserTest : public SimTest {
protected:
    BLEAdvertiser& Use(sim::SimBleConfig ble = {},
                       Controller::Radio radio = Controller::Radio::On) {
        pc().Apply(BluetoothWorld(radio, std::move(ble)));
        return *BLEAdvertiser::GetUniqueInstance();
    }
    sim::SimHciController& controller() { return pc().bluetoothLE().Controller(); }
    sim::SimHciInstance Instance(uint8_t number) { return controller().Instances().at(number - 1); }
    // Sub-opcodes of the commands the controller saw, from the `from`th on.
    Bytes SubOpcodes(size_t from = 0) {
        Bytes seen;
        auto exchanges = controller().Exchanges();
        for (size_t i = from; i < exchanges.size(); ++i) {
            seen.push_back(exchanges[i].command.at(3));
        }
        return seen;
    }
};

const uint8_t kGeneral[] = {14, 1, 2};

TEST_F(BleAdvertiserTest, EachRequestGoesToItsInstance) {
    auto& front = Use();
    const Bytes raw{2, 1, 6};
    const Bytes beamletAdv{9, 8};
    const Bytes beamletResp{7};
    struct Case {
        const char* name;
        std::function<void()> start, stop;
        uint8_t instance;
        uint16_t interval;
        Bytes data;
        Bytes scanResponse = {};
    } cases[] = {
        {"general",
         [&] { front.StartAdvertise(kGeneral, 3, 999); },
         [&] { front.StopAdvertise(0); },
         1,
         80,
         {6, 0xFF, 0x7D, 0x02, 14, 1, 2}},
        {"near pair", [&] { front.StartAdvertiseForNearPair(raw.data(), 3, 999); },
         [&] { front.StopAdvertiseForNearPair(0); }, 3, 32, raw},
        {"beamlet",
         [&] { front.StartAdvertiseForBeamlet(beamletAdv, beamletResp); },
         [&] { front.StopAdvertiseForBeamlet(); },
         4,
         32,
         {5, 0x16, 0xEE, 0xFD, 9, 8},
         {4, 0xFF, 0x7D, 0x02, 7}},
        {"test", [&] { front.StartAdvertiseForTest(raw.data(), 3); },
         [&] { front.StopAdvertiseForTest(); }, 5, 32, raw},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        c.start();
        auto instance = Instance(c.instance);
        EXPECT_TRUE(instance.enabled);
        EXPECT_EQ(static_cast<uint16_t>(instance.parameters.intervalMin), c.interval);
        EXPECT_EQ(instance.parameters.advertisingType, c.scanResponse.empty() ? 3 : 2);
        EXPECT_EQ(Bytes(instance.data.begin(), instance.data.begin() + c.data.size()), c.data);
        EXPECT_EQ(Bytes(instance.scanResponse.begin(),
                        instance.scanResponse.begin() + c.scanResponse.size()),
                  c.scanResponse);
        c.stop();
        EXPECT_FALSE(Instance(c.instance).enabled);
    }
    EXPECT_EQ(front.GetLastError(), 0u);
    const uint8_t* both[] = {kGeneral, kGeneral};
    EXPECT_TRUE(front.StartAdvertise({both[0], both[1]}, {3, 3}, 0));
    EXPECT_TRUE(Instance(1).enabled && Instance(2).enabled);
}

// A start sends parameters, data and enable, and stops at the first failure
// with its code; a second payload refused stops the first again, and bad
// input is refused before anything is sent. Nothing stays on but a success.
TEST_F(BleAdvertiserTest, StartsSendTheirSequenceOrStopWithTheirCode) {
    auto& front = Use();
    const Bytes big(255, 14);
    const uint8_t bad[] = {16, 1};
    using Buffers = std::vector<const uint8_t*>;
    auto start = [&](Buffers buffers, std::vector<int> sizes) {
        return [&front, buffers, sizes] { return front.StartAdvertise(buffers, sizes, 0); };
    };
    auto general = start({kGeneral}, {3});
    auto sized = [&](int size) { return start({big.data()}, {size}); };
    auto raw = [&](int size) {
        return
            [&front, &big, size] { return front.StartAdvertiseForNearPair(big.data(), size, 0); };
    };
    using Kind = Fault::Kind;
    struct Case {
        const char* name;
        std::function<bool()> call;
        unsigned long error;
        Bytes sent;  // the first sub-opcodes sent
        std::vector<Fault> faults = {};
    } cases[] = {
        {"parameters disallowed", general, 0x2000000C, {1}, {{1, Kind::Disallowed, 1}}},
        {"data unanswered", general, 121, {1, 2}, {{2, Kind::Silent, 1}}},
        {"enable unknown", general, 0x20000001, {1, 2, 5}, {{5, Kind::Unknown, 1}}},
        {"another opcode's event", general, 13, {1}, {{1, Kind::WrongOpcode, 1}}},
        {"event beyond the bytes", general, 13, {1, 2}, {{2, Kind::OversizedEvent, 1}}},
        {"second payload refused", start({kGeneral, bad}, {3, 2}), 87, {1, 2, 5, 5}},
        {"0 bytes", sized(0), 87, {}},
        {"28 bytes", sized(28), 87, {}},
        {"31 bytes", sized(31), 87, {}},
        {"255 bytes", sized(255), 87, {}},
        {"negative length", sized(-1), 87, {}},
        {"first byte 16", start({bad}, {2}), 87, {}},
        {"null data", start({nullptr}, {3}), 87, {}},
        {"vectors differ", start({big.data()}, {3, 3}), 87, {}},
        {"raw 32 bytes", raw(32), 87, {}},
        {"27 bytes", sized(27), 0, {1, 2, 5}},
        {"raw 31 bytes", raw(31), 0, {1, 2, 5}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        controller().Configure({5, {}, 5000, c.faults});
        front.SetLastError(0);
        EXPECT_EQ(c.call(), c.error == 0);
        EXPECT_EQ(front.GetLastError(), c.error);
        auto sent = SubOpcodes();
        EXPECT_EQ(Bytes(sent.begin(), sent.begin() + std::min(sent.size(), c.sent.size())), c.sent);
        EXPECT_EQ(sent.empty(), c.sent.empty());
        auto instances = controller().Instances();
        EXPECT_EQ(
            std::any_of(instances.begin(), instances.end(), [](auto& i) { return i.enabled; }),
            c.error == 0);
    }
}

TEST_F(BleAdvertiserTest, TestAdvertisementCountsAsOnEvenWhenItFailed) {
    auto& front = Use();
    controller().Configure({5, {}, 5000, {{1, Fault::Kind::Disallowed, 1}}});
    EXPECT_EQ(front.StartAdvertiseForTest(kGeneral, 3), 0x2000000C);
    const size_t before = controller().Exchanges().size();
    front.StopAdvertiseForTest();
    EXPECT_EQ(SubOpcodes(before), Bytes{5}) << "a stop reaches the controller";
}

TEST_F(BleAdvertiserTest, RadioStateOpensAndClosesTheDevice) {
    auto& front = Use();
    pc().bluetooth().SwitchRadio(RadioKind::Bluetooth, RadioState::Off);
    pc().clock().Sleep(100);
    EXPECT_FALSE(front.IsNearPairAdvAvailable());
    EXPECT_FALSE(front.StartAdvertise(kGeneral, 3, 0));
    EXPECT_EQ(front.GetLastError(), 21u);
    pc().bluetooth().SwitchRadio(RadioKind::Bluetooth, RadioState::On);
    pc().clock().Sleep(100);
    EXPECT_TRUE(front.IsNearPairAdvAvailable());
    EXPECT_TRUE(front.StartAdvertise(kGeneral, 3, 0));
}

TEST_F(BleAdvertiserTest, WithoutTheLoadDriverPrivilegeNothingIsSent) {
    sim::SimBleConfig ble;
    ble.elevated = false;
    auto& front = Use(ble);
    EXPECT_FALSE(front.StartAdvertise(kGeneral, 3, 0));
    EXPECT_EQ(front.GetLastError(), bluetooth::kErrorInvalidHandle);
    EXPECT_TRUE(controller().Exchanges().empty());
}

TEST_F(BleAdvertiserTest, CaptureHoldsEveryCommandAndAnswerAsBtsnoop) {
    auto path = std::filesystem::temp_directory_path() / "ck-advertise.btsnoop";
    auto& front = Use();
    bluetooth::HciCapture::Event({0x0E});  // not recording: dropped
    ASSERT_TRUE(bluetooth::HciCapture::Start(path.wstring()));
    front.StartAdvertise(kGeneral, 3, 0);
    bluetooth::HciCapture::Stop();
    Bytes bytes;
    {
        // Closed before removal: Windows refuses to remove an open file.
        std::ifstream file(path, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(file), {});
    }
    std::filesystem::remove(path);
    // Header (version 1, H4); set parameters, data and enable (H4 byte,
    // 3-byte header, 24, 34 and 3 bytes) with their 7-byte answers, each
    // record with its 24.
    ASSERT_EQ(bytes.size(), 16u + 6 * 24 + (28 + 38 + 7) + 3 * 8);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 16),
              (Bytes{'b', 't', 's', 'n', 'o', 'o', 'p', 0, 0, 0, 0, 1, 0, 0, 0x03, 0xEA}));
    // The first command (flags 2: sent) and its answer (3: received).
    EXPECT_EQ((Bytes{bytes[16 + 11], bytes[16 + 24], bytes[16 + 25], bytes[16 + 26]}),
              (Bytes{2, 0x01, 0x54, 0xFD}));
    EXPECT_EQ((Bytes{bytes[68 + 11], bytes[68 + 24], bytes[68 + 25]}), (Bytes{3, 0x04, 0x0E}));
    EXPECT_FALSE(bluetooth::HciCapture::Start(L"/nonexistent-folder/capture.btsnoop"));
}

// Busy answers of every entry point are repeated three more times; a send
// still busy then is given up, the device closed and reopened, the instance
// closed and the send tried once more, whose success answers 1: a failure to
// the caller.
TEST_F(BleAdvertiserTest, RealtekPathRetriesThenReopensWithTheInvertedResult) {
    auto world = BluetoothWorld(Controller::Radio::On);
    world.wifiCard.maker = sim::SimWifiCardConfig::Maker::Realtek;
    auto& busy = world.ble.realtekLibrary.settings.busy;
    busy[platform::rtk::kOpenDevice] = 2;
    busy[platform::rtk::kCloseDevice] = 1;
    busy[platform::rtk::kSendAdv] = 5;
    pc().Apply(world);
    const size_t first = sim::RealtekBluetoothLog().calls.size();
    auto& front = *BLEAdvertiser::GetUniqueInstance();
    const size_t before = sim::RealtekBluetoothLog().calls.size();
    EXPECT_FALSE(front.StartAdvertise(kGeneral, 3, 0));
    EXPECT_EQ(front.GetLastError(), 1u);
    EXPECT_TRUE(Instance(1).enabled) << "the second attempt went out";
    auto calls = sim::RealtekBluetoothLog().calls;
    const std::string open = "RtkApplOpenDevice", close = "RtkApplCloseDevice";
    EXPECT_EQ(std::count(calls.begin() + first, calls.begin() + before, open), 3)
        << "an open answered busy twice is repeated, once it succeeds no more";
    const std::string parameters = "RtkSendHciLeSetMultiAdvParam", send = "RtkApplSendAdv";
    const std::vector<std::string> expected{
        parameters,        send,       send, send, send, close, close, open,
        "RtkApplCloseAdv", parameters, send, send};
    EXPECT_EQ(std::vector<std::string>(calls.begin() + before, calls.end()), expected);
    front.StopAdvertise(0);
    EXPECT_FALSE(Instance(1).enabled);
    EXPECT_TRUE(front.StartAdvertise(kGeneral, 3, 0)) << "busy answers used up";
}

// Run under TSan: the radio's changes arrive on dispatcher threads while the
// caller's thread starts and stops.
TEST_F(BleAdvertiserTest, RadioChangesWhileAdvertisingStartsAndStops) {
    auto& front = Use();
    for (int round = 0; round < 40; ++round) {
        pc().bluetooth().SwitchRadio(RadioKind::Bluetooth,
                                     round % 2 ? RadioState::On : RadioState::Off);
        front.StartAdvertise(kGeneral, 3, 0);
        front.StartAdvertiseForTest(kGeneral, 3);
        front.StopAdvertise(0);
        front.StopAdvertiseForTest();
    }
    pc().clock().Sleep(100);
    EXPECT_TRUE(front.StartAdvertise(kGeneral, 3, 0));
    BLEAdvertiser::ReleaseUniqueInstance();
    EXPECT_FALSE(Instance(1).enabled) << "unInit stops what it advertised";
}

}  // namespace
}  // namespace connectkit::test
