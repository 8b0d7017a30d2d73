// The simulated air and its watcher as the scanner meets them, and the
// controller's control codes as the advertiser meets them.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>

#include "platform/ports/BluetoothHci.h"
#include "platform/sim/SimulatedPc.h"
#include "support/HciCommands.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

namespace hci = platform::hci;
using platform::BleAdvertisementReceived;
using platform::BleAdvertisementType;
using platform::BleScanningMode;
using platform::BleWatcherStatus;
using platform::BluetoothError;
using Controller = sim::SimBluetoothConfig::Controller;
using Bytes = std::vector<uint8_t>;

// Records what a watcher hands over.
struct Heard {
    std::mutex mutex;
    std::vector<BleAdvertisementReceived> received;
    std::vector<BluetoothError> stopped;

    void Listen(platform::BleAdvertisementWatcher& watcher) {
        watcher.AddReceived([this](auto&, const BleAdvertisementReceived& event) {
            std::lock_guard<std::mutex> lock(mutex);
            received.push_back(event);
        });
        watcher.AddStopped([this](auto&, BluetoothError error) {
            std::lock_guard<std::mutex> lock(mutex);
            stopped.push_back(error);
        });
    }
    size_t From(uint64_t address, BleAdvertisementType type) {
        std::lock_guard<std::mutex> lock(mutex);
        return std::count_if(received.begin(), received.end(), [&](const auto& event) {
            return event.bluetoothAddress == address && event.advertisementType == type;
        });
    }
};

sim::SimBlePhone Phone(std::string name, uint64_t address, int16_t rssi,
                       std::vector<platform::BleDataSection> sections) {
    sim::SimBlePhone phone;
    phone.name = std::move(name);
    phone.address = address;
    phone.rssi = rssi;
    phone.advertisement = std::move(sections);
    return phone;
}

class SimBleTest : public SimTest {
protected:
    // One controller whose radio is `radio`, with `ble`.
    void ApplyWorld(sim::SimBleConfig ble, Controller::Radio radio = Controller::Radio::On) {
        sim::Scenario scenario;
        Controller controller;
        controller.radio = radio;
        scenario.bluetooth.controllers = {controller};
        scenario.ble = std::move(ble);
        pc().Apply(scenario);
    }
    std::shared_ptr<platform::BleAdvertisementWatcher> Watch(Heard& heard) {
        auto watcher = pc().bluetoothLE().NewWatcher();
        heard.Listen(*watcher);
        return watcher;
    }
};

TEST_F(SimBleTest, TheWatchersLife) {
    enum class Then { Nothing, Stop, RadioOff };
    struct Case {
        const char* what;
        bool abortOnStart;
        bool silentOnRadioOff;
        Controller::Radio radio;
        Then then;
        BleWatcherStatus status;
        std::vector<BluetoothError> stopped;
    };
    const Case cases[] = {
        {"started",
         false,
         false,
         Controller::Radio::On,
         Then::Nothing,
         BleWatcherStatus::Started,
         {}},
        {"stopped",
         false,
         false,
         Controller::Radio::On,
         Then::Stop,
         BleWatcherStatus::Stopped,
         {BluetoothError::Success}},
        {"aborted",
         true,
         false,
         Controller::Radio::On,
         Then::Nothing,
         BleWatcherStatus::Aborted,
         {BluetoothError::ResourceInUse}},
        {"radio off at start",
         false,
         false,
         Controller::Radio::Off,
         Then::Nothing,
         BleWatcherStatus::Aborted,
         {BluetoothError::RadioNotAvailable}},
        {"radio goes off",
         false,
         false,
         Controller::Radio::On,
         Then::RadioOff,
         BleWatcherStatus::Aborted,
         {BluetoothError::RadioNotAvailable}},
        {"radio goes off silently",
         false,
         true,
         Controller::Radio::On,
         Then::RadioOff,
         BleWatcherStatus::Aborted,
         {}},
    };
    for (const auto& [what, abortOnStart, silent, radio, then, status, stopped] : cases) {
        sim::SimBleConfig ble;
        ble.watcher = {abortOnStart, BluetoothError::ResourceInUse, silent};
        ble.phones = {Phone("a", 1, -50, {{0x16, {0x35, 0xFE, 1}}})};
        ApplyWorld(ble, radio);
        Heard heard;
        auto watcher = Watch(heard);
        watcher->Start();
        pc().clock().Sleep(250);
        if (then == Then::Stop) {
            watcher->Stop();
        } else if (then == Then::RadioOff) {
            pc().bluetooth().SwitchRadio(platform::RadioKind::Bluetooth, platform::RadioState::Off);
        }
        pc().clock().Sleep(10);
        size_t before = heard.From(1, BleAdvertisementType::NonConnectableUndirected);
        pc().clock().Sleep(1000);
        EXPECT_EQ(watcher->Status(), status) << what;
        EXPECT_EQ(heard.stopped, stopped) << what;
        size_t after = heard.From(1, BleAdvertisementType::NonConnectableUndirected);
        bool listening = status == BleWatcherStatus::Started;
        EXPECT_EQ(after > before, listening) << what;
        EXPECT_EQ(before > 0, listening || then != Then::Nothing) << what;
    }
}

