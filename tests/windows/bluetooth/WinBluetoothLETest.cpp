// Bluetooth LE on the Windows backend: the advertisement watcher against
// fake watchers through the activation seam (Wine's runtime has none); the
// process token's privileges against Wine's own.

#include <gtest/gtest.h>

#include <iomanip>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string>

#include "bluetooth/FakeWatcher.h"
#include "platform/ports/Errors.h"
#include "platform/windows/bluetooth/WinBluetoothLE.h"
#include "platform/windows/core/UniqueHandle.h"
#include "platform/windows/machine/WinPrivileges.h"
#include "support/LogCapture.h"

namespace connectkit::test {
namespace {

using platform::BleAdvertisementReceived;
using platform::BleWatcherStatus;
using platform::BluetoothError;

constexpr HRESULT kRefused = static_cast<HRESULT>(0x80070005);

bool Enabled(const wchar_t* name) {
    win::KernelHandle token;
    PRIVILEGE_SET privilege{1, PRIVILEGE_SET_ALL_NECESSARY, {}};
    BOOL enabled = FALSE;
    return OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put()) &&
           LookupPrivilegeValueW(nullptr, name, &privilege.Privilege[0].Luid) &&
           PrivilegeCheck(token.Get(), &privilege, &enabled) && enabled;
}

// Wine's token is an administrator's: it holds the load-driver privilege,
// but, like an administrator's on Windows, not the one to create tokens.
TEST(WinPrivilegesOnWine, OnlyAPrivilegeTheTokenHoldsIsEnabled) {
    win::WinPrivileges privileges;
    const std::pair<const wchar_t*, uint32_t> cases[] = {
        {platform::kLoadDriverPrivilege, 0},
        {L"SeCreateTokenPrivilege", platform::kErrorNotAllAssigned},
        {L"SeNoSuchPrivilege", 1313},  // ERROR_NO_SUCH_PRIVILEGE
    };
    for (const auto& [name, error] : cases) {
        LogCapture log;
        EXPECT_EQ(privileges.Enable(name), error) << name;
        EXPECT_EQ(Enabled(name), error == 0) << name;
        EXPECT_EQ(log.Contains(name), error != 0) << name;
    }
}

// An event as text: signal, address, type, time, then each manufacturer
// entry and each section with its bytes.
std::string Text(const BleAdvertisementReceived& received) {
    std::ostringstream text;
    text << std::setfill('0') << received.rawSignalStrengthInDBm << ' ' << std::hex << std::setw(12)
         << received.bluetoothAddress << std::dec << ' '
         << static_cast<int>(received.advertisementType) << ' ' << received.timestamp << " |";
    auto bytes = [&text](char kind, int width, unsigned id, const std::vector<uint8_t>& data) {
        text << ' ' << kind << std::hex << std::setw(width) << id << ':';
        for (uint8_t byte : data) {
            text << std::setw(2) << static_cast<int>(byte);
        }
        text << std::dec;
    };
    for (const auto& entry : received.manufacturerData) {
        bytes('m', 4, entry.companyId, entry.data);
    }
    for (const auto& section : received.dataSections) {
        bytes('s', 2, section.dataType, section.data);
    }
    return text.str();
}

const FakeAdvertisement kPhone{-48,
                               0xFFFF0A1B2C3D4E5Full,
                               0,
                               132000000000,
                               {{0x027D, {{1, 2, 3}}}},
                               {{0xFF, {{0x7D, 0x02, 1, 2, 3}}}, {0x16, {{0x35, 0xFE, 9}}}}};

class WinBluetoothLETest : public ::testing::Test {
protected:
    void SetUp() override {
        watcher = port.NewWatcher();
        ASSERT_TRUE(watcher);
    }
    void TearDown() override {
        watcher.reset();
        watchers.Drop();
        EXPECT_TRUE(runtime->Quiet());
        runtime->ClearFaults();
        EXPECT_EQ(world().handlers, 0);
        EXPECT_EQ(world().failedInvokes, failedInvokes);
        EXPECT_EQ(world().live, 0) << "a runtime object was leaked";
    }
    const FakeWorld& world() { return runtime->world(); }

