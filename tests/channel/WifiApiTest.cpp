#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "channel/wifi_intel.h"
#include "channel/wifi_realtek.h"
#include "connectkit/WifiAPI.h"
#include "platform/sim/wificard/SimWifiCard.h"
#include "support/LogCapture.h"
#include "support/SimWorld.h"

namespace ConnectKit {
// Builds facades afresh, each deciding on the card anew.
class WifiAPIInspector {
public:
    static std::unique_ptr<WifiAPI, void (*)(WifiAPI*)> Fresh() {
        return {new WifiAPI(), [](WifiAPI* api) { delete api; }};
    }
    static IWifiInterface* Implementation(WifiAPI& api) { return api.mWifiInterface; }
};
}  // namespace ConnectKit

namespace connectkit::test {
namespace {

using ConnectKit::WifiIntelAPI;
using ConnectKit::WifiRealtekAPI;
using Config = sim::SimWifiCardConfig;

// The structures every driver operation is handed, zeroed.
struct Buffers {
    _GO_SUPPORTTED_CHANNELS channels{};
    _INTEL_GO_PREFERRED_CHANNEL preferred{};
    _GO_OPERATION_CHANNEL_SETTING setting{};
    _WIFI_DISCOVER_FILTER discover{};
    _WIFI_LEGACY_GO_SCAN_FILTER scan{};
};

struct Operation {
    std::wstring name;
    std::function<int()> call;
};

// Every driver operation, on a vendor API or the facade.
template <class Driver>
std::vector<Operation> Operations(Driver& d, Buffers& b) {
    return {
        {L"GetSupportedChannels", [&] { return d.GetSupportedChannels(&b.channels); }},
        {L"SetPreferredChannelSettings",
         [&] { return d.SetPreferredChannelSettings(&b.preferred); }},
        {L"ResetPreferredChannelSettings", [&] { return d.ResetPreferredChannelSettings(); }},
        {L"GetPreferredChannelSetting", [&] { return d.GetPreferredChannelSetting(&b.setting); }},
        {L"SetWifiLegacyGoScanFilter", [&] { return d.SetWifiLegacyGoScanFilter(&b.scan); }},
        {L"ResetLegacyGoScanFilter", [&] { return d.ResetLegacyGoScanFilter(); }},
        {L"SetDiscoverFilter", [&] { return d.SetDiscoverFilter(&b.discover); }},
        {L"ResetDiscoverFilter", [&] { return d.ResetDiscoverFilter(); }},
    };
}

class WifiDriverTest : public SimTest {
protected:
    void Use(const Config& card) {
        sim::Scenario scenario;
        scenario.wifiCard = card;
        pc().Apply(scenario);
    }
    static Config Intel(Config::Intel::Discovery discovery) {
        Config card;
        card.maker = Config::Maker::Intel;
        card.intel.discovery = discovery;
        card.intel.adapters = {{11, true}, {12, false}, {13, true}, {14, false}};
        return card;
    }
    static std::vector<sim::SimDriverLog::Call> CallsOf(const std::string& entry) {
        std::vector<sim::SimDriverLog::Call> calls;
        for (const auto& call : sim::DriverLog().calls) {
            if (call.entry == entry) {
                calls.push_back(call);
            }
        }
        return calls;
    }
};

// Through ProSet the last adapter in use is taken and the list freed.
TEST_F(WifiDriverTest, EachDiscoveryTakesItsAdapterAndSizesItsRequests) {
    Use(Intel(Config::Intel::Discovery::ProSet));
    WifiIntelAPI intel;
    EXPECT_EQ(WifiIntelAPI::Discovery(), WifiIntelAPI::kProSet);
    Buffers buffers;
    for (const auto& operation : Operations(intel, buffers)) {
        EXPECT_EQ(operation.call(), 0) << operation.name;
    }
    EXPECT_EQ(buffers.channels.areaCode, 0x5553);
    EXPECT_EQ(buffers.channels.channelCount, 12);
    EXPECT_EQ(buffers.channels.channels[11], 165);

    // Every request carries its own size word and the adapter in use.
    std::map<std::string, uint32_t> sizes;
    for (const auto& call : sim::DriverLog().calls) {
        sizes[call.entry] = call.headerSize;
        if (call.entry != "WifiGetAdapterList") {
            EXPECT_EQ(call.adapter, 13) << call.entry;
        }
    }
    EXPECT_EQ(sizes, (std::map<std::string, uint32_t>{{"WifiGetAdapterList", 25124},
                                                      {"WifiPanQuerySupportedChannels", 4},
                                                      {"WifiPanSetPreferredChannelSettings", 532},
                                                      {"WifiPanQueryPreferredChannelSetting", 16},
                                                      {"WifiPanSetDiscoveryFilter", 1160},
                                                      {"WifiPanResetPreferredChannelSettings", 0},
                                                      {"WifiPanReSetDiscoveryFilter", 0},
                                                      {"WifiLegacyGoSetScanFilter", 44},
                                                      {"WifiPanReSetLegacyGoScanFilter", 44}}));

    // Through the platform device the first adapter is taken, the list is
    // left to the library, and channel queries carry a larger header.
    auto card = Intel(Config::Intel::Discovery::Pie);
    card.intel.directory = L"C:\\Windows\\System32\\DriverStore\\FileRepository\\pie";
    Use(card);
    LogCapture capture;
    WifiIntelAPI pie;
    EXPECT_EQ(pie.AdapterHandle(), 11);
    EXPECT_TRUE(capture.Contains(L"[WifiIntelAPI][error]get pie path success"));
    EXPECT_EQ(WifiIntelAPI::Discovery(), WifiIntelAPI::kPlatformIntegration);
    EXPECT_EQ(sim::DriverLog().outstandingBuffers, 1u);
    ASSERT_EQ(pie.GetSupportedChannels(&buffers.channels), 0);
    EXPECT_EQ(CallsOf("WifiPanQuerySupportedChannels").at(0).headerSize, 258u);
}

// Each card changes the fixture's ProSet card. A driver's adapter list may
// claim more entries than it holds: only the entries inside both the memory
// handed out and the 25,124 bytes asked for are read.
TEST_F(WifiDriverTest, IntelDiscoveryTakesTheAdapterInUseOrSaysWhyNot) {
    using Discovery = Config::Intel::Discovery;
    struct Card {
        std::function<void(Config&)> change;
        int status;
        int handle;
        const wchar_t* logged;
        const char* fault = nullptr;
    };
    auto pie = [](Config& card) { card.intel.discovery = Discovery::Pie; };
    const Card cards[] = {
        {[](auto&) {}, 0, 13, L"[WifiIntelAPI][error]get adapter handle 13"},
        {[](auto& card) { card.intel.directory = L"C:\\Program Files\\Intel\\WiFi\\bin"; },
         WifiIntelAPI::kLoadFailed, -1,
         L"LoadLibrary from <C:\\Program Files\\Intel\\WiFi\\binmurocapi.dll> failed - 1"},
        {[](auto& card) {
             card.intel.discovery = Discovery::None, card.intel.libraryAtDefaultPath = true;
         },
         WifiIntelAPI::kDirectoryMissingButLibraryPresent, -1,
         L"MurocApi.dll exist, registry error"},
        {[](auto& card) { card.intel.discovery = Discovery::None; }, WifiIntelAPI::kNoDirectory, -1,
         L"[WifiIntelAPI][error]MurocApi.dll do not exist"},
        {[](auto& card) {
             card.intel.adapters = {{5, false}};
         },
         WifiIntelAPI::kNoAdapter, -1, L"get adapter error, free library"},
        // Either call of the device listing can fail, and the line says which.
        {pie, WifiIntelAPI::kDirectoryMissingButLibraryPresent, -1,
         L"GetAllDeviceList CM_Get_Device_ID_List_Size return Value of 52", "devices.listSize"},
        {pie, WifiIntelAPI::kDirectoryMissingButLibraryPresent, -1,
         L"GetAllDeviceList CM_Get_Device_ID_List return Value of 52", "devices.list"},
        {[](auto& card) { card.intel.listCount = 64, card.intel.listBytes = 25124; }, 0, 13,
         L"adapter list of 25124 bytes claims 64 adapters; reading 20"},
        {[](auto& card) { card.intel.listCount = 0xFFFFFFFF; }, 0, 13,
         L"adapter list of 5028 bytes claims 4294967295 adapters; reading 4"},
        {[](auto& card) {
             card.intel.adapters.assign(20, {119, true}),
                 card.intel.adapters.push_back({120, true});
         },
         0, 119, L"adapter list of 25124 bytes claims 21 adapters; reading 20"},
        {[](auto& card) { card.intel.listBytes = 3748; }, 0, 13,
         L"adapter list of 3748 bytes claims 4 adapters; reading 3"},
        {[](auto& card) { card.intel.listBytes = 2; }, WifiIntelAPI::kNoAdapter, -1,
         L"adapter list of 2 bytes holds no count"},
        {[&pie](auto& card) { pie(card), card.intel.listBytes = 4; }, WifiIntelAPI::kNoAdapter, -1,
         L"adapter list of 4 bytes claims 4 adapters; reading 0"},
    };
    for (const auto& c : cards) {
        SCOPED_TRACE(testing::Message() << c.logged);
        auto card = Intel(Discovery::ProSet);
        c.change(card);
        Use(card);
        if (c.fault) {
            pc().faults().Add({c.fault, sim::FaultAction::Fail, 0, 1, 0, 0});
        }
        LogCapture capture;
        size_t listsBefore = sim::DriverLog().outstandingBuffers;
        WifiIntelAPI intel;
        EXPECT_EQ(intel.Status(), c.status);
        EXPECT_EQ(intel.AdapterHandle(), c.handle);
        EXPECT_EQ(capture.Count(c.logged), 1u);
        EXPECT_EQ(capture.Count(L"GetAllDeviceList"), c.fault ? 1u : 0u);
        if (card.intel.discovery == Discovery::ProSet) {
            EXPECT_EQ(sim::DriverLog().outstandingBuffers, listsBefore);
        }
        if (c.handle != -1) {
            continue;
        }
        // Without an adapter in use the library is unloaded again. Every
        // operation loads it once more, which mends a passing fault only.
        EXPECT_EQ(pc().loader().OpenLibraries(), 0u);
        Buffers buffers;
        for (const auto& operation : Operations(intel, buffers)) {
            EXPECT_EQ(operation.call() == 0, c.fault != nullptr) << operation.name;
        }
        EXPECT_TRUE(capture.Contains(L"[WifiIntelAPI][error]reload murocapi.dll"));
    }
}

TEST_F(WifiDriverTest, IntelPreferredChannelQueryIsRetriedExactlyOnce) {
    auto card = Intel(Config::Intel::Discovery::ProSet);
    // Failures in a row and the answer: one is mended by the retry.
    const std::pair<uint32_t, int> cases[] = {{1, 0}, {5, WifiIntelAPI::kPreferredQueryFailed}};
    for (const auto& [failures, result] : cases) {
        card.intel.failures["WifiPanQueryPreferredChannelSetting"] = failures;
        Use(card);
        WifiIntelAPI intel;
        _GO_OPERATION_CHANNEL_SETTING setting{};
        EXPECT_EQ(intel.GetPreferredChannelSetting(&setting), result);
        EXPECT_EQ(CallsOf("WifiPanQueryPreferredChannelSetting").size(), 2u);
        EXPECT_EQ(intel.Status(), result);
    }
}

TEST_F(WifiDriverTest, IntelMissingEntryPointsFailTheirOperations) {
    LogCapture capture;
    auto card = Intel(Config::Intel::Discovery::ProSet);
    card.intel.missingExports = {"WifiPanQueryPreferredChannelSetting", "WifiLegacyGoSetScanFilter",
                                 "WifiPanReSetLegacyGoScanFilter"};
    Use(card);
    WifiIntelAPI intel;
    EXPECT_EQ(intel.Status(), WifiIntelAPI::kNoPreferredQuery);
    _GO_OPERATION_CHANNEL_SETTING setting{};
    EXPECT_EQ(intel.GetPreferredChannelSetting(&setting), WifiIntelAPI::kNoPreferredQuery);
    _WIFI_LEGACY_GO_SCAN_FILTER scan{};
    EXPECT_EQ(intel.SetWifiLegacyGoScanFilter(&scan), -1);
    EXPECT_EQ(intel.ResetLegacyGoScanFilter(), -1);
    EXPECT_TRUE(
        capture.Contains(L"[WifiIntelAPI][error]get WifiPanQueryPreferredChannelSetting error"));
    EXPECT_TRUE(capture.Contains(
        L"ConnectKit::WifiIntelAPI::SetWifiLegacyGoScanFilter GetProcAddress fail\n"));
    EXPECT_TRUE(capture.Contains(L"get WifiPanReSetLegacyGoScanFilter error"));
}

// An empty answer costs a re-initialisation and 200 ms, every time.
TEST_F(WifiDriverTest, RealtekReinitialisesPerEmptyAnswerAndMapsFailures) {
    Config card;
    card.maker = Config::Maker::Realtek;
    card.realtek.initialisationsBeforeReady = 3;
    Use(card);
    WifiRealtekAPI realtek;
    _GO_SUPPORTTED_CHANNELS channels{};
    uint64_t before = pc().clock().TickCount64();
    EXPECT_EQ(realtek.GetSupportedChannels(&channels), 0);
    EXPECT_EQ(channels.channelCount, 0);
    EXPECT_EQ(pc().clock().TickCount64() - before, 200u);
    EXPECT_EQ(realtek.ReinitialisationCount(), 1u);
    EXPECT_EQ(realtek.GetSupportedChannels(&channels), 0);
    EXPECT_EQ(channels.channelCount, 12);
    EXPECT_EQ(realtek.ReinitialisationCount(), 2u);
    EXPECT_EQ(realtek.GetSupportedChannels(&channels), 0);
    EXPECT_EQ(realtek.ReinitialisationCount(), 0u);
    auto log = sim::DriverLog();
    EXPECT_EQ(log.realtekInitialisations, 3u);
    EXPECT_EQ(log.realtekDeinitialisations, 2u);
    EXPECT_EQ(CallsOf("#68").size(), 5u);

    // A card not ready yet fails the preferred query with its own code; a
    // missing ordinal fails its operation alone.
    LogCapture capture;
    card.realtek.initialisationsBeforeReady = 5;
    card.realtek.missingOrdinals = {72};
    Use(card);
    WifiRealtekAPI failing;
    _GO_OPERATION_CHANNEL_SETTING setting{};
    EXPECT_EQ(failing.GetPreferredChannelSetting(&setting), -74);
    _WIFI_LEGACY_GO_SCAN_FILTER scan{};
    EXPECT_EQ(failing.SetWifiLegacyGoScanFilter(&scan), -1);
    EXPECT_TRUE(capture.Contains(L"[WifiRealtekAPI] RealtekWiFi.dll has no ordinal 72"));
    EXPECT_TRUE(capture.Contains(L"[WifiRealtekAPI] end Initialize ret = 0 "));
}

TEST_F(WifiDriverTest, TheFacadeFollowsTheCardsMakerAndStopsPlatformExceptions) {
    LogCapture capture;
    Use(Intel(Config::Intel::Discovery::ProSet));
    auto intel = ConnectKit::WifiAPIInspector::Fresh();
    EXPECT_NE(dynamic_cast<WifiIntelAPI*>(ConnectKit::WifiAPIInspector::Implementation(*intel)),
              nullptr);
    _GO_SUPPORTTED_CHANNELS channels{};
    EXPECT_EQ(intel->GetSupportedChannels(&channels), 0);

    Config other;
    other.maker = Config::Maker::Other;
    Use(other);
    auto none = ConnectKit::WifiAPIInspector::Fresh();
    EXPECT_TRUE(capture.Contains(L"[WifiAPI] WifiInterface allocation failed"));
    Buffers buffers;
    for (const auto& operation : Operations(*none, buffers)) {
        EXPECT_EQ(operation.call(), -1) << operation.name;
        EXPECT_EQ(capture.Count(L"[WifiAPI] " + operation.name + L" mWifiInterface is null"), 1u)
            << operation.name;
    }

    // A platform exception stops at the facade, made or called.
    auto card = Intel(Config::Intel::Discovery::ProSet);
    Use(card);
    pc().faults().Add({"loader.load", sim::FaultAction::Throw, 0, 1, 0, 0});
    std::unique_ptr<ConnectKit::WifiAPI, void (*)(ConnectKit::WifiAPI*)> api{nullptr, nullptr};
    ASSERT_NO_THROW(api = ConnectKit::WifiAPIInspector::Fresh());
    EXPECT_EQ(ConnectKit::WifiAPIInspector::Implementation(*api), nullptr);
    EXPECT_TRUE(capture.Contains(L"ConnectKit::WifiAPI::WifiAPI catch unknown exception"));

    card.intel.discovery = Config::Intel::Discovery::None;
    Use(card);
    auto reloading = ConnectKit::WifiAPIInspector::Fresh();
    pc().faults().Add({"registry.read", sim::FaultAction::Throw, 0, 1, 0, 0});
    int result = 0;
    ASSERT_NO_THROW(result = reloading->GetSupportedChannels(&channels));
    EXPECT_EQ(result, -1);
    EXPECT_TRUE(
        capture.Contains(L"ConnectKit::WifiAPI::GetSupportedChannels catch unknown exception"));
}

}  // namespace
}  // namespace connectkit::test