TEST_F(SimBleTest, TheAirDeliversByIntervalAndFilter) {
    auto scannable = Phone("a", 0xA, -50, {{0xFF, {0x7D, 0x02, 0x0E}}, {0x16, {0xEE, 0xFD}}});
    scannable.type = BleAdvertisementType::ScannableUndirected;
    scannable.scanResponse = {{0xFF, {0x7D, 0x02, 0x0F}}};
    scannable.intervalMs = 200;
    auto far = Phone("b", 0xB, -80, {{0x16, {0x35, 0xFE, 5}}, {0x16, {}}});
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
        {"either pattern",
         BleScanningMode::Active,
         {},
         {{0x16, 0, {0x35}}, {0xFF, 2, {0x0F}}},
         0,
         5,
         10},
        {"beyond the section", BleScanningMode::Passive, {}, {{0x16, 2, {5, 0}}}, 0, 0, 0},
    };
    for (const auto& [what, mode, threshold, patterns, fromA, responses, fromB] : cases) {
        sim::SimBleConfig ble;
        ble.phones = {scannable, far};
        ApplyWorld(ble);
        Heard heard;
        auto watcher = Watch(heard);
        watcher->SetScanningMode(mode);
        watcher->SetInRangeThreshold(threshold);
        watcher->SetBytePatterns(patterns);
        watcher->Start();
        pc().clock().Sleep(1050);
        watcher->Stop();
        EXPECT_EQ(heard.From(0xA, BleAdvertisementType::ScannableUndirected), fromA) << what;
        EXPECT_EQ(heard.From(0xA, BleAdvertisementType::ScanResponse), responses) << what;
        EXPECT_EQ(heard.From(0xB, BleAdvertisementType::NonConnectableUndirected), fromB) << what;
    }
}

TEST_F(SimBleTest, EventsCarryTheirSectionsAndTheVirtualTime) {
    sim::SimBleConfig ble;
    ble.phones = {Phone("a", 0xA, -50, {{0xFF, {0x7D, 0x02, 0x0E, 9}}, {0xFF, {0x7D}}})};
    ApplyWorld(ble);
    Heard heard;
    auto watcher = Watch(heard);
    watcher->Start();
    pc().clock().Sleep(250);
    std::lock_guard<std::mutex> lock(heard.mutex);
    ASSERT_EQ(heard.received.size(), 2u);
    const auto& first = heard.received[0];
    EXPECT_EQ(first.dataSections.size(), 2u);
    ASSERT_EQ(first.manufacturerData.size(), 1u);
    EXPECT_EQ(first.manufacturerData[0].companyId, 0x027D);
    EXPECT_EQ(first.manufacturerData[0].data, (Bytes{0x0E, 9}));
    EXPECT_EQ(heard.received[1].timestamp - first.timestamp, 100 * 10000);
    int64_t unixMs = (first.timestamp - 116444736000000000) / 10000;
    EXPECT_NEAR(static_cast<double>(unixMs), static_cast<double>(pc().clock().UnixTimeMs()), 200);
}