    // Collects what the watcher delivers; read once the runtime is quiet.
    void Listen() {
        watcher->AddReceived([this](auto& sender, const BleAdvertisementReceived& received) {
            EXPECT_EQ(&sender, watcher.get());
            std::lock_guard<std::mutex> lock(mutex);
            this->received.push_back(Text(received));
        });
        watcher->AddStopped([this](auto&, BluetoothError error) {
            std::lock_guard<std::mutex> lock(mutex);
            stops.push_back(error);
        });
    }
    void Advertise(const FakeAdvertisement& advertisement) {
        ASSERT_TRUE(watchers.Advertise(advertisement));
        ASSERT_TRUE(runtime->Quiet());
    }

    std::shared_ptr<FakeRuntime> runtime = std::make_shared<FakeRuntime>();
    FakeWatchers watchers{*runtime};
    win::WinBluetoothLE port{runtime};
    std::shared_ptr<platform::BleAdvertisementWatcher> watcher;
    long failedInvokes = 0;
    std::mutex mutex;
    std::vector<std::string> received;
    std::vector<BluetoothError> stops;
};

TEST_F(WinBluetoothLETest, AdvertisementsAndScanResponsesArriveCopiedOut) {
    Listen();
    watcher->SetScanningMode(platform::BleScanningMode::Active);
    EXPECT_EQ(watcher->ScanningMode(), platform::BleScanningMode::Active);
    EXPECT_EQ(watcher->Status(), BleWatcherStatus::Created);
    watcher->Start();
    EXPECT_EQ(watcher->Status(), BleWatcherStatus::Started);
    Advertise(kPhone);
    Advertise({-50, 0x0A1B2C3D4E5F, 4, 132000000001, {}, {{0x16, {{0xEE, 0xFD}}}}});
    EXPECT_EQ(received, (std::vector<std::string>{
                            "-48 0a1b2c3d4e5f 0 132000000000 | m027d:010203 sff:7d02010203 "
                            "s16:35fe09",
                            "-50 0a1b2c3d4e5f 4 132000000001 | s16:eefd"}));
}

// Zero-length entries are sections like any other; a buffer that is missing,
// claims more than it holds, or more than a section can hold is left out,
// logged, and the rest delivered.
TEST_F(WinBluetoothLETest, UnbelievableBuffersAreLeftOutAndTheRestDelivered) {
    Listen();
    watcher->Start();
    LogCapture log;
    Advertise({-70,
               0x112233445566,
               3,
               7,
               {{0x027D, {{1, 2, 3}, 1}}, {0x00E0, {{}, 0, true}}, {0x0006, {}}, {0x0075, {{4}}}},
               {{0xFF, {{1}, 200}},
                {0x16, {{}, 0, true}},
                {0x01, {}},
                {0x09, {{'a'}}},
                {0x08, {std::vector<uint8_t>(255)}}}});
    EXPECT_EQ(received,
              (std::vector<std::string>{"-70 112233445566 3 7 | m0006: m0075:04 s01: s09:61"}));
    for (const wchar_t* line :
         {L"manufacturer data 0x027D: buffer length 4 exceeds its capacity 3; skipped",
          L"manufacturer data 0x00E0 has no buffer; skipped",
          L"data section of type 0xFF: buffer length 201 exceeds its capacity 1; skipped",
          L"data section of type 0x16 has no buffer; skipped",
          L"data section of type 0x08: buffer length 255 exceeds the 254 bytes it can hold; "
          L"skipped"}) {
        EXPECT_TRUE(log.Contains(line)) << line;
    }
}

// Every end of a watcher arrives as Stopped: an aborted start, the radio
// going off, a stop asked for, and an end whose error cannot be read.
TEST_F(WinBluetoothLETest, EveryEndArrivesAsStoppedWithItsError) {
    Listen();
    enum End { kAbortedStart, kRadioOff, kStop };
    const struct {
        End end;
        const char* fault;
        BleWatcherStatus status;
        BluetoothError error;
    } cases[] = {
        {kAbortedStart, "", BleWatcherStatus::Aborted, BluetoothError::DisabledByUser},
        {kRadioOff, "", BleWatcherStatus::Aborted, BluetoothError::RadioNotAvailable},
        {kStop, "", BleWatcherStatus::Stopped, BluetoothError::Success},
        {kStop, "IBluetoothLEAdvertisementWatcherStoppedEventArgs::get_Error",
         BleWatcherStatus::Stopped, BluetoothError::OtherError},
    };
    for (const auto& test : cases) {
        if (test.end == kAbortedStart) {
            runtime->AbortStarts(static_cast<int32_t>(test.error));
        }
        runtime->Fail(test.fault, kRefused);
        watcher->Start();
        if (test.end == kRadioOff) {
            ASSERT_TRUE(watchers.RadioOff());
        } else if (test.end == kStop) {
            watcher->Stop();
        }
        ASSERT_TRUE(runtime->Quiet());
        EXPECT_EQ(watcher->Status(), test.status);
        EXPECT_EQ(stops, std::vector<BluetoothError>{test.error});
        stops.clear();
        runtime->ClearFaults();
    }
}

// The scanner's way: handlers taken off once stopped hear nothing more, a
// handler that throws stays inside the delegate, and a dropped wrapper takes
// off what is still registered.
TEST_F(WinBluetoothLETest, HandlersTakenOffHearNothingAndThrowsStayInside) {
    auto kept = watcher->AddReceived([this](auto&, const BleAdvertisementReceived& received) {
        this->received.push_back(Text(received));
    });
    auto thrower = watcher->AddReceived(
        [](auto&, const BleAdvertisementReceived&) { throw std::runtime_error("host bug"); });
    auto stopped =
        watcher->AddStopped([this](auto&, BluetoothError error) { stops.push_back(error); });
    watcher->Start();
    Advertise(kPhone);
    watcher->Stop();
    ASSERT_TRUE(runtime->Quiet());
    EXPECT_EQ(received.size(), 1u);
    EXPECT_EQ(stops, std::vector<BluetoothError>{BluetoothError::Success});
    failedInvokes = 1;

    watcher->RemoveReceived(kept);
    watcher->RemoveReceived(thrower);
    watcher->RemoveStopped(stopped);
    EXPECT_EQ(world().handlers, 0);
    watcher->Start();
    EXPECT_FALSE(watchers.Advertise(kPhone));

    watcher->AddReceived([](auto&, const BleAdvertisementReceived&) {});
    watcher->AddStopped([](auto&, BluetoothError) {});
    EXPECT_EQ(world().handlers, 2);
    watcher.reset();
    EXPECT_EQ(world().handlers, 0);
}

// The filters change the watcher's own: a pattern that cannot be made
// leaves the patterns set before in place.
TEST_F(WinBluetoothLETest, FiltersReachTheWatcher) {
    watcher->SetInRangeThreshold(-70);
    EXPECT_EQ(watchers.Filters().inRange, std::optional<int16_t>(-70));
    watcher->SetInRangeThreshold(std::nullopt);
    EXPECT_FALSE(watchers.Filters().inRange);

    watcher->SetBytePatterns({{0xFF, 0, {0x7D, 0x02}}, {0x16, 2, {}}});
    const decltype(FakeFilters::patterns) made{{0xFF, 0, {0x7D, 0x02}}, {0x16, 2, {}}};
    EXPECT_EQ(watchers.Filters().patterns, made);
    runtime->Fail("IBluetoothLEAdvertisementBytePatternFactory::Create", kRefused);
    EXPECT_THROW(watcher->SetBytePatterns({{0x16, 0, {0x35, 0xFE}}}), platform::PlatformError);
    EXPECT_EQ(watchers.Filters().patterns, made);
    runtime->ClearFaults();
    watcher->SetBytePatterns({});
    EXPECT_TRUE(watchers.Filters().patterns.empty());
}

// A failing call throws the runtime's answer with the call named; while an
// event is read, it drops that event with the call logged.
TEST_F(WinBluetoothLETest, EveryFailingCallIsNamed) {
    auto patterns = [&] { watcher->SetBytePatterns({{0xFF, 0, {1}}}); };
    auto threshold = [&] { watcher->SetInRangeThreshold(-60); };
    const FailingUses uses = {
        {"IBluetoothLEAdvertisementWatcher::get_Status", [&] { watcher->Status(); }},
        {"IBluetoothLEAdvertisementWatcher::get_ScanningMode", [&] { watcher->ScanningMode(); }},
        {"IBluetoothLEAdvertisementWatcher::put_ScanningMode",
         [&] { watcher->SetScanningMode(platform::BleScanningMode::Passive); }},
        {"IBluetoothLEAdvertisementWatcher::Start", [&] { watcher->Start(); }},
        {"IBluetoothLEAdvertisementWatcher::Stop", [&] { watcher->Stop(); }},
        {"IBluetoothLEAdvertisementWatcher::add_Received",
         [&] { watcher->AddReceived([](auto&, auto&) {}); }},
        {"IBluetoothLEAdvertisementWatcher::add_Stopped",
         [&] { watcher->AddStopped([](auto&, auto) {}); }},
        {"IBluetoothLEAdvertisementWatcher::remove_Received",
         [&] { watcher->RemoveReceived(watcher->AddReceived([](auto&, auto&) {})); }},
        {"IBluetoothLEAdvertisementWatcher::remove_Stopped",
         [&] { watcher->RemoveStopped(watcher->AddStopped([](auto&, auto) {})); }},
        {"IBluetoothLEAdvertisementWatcher::get_SignalStrengthFilter", threshold},
        {"factory:Windows.Foundation.PropertyValue", threshold},
        {"IPropertyValueStatics::CreateInt16", threshold},
        {"IBluetoothSignalStrengthFilter::put_InRangeThresholdInDBm", threshold},
        {"IBluetoothLEAdvertisementWatcher::get_AdvertisementFilter", patterns},
        {"IBluetoothLEAdvertisementFilter::get_BytePatterns", patterns},
        {"factory:Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementBytePattern",
         patterns},
        {"factory:Windows.Storage.Streams.Buffer", patterns},
        {"IBufferFactory::Create", patterns},
        {"IBuffer::put_Length", patterns},
        {"IVector<BluetoothLEAdvertisementBytePattern>::Clear", patterns},
        {"IVector<BluetoothLEAdvertisementBytePattern>::Append", patterns},
    };
    ExpectEachFailureThrown(*runtime, kRefused, uses);

    Listen();
    watcher->Start();
    for (const char* fault : {
             "IBluetoothLEAdvertisementReceivedEventArgs::get_RawSignalStrengthInDBm",
             "IBluetoothLEAdvertisementReceivedEventArgs::get_BluetoothAddress",
             "IBluetoothLEAdvertisementReceivedEventArgs::get_AdvertisementType",
             "IBluetoothLEAdvertisementReceivedEventArgs::get_Timestamp",
             "IBluetoothLEAdvertisementReceivedEventArgs::get_Advertisement",
             "IBluetoothLEAdvertisement::get_ManufacturerData",
             "IBluetoothLEAdvertisement::get_DataSections",
             "IVector<BluetoothLEManufacturerData>::get_Size",
             "IVector<BluetoothLEManufacturerData>::GetAt",
             "IBluetoothLEManufacturerData::get_CompanyId",
             "IBluetoothLEManufacturerData::get_Data",
             "IVector<BluetoothLEAdvertisementDataSection>::get_Size",
             "IVector<BluetoothLEAdvertisementDataSection>::GetAt",
             "IBluetoothLEAdvertisementDataSection::get_DataType",
             "IBluetoothLEAdvertisementDataSection::get_Data",
             "IBuffer::get_Length",
             "IBuffer::get_Capacity",
         }) {
        runtime->Fail(fault, kRefused);
        LogCapture log;
        Advertise(kPhone);
        std::string line = std::string(fault) + " failed, hresult 0x80070005";
        EXPECT_TRUE(log.Contains(std::wstring(line.begin(), line.end()))) << fault;
        runtime->ClearFaults();
    }
    EXPECT_TRUE(received.empty());

    const std::string watcherClass =
        "Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementWatcher";
    runtime->Fail("activate:" + watcherClass, kRefused);
    LogCapture log;
    EXPECT_FALSE(port.NewWatcher());
    std::string line = "activating " + watcherClass + " failed, hresult 0x80070005";
    EXPECT_TRUE(log.Contains(std::wstring(line.begin(), line.end())));
}

}  // namespace
}  // namespace connectkit::test
