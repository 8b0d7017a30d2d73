// Native Wi-Fi on the Windows backend: against Wine's own wlanapi, which
// has no WLAN service behind it, and against the wlanapi double, which
// hands out memory that ends where it ends and counts what is not freed.

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "DoubleControl.h"
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
using Opcode = platform::WlanIntfOpcode;

const platform::Guid kInterface{0x1D6A3E20, 0x4B51, 0x4C3F, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr uint32_t kInvalidHandle = ERROR_INVALID_HANDLE;
constexpr uint32_t kInvalidParameter = ERROR_INVALID_PARAMETER;

platform::Dot11Ssid Ssid(const std::string& text) {
    platform::Dot11Ssid ssid;
    ssid.length = static_cast<uint32_t>(text.size());
    std::memcpy(ssid.bytes.data(), text.data(), std::min(text.size(), ssid.bytes.size()));
    return ssid;
}

// Wine exports the scan, BSS list, query and connect calls as stubs that
// raise an exception: the library never gets that far without an interface.
TEST(WinWlanOnWine, NoInterfaceNoNotificationsAndAMissingEntryAreReported) {
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

    // A library without the entries is refused whole. Where a library is
    // looked for is the loader's, shown with the Bluetooth libraries.
    win::WinWlan missing({L"ckprobe.dll", 0});
    handle = reinterpret_cast<WlanHandle>(1);
    EXPECT_EQ(missing.OpenHandle(platform::kWlanClientVersion, negotiated, handle),
              static_cast<uint32_t>(ERROR_PROC_NOT_FOUND));
    EXPECT_EQ(handle, nullptr);
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

class WinWlanDoubleTest : public testing::Test, protected DoubleControl<CkWlanSetup, CkWlanReport> {
protected:
    WinWlanDoubleTest() : DoubleControl(L"ckwlanapi.dll", kCkWlanConfigureName) {}
    void SetUp() override {
        ASSERT_TRUE(Ready());
        notify_ = reinterpret_cast<CkWlanNotifyFunction>(
            reinterpret_cast<void (*)()>(GetProcAddress(Module(), kCkWlanNotifyName)));
        ASSERT_TRUE(notify_);
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

    uint32_t Query(Opcode opcode, platform::WlanInterfaceAnswer& answer) {
        return wlan_.QueryInterface(handle_, kInterface, opcode, answer);
    }
    int Notify(uint32_t source, uint32_t code, const std::vector<uint8_t>& data) {
        return notify_(source, code, data.data(), static_cast<DWORD>(data.size()));
    }

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
    std::wcscpy(setup.interfaces[1].strInterfaceDescription, L"AX201");
    setup.bssCount = 2;
    setup.bssClaimed = 40;  // more than the list's total size holds
    for (int i = 0; i < 2; ++i) {
        setup.bss[i].dot11Ssid.uSSIDLength = i == 0 ? 5 : 40;  // the second claims past its field
        setup.bss[i].dot11Bssid[5] = static_cast<UCHAR>(0xA0 + i);
    }
    Configure(setup);

    std::vector<platform::WlanInterfaceInfo> interfaces;
    ASSERT_EQ(wlan_.EnumInterfaces(handle_, interfaces), 0u);
    ASSERT_EQ(interfaces.size(), 2u);
    EXPECT_EQ(interfaces[0].guid, kInterface);
    EXPECT_EQ(interfaces[0].description, std::wstring(256, L'D'));
    EXPECT_EQ(interfaces[0].state, platform::WlanInterfaceState::Connected);
    EXPECT_EQ(interfaces[1].description, L"AX201");

    std::vector<platform::WlanBssEntry> entries;
    ASSERT_EQ(wlan_.GetNetworkBssList(handle_, kInterface, Ssid("phone"),
                                      platform::Dot11BssType::Any, true, entries),
              0u);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].ssid.length, 5u);
    EXPECT_EQ(entries[1].ssid.length, 40u);
    EXPECT_EQ(entries[1].bssid[5], 0xA1);
}

TEST_F(WinWlanDoubleTest, QueryAnswersShorterThanTheirStructureAreRefused) {
    CkWlanSetup setup{};
    auto& connection = setup.connection;
    connection.isState = wlan_interface_state_connected;
    std::fill(std::begin(connection.strProfileName), std::end(connection.strProfileName), L'p');
    connection.wlanAssociationAttributes.dot11Ssid.uSSIDLength = 5;
    connection.wlanSecurityAttributes.bSecurityEnabled = TRUE;
    setup.channel = 149;
    setup.rssi = -52;
    Configure(setup);

    platform::WlanInterfaceAnswer answer;
    ASSERT_EQ(Query(Opcode::CurrentConnection, answer), 0u);
    EXPECT_EQ(answer.connection.state, platform::WlanInterfaceState::Connected);
    EXPECT_EQ(answer.connection.profileName, std::wstring(256, L'p'));
    EXPECT_EQ(answer.connection.ssid.length, 5u);
    EXPECT_TRUE(answer.connection.securityEnabled);
    ASSERT_EQ(Query(Opcode::ChannelNumber, answer), 0u);
    EXPECT_EQ(answer.channel, 149u);
    ASSERT_EQ(Query(Opcode::Rssi, answer), 0u);
    EXPECT_EQ(answer.rssi, -52);

    setup.connectionBytes = sizeof(WLAN_CONNECTION_ATTRIBUTES) - 4;
    Configure(setup);
    EXPECT_EQ(Query(Opcode::CurrentConnection, answer), static_cast<uint32_t>(ERROR_INVALID_DATA));
    EXPECT_TRUE(answer.connection.profileName.empty());
}

// The Wi-Fi service's list counts none of the entry it holds; a scan
// without an SSID passes none.
TEST_F(WinWlanDoubleTest, CallsReachWlanapiWithTheirParametersAndForeignHandlesAreRefused) {
    platform::Dot11BssidList counted{0x80, 1, 4, 1, 1, {{0x02, 0x11, 0x22, 0x33, 0x44, 0x55}}};
    platform::Dot11BssidList uncounted = counted;
    uncounted.numberOfEntries = 0;
    platform::Dot11BssidList overclaiming = counted;
    overclaiming.numberOfEntries = 2;

    struct Case {
        std::optional<platform::Dot11BssidList> list;
        std::optional<platform::Dot11Ssid> ssid;
        uint32_t result;
    } cases[] = {
        {std::nullopt, std::nullopt, 0},
        {counted, Ssid("phone"), 0},
        {uncounted, std::nullopt, 0},
        {overclaiming, std::nullopt, kInvalidParameter},
        {std::nullopt, Ssid(std::string(33, 'x')), kInvalidParameter},
    };
    for (const auto& test : cases) {
        Configure({});
        platform::WlanConnectionParameters parameters;
        parameters.mode = platform::WlanConnectionMode::TemporaryProfile;
        parameters.profile = L"<?xml version=\"1.0\" encoding=\"us-ascii\"?><WLANProfile/>";
        parameters.ssid = test.ssid;
        parameters.desiredBssids = test.list;
        EXPECT_EQ(wlan_.Connect(handle_, kInterface, parameters), test.result);
        const CkWlanReport report = Report();
        ASSERT_EQ(report.connects, test.result == 0 ? 1u : 0u);
        const auto& last = report.lastConnect;
        if (test.result != 0) {
            continue;
        }
        EXPECT_EQ(last.mode, wlan_connection_mode_temporary_profile);
        EXPECT_EQ(std::wstring(last.profile), parameters.profile);
        EXPECT_EQ(last.ssidGiven, test.ssid ? 1u : 0u);
        ASSERT_EQ(last.bssidListGiven, test.list ? 1u : 0u);
        if (test.list) {
            DOT11_BSSID_LIST sent{
                {0x80, 1, 4}, test.list->numberOfEntries, test.list->totalNumberOfEntries, {}};
            std::memcpy(sent.BSSIDs[0], test.list->entries[0].data(), 6);
            EXPECT_EQ(std::memcmp(&last.bssids, &sent, offsetof(DOT11_BSSID_LIST, BSSIDs) + 6), 0);
        }
    }

    EXPECT_EQ(wlan_.Scan(handle_, kInterface, std::nullopt, {}), 0u);
    EXPECT_EQ(Report().scanSsidLength, 0xFFFFFFFFu);
    EXPECT_EQ(wlan_.Scan(handle_, kInterface, Ssid("phone"), {0xDD, 0x05, 1, 2, 3, 4, 5}), 0u);
    EXPECT_EQ(Report().scanSsidLength, 5u);
    EXPECT_EQ(Report().scanIeBytes, 7u);
    EXPECT_EQ(wlan_.Disconnect(handle_, kInterface), 0u);
    EXPECT_EQ(Report().disconnects, 1u);

    int notOurs = 0;
    std::vector<platform::WlanInterfaceInfo> interfaces;
    EXPECT_EQ(wlan_.EnumInterfaces(&notOurs, interfaces), kInvalidHandle);
    EXPECT_EQ(wlan_.CloseHandle(&notOurs), kInvalidHandle);
}

// Each record is copied from memory that ends where it ends; a refused
// registration keeps the callback before it.
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
    setup = {};
    setup.interfaceCount = 1;
    setup.interfaces[0].InterfaceGuid = win::ToWin(kInterface);
    Configure(setup);

    platform::WlanConnectionNotificationData data;
    data.reasonCode = 0x00028002;
    data.profileXml = L"<WLANProfile/>";
    const std::vector<uint8_t> overlong = platform::EncodeConnectionNotification(data);
    const std::vector<uint8_t> sent[] = {
        {overlong.begin(), overlong.begin() + 10},
        {overlong.begin(), overlong.begin() + platform::kConnectionNotificationFixedBytes},
        overlong,
        {}};
    // Only what reaches this test's registrations is counted: the Wi-Fi
    // service's, once made, stays for the process.
    received.throwOnNext = true;  // the first handler call fails; the others still come
    for (const auto& bytes : sent) {
        Notify(platform::kWlanSourceAcm, platform::kAcmConnectionComplete, bytes);
    }
    Notify(platform::kWlanSourceMsm, platform::kMsmConnected, {});
    EXPECT_TRUE(other.notifications.empty());
    ASSERT_EQ(received.notifications.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(received.notifications[i].code, platform::kAcmConnectionComplete);
        EXPECT_EQ(received.notifications[i].interfaceGuid, kInterface);
        EXPECT_EQ(received.notifications[i].data, sent[i]);
    }
    // A record of its fixed part alone has no profile XML.
    platform::WlanConnectionNotificationData decoded;
    ASSERT_TRUE(platform::DecodeConnectionNotification(received.notifications[1].data, decoded));
    EXPECT_EQ(decoded.reasonCode, 0x00028002u);
    EXPECT_TRUE(decoded.profileXml.empty());

    ASSERT_EQ(wlan_.RegisterNotification(handle_, platform::kWlanSourceNone, true, nullptr, nullptr,
                                         &previous),
              0u);
    EXPECT_EQ(previous, platform::kWlanSourceAcm);
    Notify(platform::kWlanSourceAll, platform::kAcmDisconnected, {});
    EXPECT_EQ(received.notifications.size(), 4u);
}

