// Native Wi-Fi on the Windows backend: against Wine's own wlanapi, which
// has no WLAN service behind it, and against the wlanapi double, which
// hands out memory that ends where it ends and counts what is not freed.

#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>
#include <stdexcept>
#include <string>
#include <vector>

#include "connectkit/WifiNetworkService.h"
#include "platform/ports/Errors.h"
#include "platform/ports/WlanRecords.h"
#include "platform/windows/core/SystemLibrary.h"
#include "platform/windows/wlan/WinWlan.h"
#include "platform/windows/wlan/WlanStructures.h"
#include "wlan/CkWlanControl.h"

namespace connectkit::test {
namespace {

using platform::WlanHandle;

const platform::Guid kInterface{0x1D6A3E20, 0x4B51, 0x4C3F, {1, 2, 3, 4, 5, 6, 7, 8}};

platform::Dot11Ssid Ssid(const std::string& text) {
    platform::Dot11Ssid ssid;
    ssid.length = static_cast<uint32_t>(text.size());
    std::memcpy(ssid.bytes.data(), text.data(), std::min(text.size(), ssid.bytes.size()));
    return ssid;
}

// Wine exports the scan, BSS list, query and connect calls as stubs that
// raise an exception: the library never gets that far without an interface.
TEST(WinWlanOnWine, NoInterfaceNoNotificationsAndMissingLibrariesAreReported) {
    win::WinWlan wlan;
    uint32_t negotiated = 0;
    WlanHandle handle = nullptr;
    ASSERT_EQ(wlan.OpenHandle(platform::kWlanClientVersion, negotiated, handle), 0u);
    std::vector<platform::WlanInterfaceInfo> interfaces{{}};
    EXPECT_EQ(wlan.EnumInterfaces(handle, interfaces), 0u);
    EXPECT_TRUE(interfaces.empty());
    EXPECT_EQ(wlan.RegisterNotification(handle, platform::kWlanSourceAll, true, nullptr, nullptr,
                                        nullptr),
              platform::kErrorCallNotImplemented);
    EXPECT_EQ(wlan.CloseHandle(handle), 0u);
    EXPECT_EQ(wlan.CloseHandle(handle), static_cast<uint32_t>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(wlan.Disconnect(handle, kInterface), static_cast<uint32_t>(ERROR_INVALID_HANDLE));

    struct Case {
        win::LibrarySource library;
        uint32_t error;
    } cases[] = {{{L"ckwlanapi.dll"}, platform::kErrorModNotFound},
                 {{L"connectkit-missing-wlanapi.dll", 0}, platform::kErrorModNotFound},
                 {{L"ckprobe.dll", 0}, static_cast<uint32_t>(ERROR_PROC_NOT_FOUND)}};
    for (const auto& test : cases) {
        win::WinWlan missing(test.library);
        handle = reinterpret_cast<WlanHandle>(1);
        EXPECT_EQ(missing.OpenHandle(platform::kWlanClientVersion, negotiated, handle), test.error);
        EXPECT_EQ(handle, nullptr);
    }
}

// What a registration receives; the double joins the thread it calls on.
struct Received {
    std::vector<platform::WlanNotification> notifications;
    bool throwOnNext = false;

    static void Record(platform::WlanNotification* notification, void* context) {
        auto& self = *static_cast<Received*>(context);
        self.notifications.push_back(*notification);
        if (std::exchange(self.throwOnNext, false)) {
            throw std::runtime_error("a host's handler fails");
        }
    }
};

class WinWlanDoubleTest : public testing::Test {
protected:
    void SetUp() override {
        uint32_t error = 0;
        const win::SystemLibraryLoader loader(L"[test]", error);
        ASSERT_TRUE(loader.Load(L"ckwlanapi.dll", 0, module_) &&
                    loader.Resolve(module_.Get(), kCkWlanConfigureName, configure_) &&
                    loader.Resolve(module_.Get(), kCkWlanNotifyName, notify_));
        Configure({});
        openBefore_ = Report().openHandles;
        uint32_t negotiated = 0;
        ASSERT_EQ(wlan_.OpenHandle(platform::kWlanClientVersion, negotiated, handle_), 0u);
        EXPECT_EQ(negotiated, 2u);
    }
    void TearDown() override {
        EXPECT_EQ(wlan_.CloseHandle(handle_), 0u);
        const CkWlanReport report = Report();
        EXPECT_EQ(report.openHandles, openBefore_) << "the client handle was left open";
        EXPECT_EQ(report.outstandingAllocations, 0u) << "WlanFreeMemory was not called";
        EXPECT_EQ(report.badFrees, 0u);
        EXPECT_EQ(report.badHandles, 0u);
    }

    void Configure(const CkWlanSetup& setup) { ASSERT_EQ(configure_(&setup, nullptr), 0); }
    CkWlanReport Report() {
        CkWlanReport report{};
        configure_(nullptr, &report);
        return report;
    }

    win::LoadedModule module_;
    CkWlanConfigureFunction configure_ = nullptr;
    CkWlanNotifyFunction notify_ = nullptr;
    win::WinWlan wlan_{{L"ckwlanapi.dll", 0}};
    WlanHandle handle_ = nullptr;
    uint32_t openBefore_ = 0;
};

TEST_F(WinWlanDoubleTest, InterfacesAndBssListsAreReadWithinWhatWlanapiGave) {
    CkWlanSetup setup{};
    setup.interfaceCount = 2;
    setup.interfaces[0].InterfaceGuid = win::ToWin(kInterface);
    // A description that fills its field without a terminator.
    std::fill(std::begin(setup.interfaces[0].strInterfaceDescription),
              std::end(setup.interfaces[0].strInterfaceDescription), L'D');
    setup.interfaces[0].isState = wlan_interface_state_connected;
    std::wcscpy(setup.interfaces[1].strInterfaceDescription, L"Intel(R) Wi-Fi 6 AX201 160MHz");
    setup.bssCount = 2;
    setup.bssClaimed = 40;  // more than the list's total size holds
    for (int i = 0; i < 2; ++i) {
        auto& entry = setup.bss[i];
        entry.dot11Ssid.uSSIDLength = i == 0 ? 5 : 40;  // the second claims past its field
        std::memcpy(entry.dot11Ssid.ucSSID, "phone", 5);
        entry.dot11Bssid[5] = static_cast<UCHAR>(0xA0 + i);
        entry.dot11BssType = dot11_BSS_type_infrastructure;
        entry.lRssi = -40 - i;
        entry.uLinkQuality = 90;
        entry.ulChCenterFrequency = 5180000;
    }
    Configure(setup);

    std::vector<platform::WlanInterfaceInfo> interfaces;
    ASSERT_EQ(wlan_.EnumInterfaces(handle_, interfaces), 0u);
    ASSERT_EQ(interfaces.size(), 2u);
    EXPECT_EQ(interfaces[0].guid, kInterface);
    EXPECT_EQ(interfaces[0].description, std::wstring(256, L'D'));
    EXPECT_EQ(interfaces[0].state, platform::WlanInterfaceState::Connected);
    EXPECT_EQ(interfaces[1].description, L"Intel(R) Wi-Fi 6 AX201 160MHz");

    std::vector<platform::WlanBssEntry> entries;
    ASSERT_EQ(wlan_.GetNetworkBssList(handle_, kInterface, Ssid("phone"),
                                      platform::Dot11BssType::Any, true, entries),
              0u);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].ssid.length, 5u);
    EXPECT_EQ(entries[1].ssid.length, 40u);
    EXPECT_EQ(entries[1].bssid[5], 0xA1);
    EXPECT_EQ(entries[1].rssi, -41);
    EXPECT_EQ(entries[0].centerFrequencyKhz, 5180000u);
}

TEST_F(WinWlanDoubleTest, QueryAnswersShorterThanTheirStructureAreRefused) {
    CkWlanSetup setup{};
    setup.connection.isState = wlan_interface_state_connected;
    setup.connection.wlanConnectionMode = wlan_connection_mode_temporary_profile;
    std::fill(std::begin(setup.connection.strProfileName),
              std::end(setup.connection.strProfileName), L'p');
    setup.connection.wlanAssociationAttributes.dot11Ssid.uSSIDLength = 5;
    setup.connection.wlanAssociationAttributes.dot11Bssid[0] = 0x02;
    setup.connection.wlanAssociationAttributes.wlanSignalQuality = 77;
    setup.connection.wlanSecurityAttributes.bSecurityEnabled = TRUE;
    setup.channel = 149;
    setup.rssi = -52;
    Configure(setup);

    platform::WlanInterfaceAnswer answer;
    ASSERT_EQ(wlan_.QueryInterface(handle_, kInterface, platform::WlanIntfOpcode::CurrentConnection,
                                   answer),
              0u);
    EXPECT_EQ(answer.connection.state, platform::WlanInterfaceState::Connected);
    EXPECT_EQ(answer.connection.mode, platform::WlanConnectionMode::TemporaryProfile);
    EXPECT_EQ(answer.connection.profileName, std::wstring(256, L'p'));
    EXPECT_EQ(answer.connection.ssid.length, 5u);
    EXPECT_EQ(answer.connection.bssid[0], 0x02);
    EXPECT_EQ(answer.connection.signalQuality, 77u);
    EXPECT_TRUE(answer.connection.securityEnabled);
    ASSERT_EQ(
        wlan_.QueryInterface(handle_, kInterface, platform::WlanIntfOpcode::ChannelNumber, answer),
        0u);
    EXPECT_EQ(answer.channel, 149u);
    ASSERT_EQ(wlan_.QueryInterface(handle_, kInterface, platform::WlanIntfOpcode::Rssi, answer),
              0u);
    EXPECT_EQ(answer.rssi, -52);

    setup.connectionBytes = sizeof(WLAN_CONNECTION_ATTRIBUTES) - 4;
    Configure(setup);
    EXPECT_EQ(wlan_.QueryInterface(handle_, kInterface, platform::WlanIntfOpcode::CurrentConnection,
                                   answer),
              static_cast<uint32_t>(ERROR_INVALID_DATA));
    EXPECT_TRUE(answer.connection.profileName.empty());
}

// The list the Wi-Fi service hands over (no entry counted) is the last
// test's; this one counts its entry.
TEST_F(WinWlanDoubleTest, ConnectionParametersReachWlanapiWithTheirBssidList) {
    const platform::MacAddress first{0x02, 0x11, 0x22, 0x33, 0x44, 0x55};
    platform::Dot11BssidList one;
    one.headerType = 0x80;
    one.headerRevision = 1;
    one.headerSize = 4;
    one.numberOfEntries = 1;
    one.totalNumberOfEntries = 1;
    one.entries = {first};
    platform::Dot11BssidList overclaiming = one;
    overclaiming.numberOfEntries = 2;

    struct Case {
        std::optional<platform::Dot11BssidList> list;
        std::optional<platform::Dot11Ssid> ssid;
        uint32_t result;
    } cases[] = {
        {std::nullopt, std::nullopt, 0},
        {one, Ssid("phone"), 0},
        {overclaiming, std::nullopt, static_cast<uint32_t>(ERROR_INVALID_PARAMETER)},
        {std::nullopt, Ssid(std::string(33, 'x')), static_cast<uint32_t>(ERROR_INVALID_PARAMETER)},
    };
    for (const auto& test : cases) {
        Configure({});
        platform::WlanConnectionParameters parameters;
        parameters.mode = platform::WlanConnectionMode::TemporaryProfile;
        parameters.profile = L"<?xml version=\"1.0\" encoding=\"us-ascii\"?><WLANProfile/>";
        parameters.ssid = test.ssid;
        parameters.desiredBssids = test.list;
        parameters.bssType = platform::Dot11BssType::Any;
        parameters.flags = 0x10;
        EXPECT_EQ(wlan_.Connect(handle_, kInterface, parameters), test.result);
        const CkWlanReport report = Report();
        if (test.result != 0) {
            EXPECT_EQ(report.connects, 0u);
            continue;
        }
        const auto& last = report.lastConnect;
        ASSERT_EQ(report.connects, 1u);
        EXPECT_EQ(last.mode, wlan_connection_mode_temporary_profile);
        EXPECT_EQ(last.profileLength, parameters.profile.size());
        EXPECT_EQ(std::wstring(last.profile), parameters.profile);
        EXPECT_EQ(last.ssidGiven, test.ssid ? 1u : 0u);
        EXPECT_EQ(last.bssType, dot11_BSS_type_any);
        EXPECT_EQ(last.flags, 0x10u);
        ASSERT_EQ(last.bssidListGiven, test.list ? 1u : 0u);
        if (test.list) {
            EXPECT_EQ(last.header.Type, 0x80);
            EXPECT_EQ(last.header.Revision, 1);
            EXPECT_EQ(last.header.Size, 4);
            EXPECT_EQ(last.numberOfEntries, 1u);
            EXPECT_EQ(last.totalNumberOfEntries, 1u);
            EXPECT_EQ(std::memcmp(last.bssids[0], first.data(), 6), 0);
        }
    }
}

TEST_F(WinWlanDoubleTest, ScanAndDisconnectReachWlanapiAndForeignHandlesAreRefused) {
    EXPECT_EQ(wlan_.Scan(handle_, kInterface, std::nullopt, {}), 0u);
    EXPECT_EQ(Report().scanSsidLength, 0xFFFFFFFFu);
    EXPECT_EQ(wlan_.Scan(handle_, kInterface, Ssid("phone"), {0xDD, 0x05, 1, 2, 3, 4, 5}), 0u);
    EXPECT_EQ(Report().scanSsidLength, 5u);
    EXPECT_EQ(Report().scanIeBytes, 7u);
    EXPECT_EQ(wlan_.Disconnect(handle_, kInterface), 0u);
    EXPECT_EQ(Report().disconnects, 1u);

    int notOurs = 0;
    std::vector<platform::WlanInterfaceInfo> interfaces;
    EXPECT_EQ(wlan_.EnumInterfaces(&notOurs, interfaces),
              static_cast<uint32_t>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(wlan_.CloseHandle(&notOurs), static_cast<uint32_t>(ERROR_INVALID_HANDLE));
}

// A refused registration keeps the callback before it.
TEST_F(WinWlanDoubleTest, NotificationsCarryTheirBytesAsGivenAndAThrowingHandlerIsContained) {
    Received received;
    uint32_t previous = 99;
    ASSERT_EQ(wlan_.RegisterNotification(handle_, platform::kWlanSourceAcm, true, &Received::Record,
                                         &received, &previous),
              0u);
    EXPECT_EQ(previous, 0u);
    CkWlanSetup setup{};
    setup.registerError = platform::kErrorCallNotImplemented;
    Configure(setup);
    Received other;
    EXPECT_EQ(wlan_.RegisterNotification(handle_, platform::kWlanSourceAll, false,
                                         &Received::Record, &other, nullptr),
              platform::kErrorCallNotImplemented);
    Configure({});

    platform::WlanConnectionNotificationData data;
    data.reasonCode = 0x00028002;
    data.profileXml = L"<WLANProfile/>";
    const std::vector<uint8_t> overlong = platform::EncodeConnectionNotification(data);
    const std::vector<uint8_t> exact(
        overlong.begin(), overlong.begin() + platform::kConnectionNotificationFixedBytes);
    const std::vector<uint8_t> shortened(overlong.begin(), overlong.begin() + 10);
    const std::vector<uint8_t> none;
    const std::vector<uint8_t>* sent[] = {&shortened, &exact, &overlong, &none};
    received.throwOnNext = true;  // the first handler call fails; the others still come
    for (const auto* bytes : sent) {
        EXPECT_EQ(notify_(platform::kWlanSourceAcm, platform::kAcmConnectionComplete, bytes->data(),
                          static_cast<DWORD>(bytes->size())),
                  1);
    }
    EXPECT_EQ(notify_(platform::kWlanSourceMsm, platform::kMsmConnected, nullptr, 0), 0);
    EXPECT_TRUE(other.notifications.empty());
    ASSERT_EQ(received.notifications.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(received.notifications[i].code, platform::kAcmConnectionComplete);
        EXPECT_EQ(received.notifications[i].interfaceGuid, platform::Guid{});
        EXPECT_EQ(received.notifications[i].data, *sent[i]);
    }
    platform::WlanConnectionNotificationData decoded;
    EXPECT_FALSE(platform::DecodeConnectionNotification(received.notifications[0].data, decoded));
    ASSERT_TRUE(platform::DecodeConnectionNotification(received.notifications[1].data, decoded));
    EXPECT_EQ(decoded.reasonCode, 0x00028002u);
    EXPECT_TRUE(decoded.profileXml.empty());
    ASSERT_TRUE(platform::DecodeConnectionNotification(received.notifications[2].data, decoded));
    EXPECT_EQ(decoded.profileXml, L"<WLANProfile/>");

    ASSERT_EQ(wlan_.RegisterNotification(handle_, platform::kWlanSourceNone, true, nullptr, nullptr,
                                         &previous),
              0u);
    EXPECT_EQ(previous, platform::kWlanSourceAcm);
    EXPECT_EQ(notify_(platform::kWlanSourceAll, platform::kAcmDisconnected, nullptr, 0), 0);
}

// The Wi-Fi service on the installed backend, which the test program points
// at the double. Its handle and registration live for the process, so this
// test comes last.
TEST_F(WinWlanDoubleTest, TheWifiServiceJoinsThroughTheRealMarshalling) {
    CkWlanSetup setup{};
    setup.interfaceCount = 1;
    setup.interfaces[0].InterfaceGuid = win::ToWin(kInterface);
    setup.bssCount = 1;
    setup.bss[0].dot11Ssid.uSSIDLength = 5;
    std::memcpy(setup.bss[0].dot11Ssid.ucSSID, "phone", 5);
    setup.connection.isState = wlan_interface_state_disconnected;
    Configure(setup);

    auto* service = WifiConnectManage::WifiNetworkService::GetInstance();
    ASSERT_TRUE(service->Connect(L"phone", L"12345678", true, 0, {'\x02', 1, 2, 3, 4, 5}, false));
    CkWlanReport report = Report();
    EXPECT_EQ(report.scans, 1u);
    ASSERT_EQ(report.connects, 1u);
    const auto& last = report.lastConnect;
    const std::wstring profile = last.profile;
    EXPECT_EQ(profile.size(), last.profileLength);
    EXPECT_NE(profile.find(L"<keyMaterial>12345678</keyMaterial >"), std::wstring::npos);
    ASSERT_EQ(last.bssidListGiven, 1u);
    EXPECT_EQ(last.numberOfEntries, 0u);
    EXPECT_EQ(last.totalNumberOfEntries, 1u);
    EXPECT_EQ(last.bssids[0][0], 0x02);

    // Connection complete on a double's thread: 3 while the interface is
    // not connected to the profile, 4 once it is.
    platform::WlanConnectionNotificationData data;
    data.profileName = L"phone";
    const auto bytes = platform::EncodeConnectionNotification(data);
    EXPECT_EQ(notify_(platform::kWlanSourceAcm, platform::kAcmConnectionComplete, bytes.data(),
                      static_cast<DWORD>(bytes.size())),
              1);
    EXPECT_EQ(service->GetCurentWifiState(), WifiConnectManage::WifiConnectIncomplete);
    setup.connection.isState = wlan_interface_state_connected;
    std::wcscpy(setup.connection.strProfileName, L"phone");
    Configure(setup);
    notify_(platform::kWlanSourceAcm, platform::kAcmConnectionComplete, bytes.data(),
            static_cast<DWORD>(bytes.size()));
    EXPECT_EQ(service->GetCurentWifiState(), WifiConnectManage::WifiDisConnected);
    ++openBefore_;  // the service's handle, never closed
}

}  // namespace
}  // namespace connectkit::test
