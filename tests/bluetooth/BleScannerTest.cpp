// The scanner on the simulated air: what reaches observers, with what, and
// how observers that misbehave are met.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <mutex>

#include "connectkit/BleScanner.h"
#include "support/RadioWorld.h"

namespace connectkit::test {
namespace {

using Bytes = std::vector<uint8_t>;
using Section = platform::BleDataSection;

struct Recorder : ConnectKit::BleScanner::INotification {
    struct Heard {
        uint64_t address, timestamp;
        Bytes payload;
        uint16_t uuid;
    };
    void OnRecved(uint64_t address, uint64_t timestamp, const Bytes& payload,
                  ConnectKit::BleAdvType, uint16_t uuid) override {
        std::lock_guard<std::mutex> guard(mutex);
        heard.push_back({address, timestamp, payload, uuid});
    }
    void OnStopped() override { ++stopped; }
    std::vector<Heard> From(uint64_t address) {
        std::lock_guard<std::mutex> guard(mutex);
        std::vector<Heard> from;
        std::copy_if(heard.begin(), heard.end(), std::back_inserter(from),
                     [address](const Heard& h) { return h.address == address; });
        return from;
    }
    std::mutex mutex;
    std::vector<Heard> heard;
    std::atomic<int> stopped{0};
};

struct Rude : ConnectKit::BleScanner::INotification {
    void OnRecved(uint64_t, uint64_t, const Bytes&, ConnectKit::BleAdvType, uint16_t) override {
        throw 1;
    }
    void OnStopped() override { throw 2; }
};

struct Leaver : ConnectKit::BleScanner::INotification {
    void OnRecved(uint64_t, uint64_t, const Bytes&, ConnectKit::BleAdvType, uint16_t) override {
        ++calls;
        scanner->UnRegisterRecvedCallback(this);
    }
    void OnStopped() override {}
    ConnectKit::BleScanner* scanner = nullptr;
    std::atomic<int> calls{0};
};

class BleScannerTest : public SimTest {};

// Once with the threshold the platform takes, once with it refused: the
// scanner still hears then, every strength.
TEST_F(BleScannerTest, DeliversExactlyOneOfOurSectionsFromTheAir) {
    const Section flags{0x01, {6}};
    const Section manufacturer{0xFF, {0x7D, 0x02, 0x0E, 1, 2}};
    for (bool refused : {false, true}) {
        SCOPED_TRACE(refused ? "threshold refused" : "threshold taken");
        sim::SimBleConfig ble;
        ble.watcher.refuseThreshold = refused;
        ble.phones = {
            BlePhone(1, {flags, manufacturer}),
            BlePhone(2, {flags, {0x16, {0x35, 0xFE, 0x0F, 7}}}),
            BlePhone(3, {{0x16, {0xEE, 0xFD, 5}}}),
            BlePhone(4, {manufacturer, {0x16, {0x35, 0xFE, 1}}}),
            BlePhone(5, {{0x16, {0x35}}}),
            BlePhone(6, {{0x16, {0x34, 0x12, 1}}}),
            BlePhone(7, {manufacturer}, -90),
        };
        pc().Apply(BluetoothWorld(Controller::Radio::On, ble));
        // The observers outlive the scanner, which waits for its deliveries.
        Recorder recorder;
        Rude rude;
        Leaver leaver;
        ConnectKit::BleScanner scanner;
        leaver.scanner = &scanner;
        scanner.RegisterRecvedCallback(&rude);
        scanner.RegisterRecvedCallback(&leaver);
        scanner.RegisterRecvedCallback(&recorder);
        scanner.RegisterRecvedCallback(&recorder);  // refused: heard once
        scanner.Start();
        pc().clock().Sleep(1000);
        scanner.Stop();
        pc().clock().Sleep(100);

        struct {
            uint64_t address;
            uint16_t uuid;
            Bytes payload;
        } delivered[] = {{1, 0xFE35, {0x0E, 1, 2}}, {2, 0xFE35, {0x0F, 7}}, {3, 0xFDEE, {5}}};
        for (const auto& d : delivered) {
            SCOPED_TRACE(d.address);
            auto heard = recorder.From(d.address);
            ASSERT_GE(heard.size(), 5u);
            EXPECT_EQ(heard[0].uuid, d.uuid);
            EXPECT_EQ(heard[0].payload, d.payload);
            EXPECT_LT(heard[0].timestamp, heard[1].timestamp);
        }
        const size_t heardFromOne = recorder.From(1).size();
        for (uint64_t dropped : {4, 5, 6}) {
            EXPECT_TRUE(recorder.From(dropped).empty()) << dropped;
        }
        EXPECT_EQ(recorder.From(7).empty(), !refused);
        // Only the first round's events, already under way on other threads
        // when it left, reach it: one per phone delivered at that instant at
        // most (phone 7 too when the threshold was refused).
        EXPECT_GE(leaver.calls.load(), 1);
        EXPECT_LE(leaver.calls.load(), refused ? 4 : 3);
        EXPECT_EQ(recorder.stopped.load(), 1);

        // A pattern on the manufacturer's first payload byte lets phone 1
        // alone through; the null and the overlong filters are skipped.
        ConnectKit::_BLEScanFilter first{0xFF, 2, 1, {0x0E}};
        ConnectKit::_BLEScanFilter tooLong{0xFF, 20, 10, {}};
        scanner.SetBytesFilter({&first, nullptr, &tooLong});
        const size_t fromTwo = recorder.From(2).size();
        scanner.Start();
        pc().clock().Sleep(500);
        scanner.Stop();
        EXPECT_GT(recorder.From(1).size(), heardFromOne);
        EXPECT_EQ(recorder.From(2).size(), fromTwo);
    }
}

}  // namespace
}  // namespace connectkit::test
