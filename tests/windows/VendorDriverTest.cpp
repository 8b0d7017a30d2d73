// The vendor loaders end to end on the Windows backend: the DLL doubles are
// found through the registry, loaded with LoadLibraryW and called through
// GetProcAddress by name and by ordinal.

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "channel/wifi_intel.h"
#include "channel/wifi_realtek.h"
#include "platform/windows/core/UniqueHandle.h"
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

std::wstring PartialDirectory() {
    return TestDirectory() + L"vendor-partial\\";
}

CkTestDriverSetup DefaultSetup() {
    CkTestDriverSetup setup{};
    setup.areaCode = 0x4A50;  // "JP"
    const uint8_t channels[] = {1, 6, 11, 36, 40};
    setup.channelCount = sizeof(channels);
    std::memcpy(setup.channels, channels, sizeof(channels));
    setup.adapterCount = 1;
    setup.adapters[0] = {3, 1};
    setup.realtekInitialisationsBeforeReady = 1;
    return setup;
}

// Holds a double loaded for the whole test, so the loader under test gets
// the same module and the setup made here.
class Double {
public:
    explicit Double(const std::wstring& path) : module_(LoadLibraryW(path.c_str())) {
        if (module_) {
            // Through the generic function type: FARPROC's own signature is
            // not the export's.
            configure_ = reinterpret_cast<CkTestConfigureFunction>(
                reinterpret_cast<void (*)()>(GetProcAddress(module_.Get(), kCkTestConfigureName)));
        }
    }

    bool Ready() const { return configure_ != nullptr; }
    int Configure(const CkTestDriverSetup& setup) { return configure_(&setup, nullptr); }
    CkTestDriverReport Report() {
        CkTestDriverReport report{};
        configure_(nullptr, &report);
        return report;
    }
    std::vector<std::string> Entries() {
        auto report = Report();
        std::vector<std::string> entries;
        for (uint32_t i = 0; i < report.callCount && i < std::size(report.calls); ++i) {
            entries.push_back(report.calls[i].entry);
        }
        return entries;
    }

private:
    win::LoadedModule module_;
    CkTestConfigureFunction configure_ = nullptr;
};

size_t Count(const std::vector<std::string>& entries, const std::string& entry) {
    return static_cast<size_t>(std::count(entries.begin(), entries.end(), entry));
}

class IntelDriver : public testing::Test {
protected:
    void SetUp() override {
        registry_.DeleteValue(RegistryHive::LocalMachine, kIntelKey, kProSetValue);
        ASSERT_TRUE(library_.Ready());
        ASSERT_EQ(library_.Configure(DefaultSetup()), 0);
    }
    void TearDown() override {
        registry_.DeleteValue(RegistryHive::LocalMachine, kIntelKey, kProSetValue);
    }
    void PointProSetAt(const std::wstring& directory) {
        ASSERT_EQ(registry_.Write(RegistryHive::LocalMachine, kIntelKey, kProSetValue,
                                  RegistryData::FromString(directory)),
                  0);
    }

    win::WinRegistry registry_;
    Double library_{TestDirectory() + L"murocapi.dll"};
};

TEST_F(IntelDriver, FoundThroughProSetCalledByNameAndTheListFreed) {
    PointProSetAt(TestDirectory());

    WifiIntelAPI intel;
    EXPECT_EQ(intel.Status(), WifiIntelAPI::kUsable);
    EXPECT_EQ(WifiIntelAPI::Discovery(), WifiIntelAPI::kProSet);
    EXPECT_EQ(intel.AdapterHandle(), 3);
    _GO_SUPPORTTED_CHANNELS channels{};
    ASSERT_EQ(intel.GetSupportedChannels(&channels), 0);
    EXPECT_EQ(channels.areaCode, 0x4A50);
    ASSERT_EQ(channels.channelCount, 5);
    EXPECT_EQ(channels.channels[3], 36);

    auto report = library_.Report();
    ASSERT_EQ(report.callCount, 2u);
    EXPECT_STREQ(report.calls[0].entry, "WifiGetAdapterList");
    EXPECT_EQ(report.calls[0].headerSize, 25124u);
    EXPECT_STREQ(report.calls[1].entry, "WifiPanQuerySupportedChannels");
    EXPECT_EQ(report.calls[1].headerSize, 4u);
    EXPECT_EQ(report.calls[1].adapter, 3);
    EXPECT_EQ(report.outstandingBuffers, 0u) << "the adapter list was not handed back";
}

TEST_F(IntelDriver, DirectoryWithoutTrailingBackslashCannotBeLoaded) {
    std::wstring directory = TestDirectory();
    directory.pop_back();
    PointProSetAt(directory);

    WifiIntelAPI intel;
    EXPECT_EQ(intel.Status(), WifiIntelAPI::kLoadFailed);
    EXPECT_EQ(intel.AdapterHandle(), -1);
    _GO_SUPPORTTED_CHANNELS channels{};
    EXPECT_EQ(intel.GetSupportedChannels(&channels), -1);
    EXPECT_TRUE(library_.Entries().empty());
}

