// The advertiser front and its instances against the simulated controller:
// routing, the send sequence and its faults, bad input, the radio observer,
// and the quirks the suite relies on. Each test runs in a process of its
// own, so each builds the front in the world it applied first.
#include <gtest/gtest.h>

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
        auto world = BluetoothWorld(radio);
        world.ble = std::move(ble);
        pc().Apply(world);
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
    void FaultFrom(Fault fault) { controller().Configure({5, {}, 5000, {fault}}); }
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

TEST_F(BleAdvertiserTest, SequenceStopsAtTheFirstFailureWithItsCode) {
    auto& front = Use();
    struct Case {
        const char* name;
        Fault fault;
        Bytes sent;
        unsigned long error;
    } cases[] = {
        {"parameters disallowed", {1, Fault::Kind::Disallowed, 1}, {1}, 0x2000000C},
        {"data unanswered", {2, Fault::Kind::Silent, 1}, {1, 2}, 121},
        {"enable unknown", {5, Fault::Kind::Unknown, 1}, {1, 2, 5}, 0x20000001},
        {"another opcode's event", {1, Fault::Kind::WrongOpcode, 1}, {1}, 13},
        {"event beyond the bytes", {2, Fault::Kind::OversizedEvent, 1}, {1, 2}, 13},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FaultFrom(c.fault);
        EXPECT_FALSE(front.StartAdvertise(kGeneral, 3, 0));
        EXPECT_EQ(front.GetLastError(), c.error);
        auto sent = SubOpcodes();
        EXPECT_EQ(Bytes(sent.begin(), sent.begin() + std::min(sent.size(), c.sent.size())), c.sent);
        EXPECT_FALSE(Instance(1).enabled);
    }
}

TEST_F(BleAdvertiserTest, BadInputIsRefusedWithItsCode) {
    auto& front = Use();
    const Bytes big(255, 14);
    struct Case {
        const char* name;
        std::function<bool()> call;
        bool result;
        unsigned long error;
    } cases[] = {
        {"27 bytes", [&] { return front.StartAdvertise(big.data(), 27, 0); }, true, 0},
        {"0 bytes", [&] { return front.StartAdvertise(big.data(), 0, 0); }, false, 87},
        {"28 bytes", [&] { return front.StartAdvertise(big.data(), 28, 0); }, false, 87},
        {"31 bytes", [&] { return front.StartAdvertise(big.data(), 31, 0); }, false, 87},
        {"255 bytes", [&] { return front.StartAdvertise(big.data(), 255, 0); }, false, 87},
        {"first byte 16",
         [&] {
             return front.StartAdvertise(Bytes{16, 1}.data(), 2, 0);
         },
         false, 87},
        {"null data", [&] { return front.StartAdvertise(nullptr, 3, 0); }, false, 87},
        {"negative length", [&] { return front.StartAdvertise(big.data(), -1, 0); }, false, 87},
        {"vectors differ",
         [&] {
             return front.StartAdvertise({big.data()}, {3, 3}, 0);
         },
         false, 87},
        {"raw 31 bytes", [&] { return front.StartAdvertiseForNearPair(big.data(), 31, 0); }, true,
         0},
        {"raw 32 bytes", [&] { return front.StartAdvertiseForNearPair(big.data(), 32, 0); }, false,
         87},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        front.SetLastError(0);
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(front.GetLastError(), c.error);
    }
}

TEST_F(BleAdvertiserTest, SecondPayloadFailingStopsTheFirstAgain) {
    auto& front = Use();
    const uint8_t bad[] = {16, 1};
    const uint8_t* buffers[] = {kGeneral, bad};
    EXPECT_FALSE(front.StartAdvertise({buffers[0], buffers[1]}, {3, 2}, 0));
    EXPECT_FALSE(Instance(1).enabled);
    EXPECT_EQ(SubOpcodes().back(), 5);
}

TEST_F(BleAdvertiserTest, TestAdvertisementCountsAsOnEvenWhenItFailed) {
    auto& front = Use();
    FaultFrom({1, Fault::Kind::Disallowed, 1});
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

// Busy answers are repeated three more times; a send still busy then is
// given up, the device closed and reopened, the instance closed and the
// send tried once more, whose success answers 1: a failure to the caller.
TEST_F(BleAdvertiserTest, RealtekPathRetriesThenReopensWithTheInvertedResult) {
    auto world = BluetoothWorld(Controller::Radio::On);
    world.wifiCard.maker = sim::SimWifiCardConfig::Maker::Realtek;
    world.ble.realtekLibrary.settings.busy[platform::rtk::kSendAdv] = 5;
    pc().Apply(world);
    auto& front = *BLEAdvertiser::GetUniqueInstance();
    const size_t before = sim::RealtekBluetoothLog().calls.size();
    EXPECT_FALSE(front.StartAdvertise(kGeneral, 3, 0));
    EXPECT_EQ(front.GetLastError(), 1u);
    EXPECT_TRUE(Instance(1).enabled) << "the second attempt went out";
    auto calls = sim::RealtekBluetoothLog().calls;
    const std::vector<std::string> expected{"RtkSendHciLeSetMultiAdvParam",
                                            "RtkApplSendAdv",
                                            "RtkApplSendAdv",
                                            "RtkApplSendAdv",
                                            "RtkApplSendAdv",
                                            "RtkApplCloseDevice",
                                            "RtkApplOpenDevice",
                                            "RtkApplCloseAdv",
                                            "RtkSendHciLeSetMultiAdvParam",
                                            "RtkApplSendAdv",
                                            "RtkApplSendAdv"};
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
