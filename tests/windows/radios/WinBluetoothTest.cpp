// Classic Bluetooth and the Bluetooth setup class on the Windows backend:
// against Wine's own libraries, whose answers are failures and empty lists,
// and against the bthprops double (bthdll/), which checks the structures
// the real code hands it and counts the handles left open.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "bthdll/BthDouble.h"
#include "platform/ports/Errors.h"
#include "platform/windows/bluetooth/WinBluetoothClassic.h"
#include "platform/windows/machine/WinDeviceSetup.h"
#include "platform/windows/machine/WinRegistry.h"

namespace connectkit::test {
namespace {

using platform::BluetoothRadio;
using platform::BluetoothRadioInfo;
using platform::kErrorNoMoreItems;

constexpr uint32_t kReloadLocalName = 0x411008;
const std::wstring kBluetoothClass = L"{E0CBF06C-CD8B-4647-BB8A-263B43F0F974}";

TEST(WinBluetoothOnWine, TheSystemLibraryFindsNothingAndIsLookedForInTheSystemFolderOnly) {
    struct Case {
        win::BluetoothLibraries libraries;
        uint32_t error;
    } cases[] = {
        {{}, platform::kErrorCallNotImplemented},
        {{L"ckprobe.dll", L"kernel32.dll"}, platform::kErrorModNotFound},
        {{L"ckprobe.dll", L"kernel32.dll", 0}, 127},  // ERROR_PROC_NOT_FOUND
    };
    for (const auto& test : cases) {
        win::WinBluetoothClassic bluetooth(test.libraries);
        std::unique_ptr<BluetoothRadio> first;
        uint32_t error = 0;
        EXPECT_FALSE(bluetooth.FindFirstRadio(first, error));
        EXPECT_FALSE(first);
        EXPECT_EQ(error, test.error);
        platform::BluetoothDeviceInfo device;
        EXPECT_NE(bluetooth.FindFirstDevice({}, device), 0u);
    }
}

TEST(WinDeviceSetupOnWine, TheBluetoothClassIsEmptyAndClassNamesComeFromTheirKeys) {
    win::WinDeviceSetup setup;
    std::vector<platform::SetupDevice> devices{{L"stale", L"stale"}};
    EXPECT_EQ(setup.ClassDevices(kBluetoothClass, platform::kDigcfPresent, devices), 0u);
    EXPECT_TRUE(devices.empty());
    EXPECT_EQ(setup.ClassDevices(L"not a guid", platform::kDigcfPresent, devices),
              static_cast<uint32_t>(ERROR_INVALID_PARAMETER));
    std::wstring name = L"stale";
    EXPECT_EQ(setup.ClassName(L"{", name), static_cast<uint32_t>(ERROR_INVALID_PARAMETER));
    EXPECT_TRUE(name.empty());

    // Class names come from the class keys, of whatever length.
    win::WinRegistry registry;
    const std::wstring classes = L"SYSTEM\\CurrentControlSet\\Control\\Class\\";
    const std::wstring longClass = L"{7D2C5E9A-0B1F-4C3A-9E8D-6F5A4B3C2D1E}";
    const std::pair<std::wstring, std::wstring> named[] = {{kBluetoothClass, L"Bluetooth"},
                                                           {longClass, std::wstring(300, L'c')}};
    for (const auto& [guid, className] : named) {
        ASSERT_EQ(registry.Write(platform::RegistryHive::LocalMachine, classes + guid, L"Class",
                                 platform::RegistryData::FromString(className)),
                  0);
        EXPECT_EQ(setup.ClassName(guid, name), 0u);
        EXPECT_EQ(name, className);
    }
    registry.DeleteKey(platform::RegistryHive::LocalMachine, classes + longClass);
}

// The double, loaded as the system library would be.
class WinBluetoothDoubleTest : public ::testing::Test, protected BthDouble {
protected:
    void TearDown() override {
        auto report = Report();
        EXPECT_EQ(report.openHandles, 0u) << "a handle was left open";
        EXPECT_EQ(report.badCloses, 0u);
        EXPECT_EQ(report.badSizes, 0u);
        // The backend keeps the double loaded for the process: leave it bare.
        Configure({});
    }