// The Wi-Fi service on the installed backend, which the test program points
// at the double: its connection reaches wlanapi and a notification on a
// double's thread reaches it back (what it sends is checked above). Its handle and registration
// live for the process.
TEST_F(WinWlanDoubleTest, TheWifiServiceJoinsThroughTheRealMarshalling) {
    CkWlanSetup setup{};
    setup.interfaceCount = 1;
    setup.interfaces[0].InterfaceGuid = win::ToWin(kInterface);
    setup.bssCount = 1;
    setup.bss[0].dot11Ssid.uSSIDLength = 5;
    std::memcpy(setup.bss[0].dot11Ssid.ucSSID, "phone", 5);
    Configure(setup);

    auto* service = WifiConnectManage::WifiNetworkService::GetInstance();
    ASSERT_TRUE(service->Connect(L"phone", L"12345678", true, 0, {'\x02', 1, 2, 3, 4, 5}, false));
    ASSERT_EQ(Report().connects, 1u);
    // The service opens one handle, on its first connection, and keeps it
    // for the process.
    EXPECT_LE(Report().openHandles, openBefore_ + 2);
    openBefore_ = Report().openHandles - 1;

    // Connection complete while the interface is not connected to the
    // profile: 3.
    platform::WlanConnectionNotificationData data;
    data.profileName = L"phone";
    EXPECT_EQ(Notify(platform::kWlanSourceAcm, platform::kAcmConnectionComplete,
                     platform::EncodeConnectionNotification(data)),
              1);
    EXPECT_EQ(service->GetCurentWifiState(), WifiConnectManage::WifiConnectIncomplete);
}

}  // namespace
}  // namespace connectkit::test
