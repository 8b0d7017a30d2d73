// The vendor loaders end to end on the Windows backend: the DLL doubles are
// found through the registry, loaded with LoadLibraryW and called through
// GetProcAddress by name and by ordinal. What the library makes of the
// drivers' answers is tested on the simulated PC.

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "DoubleControl.h"
#include "channel/wifi_intel.h"
#include "channel/wifi_realtek.h"
#include "platform/windows/machine/WinFileSystem.h"
#include "platform/windows/machine/WinRegistry.h"
#include "vendordll/CkTestControl.h"

namespace connectkit::test {
namespace {

using ConnectKit::WifiIntelAPI;
using ConnectKit::WifiRealtekAPI;
using platform::RegistryData;
using platform::RegistryHive;

const wchar_t* kIntelKey = L"SOFTWARE\\Intel\\Wireless";
const wchar_t* kProSetValue = L"PROSetBinDir";

std::wstring TestDirectory() {
    return win::WinFileSystem().MainModuleDirectory();
}

CkTestDriverSetup DefaultSetup() {
    CkTestDriverSetup setup{};
    setup.areaCode = 0x4A50;  // "JP"
    const uint8_t channels[] = {1, 6, 11, 36, 40};
    setup.channelCount = sizeof(channels);
    std::memcpy(setup.channels, channels, sizeof(channels));
    setup.realtekInitialisationsBeforeReady = 1;
    return setup;
}

// A vendor double and the entries it was called through, in order.
class Double : public DoubleControl<CkTestDriverSetup, CkTestDriverReport> {
public:
    explicit Double(const std::wstring& path) : DoubleControl(path, kCkTestConfigureName) {}
    std::vector<std::string> Entries() {
        auto report = Report();
        std::vector<std::string> entries;
        for (uint32_t i = 0; i < report.callCount && i < std::size(report.calls); ++i) {
            entries.push_back(report.calls[i].entry);
        }
        return entries;
    }
};

class IntelDriver : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(library_.Ready());
        ASSERT_EQ(registry_.Write(RegistryHive::LocalMachine, kIntelKey, kProSetValue,
                                  RegistryData::FromString(TestDirectory())),
                  0);
    }
    void TearDown() override {
        registry_.DeleteValue(RegistryHive::LocalMachine, kIntelKey, kProSetValue);
    }

    win::WinRegistry registry_;
    Double library_{TestDirectory() + L"murocapi.dll"};
};

// The list claims all ones for its count: the walk stays inside the memory
// LocalSize reports for it (four adapters, the last in use is the third),
// the rest of the bounds are the simulated driver's to show.
TEST_F(IntelDriver, FoundThroughProSetCalledByNameReadWithinItsMemoryAndFreed) {
    auto setup = DefaultSetup();
    setup.adapterCount = 4;
    setup.adapters[0] = {5, 0};
    setup.adapters[1] = {7, 1};
    setup.adapters[2] = {9, 1};
    setup.adapters[3] = {11, 0};
    setup.listCount = {true, 0xFFFFFFFF};
    library_.Configure(setup);

    WifiIntelAPI intel;
    EXPECT_EQ(intel.Status(), WifiIntelAPI::kUsable);
    EXPECT_EQ(WifiIntelAPI::Discovery(), WifiIntelAPI::kProSet);
    EXPECT_EQ(intel.AdapterHandle(), 9);
    _GO_SUPPORTTED_CHANNELS channels{};
    ASSERT_EQ(intel.GetSupportedChannels(&channels), 0);
    EXPECT_EQ(channels.areaCode, 0x4A50);
    ASSERT_EQ(channels.channelCount, 5);
    EXPECT_EQ(channels.channels[3], 36);

    EXPECT_EQ(library_.Entries(),
              (std::vector<std::string>{"WifiGetAdapterList", "WifiPanQuerySupportedChannels"}));
    auto report = library_.Report();
    EXPECT_EQ(report.calls[0].headerSize, 25124u);
    EXPECT_EQ(report.calls[1].headerSize, 4u);
    EXPECT_EQ(report.calls[1].adapter, 9);
    EXPECT_EQ(report.outstandingBuffers, 0u) << "the adapter list was not handed back";
}

// Every ordinal the library uses reaches its entry by number, the
// initialisation and its end included; what the library makes of the
// answers is the simulated driver's to show.
TEST(RealtekDriver, OperationsReachTheirOrdinals) {
    Double library(TestDirectory() + L"RealtekWiFi.dll");
    ASSERT_TRUE(library.Ready());
    library.Configure(DefaultSetup());
    {
        WifiRealtekAPI realtek;
        _GO_SUPPORTTED_CHANNELS channels{};
        _INTEL_GO_PREFERRED_CHANNEL preferred{};
        _GO_OPERATION_CHANNEL_SETTING setting{};
        _WIFI_LEGACY_GO_SCAN_FILTER filter{};
        EXPECT_EQ(realtek.GetSupportedChannels(&channels), 0);
        EXPECT_EQ(channels.channelCount, 5);
        EXPECT_EQ(realtek.SetPreferredChannelSettings(&preferred), 0);
        EXPECT_EQ(realtek.GetPreferredChannelSetting(&setting), 0);
        EXPECT_EQ(realtek.ResetPreferredChannelSettings(), 0);
        EXPECT_EQ(realtek.SetDiscoverFilter(nullptr), 0);
        EXPECT_EQ(realtek.ResetDiscoverFilter(), 0);
        EXPECT_EQ(realtek.SetWifiLegacyGoScanFilter(&filter), 0);
        EXPECT_EQ(realtek.ResetLegacyGoScanFilter(), 0);
    }
    std::vector<std::string> expected{"#76", "#68", "#69", "#71", "#70",
                                      "#74", "#75", "#72", "#73", "#77"};
    EXPECT_EQ(library.Entries(), expected);
}

}  // namespace
}  // namespace connectkit::test