    win::WinBluetoothClassic bluetooth_{{L"ckbthprops.dll", L"ckbthprops.dll", 0}};
};

// Every radio is found and read, each handle closed once: radios and the
// search as they are dropped; with no radio, the search's error comes back.
// The radio's values are believed no further than the structure: six
// address bytes, a name without its terminator.
TEST_F(WinBluetoothDoubleTest, EveryRadioIsFoundReadAndClosed) {
    CkBthSetup setup{};
    setup.radioCount = 3;
    auto& first = setup.radios[0].info;
    first.address.ullLong = 0x001A7DDA7100ull;
    std::memcpy(first.szName, L"radio 0", sizeof(L"radio 0"));
    first.ulClassofDevice = 0x1C010C;
    first.lmpSubversion = 0x100;
    first.manufacturer = 10;
    auto& unbounded = setup.radios[1].info;
    unbounded.address.ullLong = 0xFFFF00112233AABBull;
    std::fill(std::begin(unbounded.szName), std::end(unbounded.szName), L'n');
    setup.radios[2].infoError = ERROR_DEVICE_NOT_CONNECTED;
    Configure(setup);

    std::vector<std::unique_ptr<BluetoothRadio>> radios;
    uint32_t error = 1;
    radios.emplace_back();
    auto search = bluetooth_.FindFirstRadio(radios.back(), error);
    ASSERT_TRUE(search);
    ASSERT_EQ(error, 0u);
    while (auto next = search->Next(error)) {
        radios.push_back(std::move(next));
    }
    EXPECT_EQ(error, kErrorNoMoreItems);
    ASSERT_EQ(radios.size(), 3u);
    EXPECT_EQ(Report().openHandles, 4u);

    BluetoothRadioInfo info;
    auto values = [&info] {
        return std::tuple(info.address, info.name, info.classOfDevice, info.lmpSubversion,
                          info.manufacturer);
    };
    ASSERT_EQ(radios[0]->Info(info), 0u);
    EXPECT_EQ(values(), std::tuple(0x001A7DDA7100ull, L"radio 0", 0x1C010Cu, 0x100, 10));
    ASSERT_EQ(radios[1]->Info(info), 0u);
    EXPECT_EQ(values(), std::tuple(0x00112233AABBull, std::wstring(248, L'n'), 0u, 0, 0));
    EXPECT_EQ(radios[2]->Info(info), static_cast<uint32_t>(ERROR_DEVICE_NOT_CONNECTED));
    EXPECT_TRUE(info.name.empty());

    search.reset();
    radios[0]->Info(info);
    EXPECT_EQ(info.name, L"radio 0") << "a radio outlives its search";
    radios.clear();

    Configure({});
    std::unique_ptr<BluetoothRadio> none;
    EXPECT_FALSE(bluetooth_.FindFirstRadio(none, error));
    EXPECT_FALSE(none);
    EXPECT_EQ(error, kErrorNoMoreItems);
}

// The control that makes the stack reload the local name: the radio handle,
// the code and both 4-byte buffers reach the driver; its failure comes back.
TEST_F(WinBluetoothDoubleTest, ControlCodesReachTheRadioWithTheirBuffers) {
    CkBthSetup setup{};
    setup.radioCount = 1;
    for (uint32_t failure : {0u, static_cast<uint32_t>(ERROR_NOT_SUPPORTED)}) {
        setup.controlError = failure;
        Configure(setup);
        std::unique_ptr<BluetoothRadio> radio;
        uint32_t error = 1;
        auto search = bluetooth_.FindFirstRadio(radio, error);
        ASSERT_TRUE(radio);
        std::vector<uint8_t> output{9, 9, 9, 9, 9};
        EXPECT_EQ(radio->Control(kReloadLocalName, {4, 0, 0, 0}, output, 4), failure);
        const std::vector<uint8_t> echoed{4, 0, 0, 0};
        EXPECT_EQ(output, failure ? std::vector<uint8_t>() : echoed);
        auto report = Report();
        EXPECT_EQ(report.controlCode, kReloadLocalName);
        EXPECT_EQ(report.controlOutputSize, 4u);
    }
}

// The search's parameters reach the system, the first device comes back and
// its search is closed; with none found, nothing of an earlier answer stays.
TEST_F(WinBluetoothDoubleTest, DeviceInquiryHandsOverItsParametersAndClosesTheSearch) {
    CkBthSetup setup{};
    setup.radioCount = 1;
    setup.deviceFound = 1;
    setup.device.Address.ullLong = 0xFFAABB00112233ull;
    std::memcpy(setup.device.szName, L"phone", sizeof(L"phone"));
    setup.device.ulClassofDevice = 0x5A020C;
    setup.device.fConnected = TRUE;
    setup.device.fRemembered = TRUE;
    Configure(setup);
    platform::BluetoothDeviceSearch search;
    search.returnUnknown = true;
    search.returnConnected = true;
    search.issueInquiry = true;
    search.timeoutMultiplier = 2;
    platform::BluetoothDeviceInfo device;
    ASSERT_EQ(bluetooth_.FindFirstDevice(search, device), 0u);
    EXPECT_EQ(std::tie(device.name, device.address, device.classOfDevice),
              std::tuple(L"phone", 0xAABB00112233ull, 0x5A020Cu));
    EXPECT_TRUE(device.connected && device.remembered && !device.authenticated);
    auto given = Report().lastSearch;
    EXPECT_EQ(given.fReturnAuthenticated + given.fReturnRemembered, 0);
    EXPECT_EQ(given.fReturnUnknown + given.fReturnConnected + given.fIssueInquiry, 3);
    EXPECT_EQ(given.cTimeoutMultiplier, 2);
    EXPECT_EQ(given.hRadio, nullptr);

    setup.deviceFound = 0;
    Configure(setup);
    EXPECT_EQ(bluetooth_.FindFirstDevice(search, device), kErrorNoMoreItems);
    EXPECT_TRUE(device.name.empty());
    EXPECT_EQ(device.address, 0u);
    EXPECT_FALSE(device.connected);
}

}  // namespace
}  // namespace connectkit::test
