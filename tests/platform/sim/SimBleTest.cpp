// The simulated air and its watcher as the scanner meets them, and the
// controller's control codes as the advertiser meets them.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <mutex>

#include "bluetooth/VendorHciCommand.h"
#include "platform/ports/BluetoothHci.h"
#include "platform/sim/SimulatedPc.h"
#include "support/RadioWorld.h"

namespace connectkit::test {
namespace {

namespace hci = platform::hci;
using platform::BleAdvertisementReceived;
using platform::BleAdvertisementType;
using platform::BleScanningMode;
using platform::BleWatcherStatus;
using platform::BluetoothError;
using Bytes = std::vector<uint8_t>;

// Records what a watcher hands over. Shared with the handlers: a delivery the
// world had already taken off its list may still land after the test let go.
struct Heard : std::enable_shared_from_this<Heard> {
    std::mutex mutex;
    std::vector<BleAdvertisementReceived> received;
    std::vector<BluetoothError> stopped;
    platform::EventToken receivedToken = 0;

    void Listen(platform::BleAdvertisementWatcher& watcher) {
        receivedToken = watcher.AddReceived(
            [self = shared_from_this()](auto&, const BleAdvertisementReceived& event) {
                std::lock_guard<std::mutex> lock(self->mutex);
                self->received.push_back(event);
            });
        watcher.AddStopped([self = shared_from_this()](auto&, BluetoothError error) {
            std::lock_guard<std::mutex> lock(self->mutex);
            self->stopped.push_back(error);
        });
    }
    std::vector<BluetoothError> Stopped() {
        std::lock_guard<std::mutex> lock(mutex);
        return stopped;
    }
    size_t From(uint64_t address, BleAdvertisementType type) {
        std::lock_guard<std::mutex> lock(mutex);
        return std::count_if(received.begin(), received.end(), [&](const auto& event) {
            return event.bluetoothAddress == address && event.advertisementType == type;
        });
    }
};

class SimBleTest : public SimTest {
protected:
    void ApplyWorld(sim::SimBleConfig ble, Controller::Radio radio = Controller::Radio::On) {
        pc().Apply(BluetoothWorld(radio, std::move(ble)));
    }
    std::shared_ptr<platform::BleAdvertisementWatcher> Watch(const std::shared_ptr<Heard>& heard) {
        auto watcher = pc().bluetoothLE().NewWatcher();
        heard->Listen(*watcher);
        return watcher;
    }
};

// A watcher that hears is the scanner's tests' business; here the ways a
// watcher, or one of its handlers, stops hearing.
TEST_F(SimBleTest, TheWatchersLife) {
    enum class Then { Nothing, Stop, RadioOff, RemoveHandler };
    using S = BleWatcherStatus;
    using E = BluetoothError;
    const struct {
        const char* what;
        bool abortOnStart, silentOnRadioOff, radioOn;
        Then then;
        S status;
        std::vector<E> stopped;
    } cases[] = {
        {"stopped", false, false, true, Then::Stop, S::Stopped, {E::Success}},
        {"aborted", true, false, true, Then::Nothing, S::Aborted, {E::ResourceInUse}},
        {"off at start", false, false, false, Then::Nothing, S::Aborted, {E::RadioNotAvailable}},
        {"radio goes off", false, false, true, Then::RadioOff, S::Aborted, {E::RadioNotAvailable}},
        {"radio goes off silently", false, true, true, Then::RadioOff, S::Aborted, {}},
        {"handler removed", false, false, true, Then::RemoveHandler, S::Started, {}},
    };
    for (const auto& [what, abortOnStart, silent, radioOn, then, status, stopped] : cases) {
        sim::SimBleConfig ble;
        ble.watcher = {abortOnStart, BluetoothError::ResourceInUse, silent};
        ble.phones = {BlePhone(1, {{0x16, {0x35, 0xFE, 1}}})};
        ApplyWorld(ble, radioOn ? Controller::Radio::On : Controller::Radio::Off);
        auto heard = std::make_shared<Heard>();
        auto watcher = Watch(heard);
        watcher->Start();
        pc().clock().Sleep(250);
        if (then == Then::Stop) {
            watcher->Stop();
        } else if (then == Then::RadioOff) {
            pc().bluetooth().SwitchRadio(platform::RadioKind::Bluetooth, platform::RadioState::Off);
        } else if (then == Then::RemoveHandler) {
            watcher->RemoveReceived(heard->receivedToken);
        }
        pc().clock().Sleep(10);
        size_t before = heard->From(1, BleAdvertisementType::NonConnectableUndirected);
        pc().clock().Sleep(1000);
        EXPECT_EQ(watcher->Status(), status) << what;
        EXPECT_EQ(heard->Stopped(), stopped) << what;
        size_t after = heard->From(1, BleAdvertisementType::NonConnectableUndirected);
        EXPECT_EQ(after, before) << what;
        EXPECT_EQ(before > 0, then != Then::Nothing) << what;
    }
}

TEST_F(SimBleTest, TheAirDeliversByIntervalAndFilter) {
    auto scannable = BlePhone(0xA, {{0xFF, {0x7D, 0x02, 0x0E}}, {0x16, {0xEE, 0xFD}}});
    scannable.type = BleAdvertisementType::ScannableUndirected;
    scannable.scanResponse = {{0xFF, {0x7D, 0x02, 0x0F}}};
    scannable.intervalMs = 200;
    auto far = BlePhone(0xB, {{0x16, {0x35, 0xFE, 5}}, {0x16, {}}}, -80);
    struct Case {
        const char* what;
        BleScanningMode mode;
        std::optional<int16_t> threshold;
        std::vector<platform::BleBytePattern> patterns;
        size_t fromA, responses, fromB;
    };
    const Case cases[] = {
        {"passive", BleScanningMode::Passive, {}, {}, 5, 0, 10},
        {"active", BleScanningMode::Active, {}, {}, 5, 5, 10},
        {"in range", BleScanningMode::Active, -60, {}, 5, 5, 0},
        {"service data FE35", BleScanningMode::Active, {}, {{0x16, 0, {0x35, 0xFE}}}, 0, 0, 10},
        {"either", BleScanningMode::Active, {}, {{0x16, 0, {0x35}}, {0xFF, 2, {0x0F}}}, 0, 5, 10},
        {"beyond the section", BleScanningMode::Passive, {}, {{0x16, 2, {5, 0}}}, 0, 0, 0},
    };
    for (const auto& [what, mode, threshold, patterns, fromA, responses, fromB] : cases) {
        sim::SimBleConfig ble;
        ble.phones = {scannable, far};
        ApplyWorld(ble);
        auto heard = std::make_shared<Heard>();
        auto watcher = Watch(heard);
        watcher->SetScanningMode(mode);
        watcher->SetInRangeThreshold(threshold);
        watcher->SetBytePatterns(patterns);
        watcher->Start();
        pc().clock().Sleep(1050);
        watcher->Stop();
        EXPECT_EQ(heard->From(0xA, BleAdvertisementType::ScannableUndirected), fromA) << what;
        EXPECT_EQ(heard->From(0xA, BleAdvertisementType::ScanResponse), responses) << what;
        EXPECT_EQ(heard->From(0xB, BleAdvertisementType::NonConnectableUndirected), fromB) << what;
    }
}

TEST_F(SimBleTest, TheControllerPutsItsEnabledInstancesOnTheAir) {
    sim::SimBleConfig ble;
    ble.lmpVersion = 11;
    ble.controller.latencyMs = {{hci::kSubSetParameters, 30}};
    ApplyWorld(ble);
    std::unique_ptr<platform::BluetoothRadio> radio;
    uint32_t error = 0;
    auto search = pc().bluetooth().FindFirstRadio(radio, error);
    ASSERT_TRUE(radio);
    Bytes output;
    ASSERT_EQ(radio->Control(hci::kIoctlGetLocalInfo, {}, output, hci::localInfo::kSize), 0u);
    EXPECT_EQ(output[hci::localInfo::kLmpVersion], 11);
    EXPECT_EQ(output[hci::localInfo::kManufacturer], 2);

    const uint8_t noAddress[6] = {};
    using namespace bluetooth;
    // 160 slots: 100 ms.
    Bytes parameters = SetParametersCommand(MultiAdvParameters(160, false, false, noAddress, 2));
    // Manufacturer data, then a section that overruns the bytes.
    AdvBuffer sections{5, 0xFF, 0x7D, 0x02, 0x0E, 9, 4, 0x16, 1};
    Bytes data = SetDataCommand(hci::kSubSetData, sections, 9, 2);
    Bytes enable = EnableCommand(true, 2);
    EXPECT_EQ(
        radio->Control(hci::kIoctlVendorCommand, VendorCommandInput(2, parameters), output, 64),
        1314u);
    ASSERT_EQ(pc().privileges().Enable(platform::kLoadDriverPrivilege), 0u);
    uint64_t before = pc().clock().TickCount64();
    for (const auto& command : {parameters, data, enable}) {
        ASSERT_EQ(
            radio->Control(hci::kIoctlVendorCommand, VendorCommandInput(2, command), output, 64),
            0u);
        EXPECT_EQ(output[hci::event::kEventInfo + 5], hci::kStatusSuccess);
    }
    EXPECT_EQ(pc().clock().TickCount64() - before, 30u);

    auto heard = std::make_shared<Heard>();
    auto watcher = Watch(heard);
    watcher->Start();
    pc().clock().Sleep(250);
    ASSERT_EQ(heard->From(0xA1B2C3D4E5F6, BleAdvertisementType::NonConnectableUndirected), 2u);
    {
        std::lock_guard<std::mutex> lock(heard->mutex);
        const auto& first = heard->received[0];
        EXPECT_EQ(first.dataSections.size(), 1u);
        ASSERT_EQ(first.manufacturerData.size(), 1u);
        EXPECT_EQ(first.manufacturerData[0].companyId, 0x027D);
        EXPECT_EQ(first.manufacturerData[0].data, (Bytes{0x0E, 9}));
        EXPECT_EQ(heard->received[1].timestamp - first.timestamp, 100 * 10000);
        int64_t unixMs = (first.timestamp - 116444736000000000) / 10000;
        EXPECT_EQ(unixMs, static_cast<int64_t>(pc().clock().UnixTimeMs()) - 150);
    }
    EXPECT_EQ(pc().bluetoothLE().Air().size(), 1u);
    pc().bluetooth().SwitchRadio(platform::RadioKind::Bluetooth, platform::RadioState::Off);
    pc().clock().Sleep(10);
    EXPECT_TRUE(pc().bluetoothLE().Air().empty());
}

}  // namespace
}  // namespace connectkit::test