TEST_F(IntelDriver, NoProSetValueAndNoLibraryAtTheDefaultPath) {
    ASSERT_FALSE(win::WinFileSystem().Exists(L"C:\\Program Files\\Intel\\WiFi\\bin\\MurocApi.dll"));
    WifiIntelAPI intel;
    EXPECT_EQ(intel.Status(), WifiIntelAPI::kNoDirectory);
    EXPECT_EQ(intel.AdapterHandle(), -1);
}

TEST_F(IntelDriver, LibraryLackingEntryPointsStillServesTheOthers) {
    Double partial(PartialDirectory() + L"murocapi.dll");
    ASSERT_TRUE(partial.Ready());
    ASSERT_EQ(partial.Configure(DefaultSetup()), 0);
    PointProSetAt(PartialDirectory());

    WifiIntelAPI intel;
    EXPECT_EQ(intel.Status(), WifiIntelAPI::kNoPreferredQuery);
    EXPECT_EQ(intel.AdapterHandle(), 3);
    _GO_OPERATION_CHANNEL_SETTING setting{};
    EXPECT_EQ(intel.GetPreferredChannelSetting(&setting), WifiIntelAPI::kNoPreferredQuery);
    _WIFI_LEGACY_GO_SCAN_FILTER filter{};
    EXPECT_EQ(intel.SetWifiLegacyGoScanFilter(&filter), -1);
    _GO_SUPPORTTED_CHANNELS channels{};
    EXPECT_EQ(intel.GetSupportedChannels(&channels), 0);
    EXPECT_EQ(intel.ResetLegacyGoScanFilter(), 0);

    auto entries = partial.Entries();
    EXPECT_EQ(Count(entries, "WifiPanQueryPreferredChannelSetting"), 0u);
    EXPECT_EQ(Count(entries, "WifiPanQuerySupportedChannels"), 1u);
    EXPECT_TRUE(library_.Entries().empty());
}

TEST(RealtekDriver, AnEmptyAnswerIsRetriedAfterAReinitialisation) {
    Double library(TestDirectory() + L"RealtekWiFi.dll");
    ASSERT_TRUE(library.Ready());
    auto setup = DefaultSetup();
    setup.realtekInitialisationsBeforeReady = 2;
    ASSERT_EQ(library.Configure(setup), 0);
    {
        WifiRealtekAPI realtek;
        _GO_SUPPORTTED_CHANNELS channels{};
        auto started = std::chrono::steady_clock::now();
        EXPECT_EQ(realtek.GetSupportedChannels(&channels), 0);
        EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(200));
        EXPECT_EQ(channels.channelCount, 5);
        EXPECT_EQ(realtek.ReinitialisationCount(), 1u);
        EXPECT_EQ(Count(library.Entries(), "#68"), 2u);
        EXPECT_EQ(library.Report().realtekInitialisations, 2u);
    }
    EXPECT_EQ(library.Report().realtekDeinitialisations, 2u);
}

TEST(RealtekDriver, OperationsReachTheirOrdinals) {
    Double library(TestDirectory() + L"RealtekWiFi.dll");
    ASSERT_TRUE(library.Ready());
    ASSERT_EQ(library.Configure(DefaultSetup()), 0);
    WifiRealtekAPI realtek;

    _INTEL_GO_PREFERRED_CHANNEL preferred{};
    preferred.channelCount = 1;
    preferred.entries[0].channel = 40;
    EXPECT_EQ(realtek.SetPreferredChannelSettings(&preferred), 0);
    _GO_OPERATION_CHANNEL_SETTING setting{};
    EXPECT_EQ(realtek.GetPreferredChannelSetting(&setting), 0);
    EXPECT_EQ(setting.channel, 40u);
    EXPECT_EQ(realtek.ResetPreferredChannelSettings(), 0);
    EXPECT_EQ(realtek.SetDiscoverFilter(nullptr), 0);
    EXPECT_EQ(realtek.ResetDiscoverFilter(), 0);

    std::vector<std::string> expected{"#76", "#69", "#71", "#70", "#74", "#75"};
    EXPECT_EQ(library.Entries(), expected);
}

// LoadLibraryW by bare name returns a module of that name already loaded,
// so holding the partial double makes it the one the driver class binds to.
TEST(RealtekDriver, MissingOrdinalFailsOnlyItsOperation) {
    Double partial(PartialDirectory() + L"RealtekWiFi.dll");
    ASSERT_TRUE(partial.Ready());
    ASSERT_EQ(partial.Configure(DefaultSetup()), 0);
    WifiRealtekAPI realtek;

    _WIFI_LEGACY_GO_SCAN_FILTER filter{};
    EXPECT_EQ(realtek.SetWifiLegacyGoScanFilter(&filter), -1);
    EXPECT_EQ(realtek.ResetLegacyGoScanFilter(), 0);
    _GO_SUPPORTTED_CHANNELS channels{};
    EXPECT_EQ(realtek.GetSupportedChannels(&channels), 0);
    EXPECT_EQ(channels.channelCount, 5);

    std::vector<std::string> expected{"#76", "#73", "#68"};
    EXPECT_EQ(partial.Entries(), expected);
}

}  // namespace
}  // namespace connectkit::test