TEST_F(SimBleTest, AHandlerRemovedIsNotCalledAgain) {
    sim::SimBleConfig ble;
    ble.phones = {Phone("a", 0xA, -50, {{0x16, {0x35, 0xFE}}})};
    ApplyWorld(ble);
    auto watcher = pc().bluetoothLE().NewWatcher();
    std::atomic<int> calls{0};
    auto token = watcher->AddReceived([&](auto&, const auto&) { ++calls; });
    watcher->Start();
    pc().clock().Sleep(150);
    watcher->RemoveReceived(token);
    int seen = calls;
    pc().clock().Sleep(500);
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(calls, seen);
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

    Bytes parameters = hcicmd::SetParameters(2, 160);  // 100 ms
    Bytes data = hcicmd::SetData(hci::kSubSetData, 2, {6, 0x16, 0xEE, 0xFD, 1, 2, 3});
    Bytes enable = hcicmd::Enable(2);
    EXPECT_EQ(radio->Control(hci::kIoctlVendorCommand, hcicmd::VendorInput(parameters), output, 64),
              1314u);
    ASSERT_EQ(pc().privileges().Enable(platform::kLoadDriverPrivilege), 0u);
    uint64_t before = pc().clock().TickCount64();
    for (const auto& command : {parameters, data, enable}) {
        ASSERT_EQ(
            radio->Control(hci::kIoctlVendorCommand, hcicmd::VendorInput(command), output, 64), 0u);
        EXPECT_EQ(output[hci::event::kEventInfo + 5], hci::kStatusSuccess);
    }
    EXPECT_EQ(pc().clock().TickCount64() - before, 30u);

    Heard heard;
    auto watcher = Watch(heard);
    watcher->Start();
    pc().clock().Sleep(250);
    ASSERT_EQ(heard.From(0xA1B2C3D4E5F6, BleAdvertisementType::NonConnectableUndirected), 2u);
    std::lock_guard<std::mutex> lock(heard.mutex);
    ASSERT_EQ(heard.received[0].dataSections.size(), 1u);
    EXPECT_EQ(heard.received[0].dataSections[0].data, (Bytes{0xEE, 0xFD, 1, 2, 3}));
    ASSERT_EQ(pc().bluetoothLE().Air().size(), 1u);
}

// The library lies in System32 beside a Realtek card and advertises on the
// air while the radio is on.
TEST_F(SimBleTest, TheRealtekLibraryAdvertisesThroughTheSameController) {
    for (auto radio : {Controller::Radio::On, Controller::Radio::Off}) {
        sim::Scenario scenario;
        scenario.wifiCard.maker = sim::SimWifiCardConfig::Maker::Realtek;
        scenario.bluetooth.controllers = {Controller{}};
        scenario.bluetooth.controllers[0].radio = radio;
        pc().Apply(scenario);
        uint32_t error = 0;
        auto library = pc().loader().Load(platform::rtk::kLibraryName, error);
        ASSERT_TRUE(library);
        auto open = reinterpret_cast<platform::rtk::OpenDeviceFn>(
            library->FindSymbol(platform::rtk::kOpenDevice));
        auto parameters = reinterpret_cast<platform::rtk::SetMultiAdvParamFn>(
            library->FindSymbol(platform::rtk::kSetMultiAdvParam));
        auto send = reinterpret_cast<platform::rtk::SendAdvFn>(
            library->FindSymbol(platform::rtk::kSendAdv));
        ASSERT_TRUE(open && parameters && send);
        platform::rtk::Device device = platform::rtk::InvalidDevice();
        ASSERT_EQ(open(&device), 0);
        platform::rtk::MultiAdvParam block{};
        block.intervalMin = block.intervalMax = 80;
        block.advertisingType = 3;
        block.channelMap = 7;
        block.instance = 4;
        const uint8_t data[] = {3, 0xFF, 0x7D, 0x02};
        bool on = radio == Controller::Radio::On;
        EXPECT_EQ(parameters(device, &block) == 0, on);
        EXPECT_EQ(send(4, data, sizeof(data), nullptr, 0, device) == 0, on);
        EXPECT_EQ(pc().bluetoothLE().Air().size(), on ? 1u : 0u);
    }
}

TEST_F(SimBleTest, PrivilegesNeedAnElevatedProcess) {
    for (bool elevated : {true, false}) {
        sim::SimBleConfig ble;
        ble.elevated = elevated;
        ApplyWorld(ble);
        EXPECT_EQ(pc().privileges().Enable(platform::kLoadDriverPrivilege),
                  elevated ? 0u : platform::kErrorNotAllAssigned);
    }
}

}  // namespace
}  // namespace connectkit::test
