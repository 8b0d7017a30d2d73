// The hotspot's Windows ports (adapters, device nodes, firewall) against
// Wine's real Win32, and the rules they apply to what Win32 reports.

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "platform/ports/DeviceSetup.h"
#include "platform/ports/Errors.h"
#include "platform/windows/machine/AdapterKind.h"
#include "platform/windows/machine/MultiSz.h"
#include "platform/windows/core/WinClock.h"
#include "platform/windows/machine/WinDeviceSetup.h"
#include "platform/windows/machine/WinFirewall.h"
#include "platform/windows/machine/WinNetworkAdapters.h"

namespace connectkit::test {
namespace {

using Kind = platform::NetworkAdapterInfo::Kind;

constexpr uint32_t kIfTypeEthernet = 6;
const std::wstring kUnknownDevice = L"ROOT\\CONNECTKIT_NO_SUCH_DEVICE\\0000";

bool IsDottedQuad(const std::string& text) {
    std::istringstream in(text);
    for (int part = 0; part < 4; ++part) {
        int value = -1;
        if (!(in >> value) || value < 0 || value > 255) {
            return false;
        }
        if (part < 3 && in.get() != '.') {
            return false;
        }
    }
    return in.peek() == std::char_traits<char>::eof() &&
           text.find_first_not_of("0123456789.") == std::string::npos;
}

TEST(AdapterKind, TheVirtualAdapterNeverPassesForTheWifiCard) {
    EXPECT_EQ(win::AdapterKind(win::kIfTypeIeee80211, L"Intel(R) Wi-Fi 6 AX201 160MHz"),
              Kind::Wifi);
    EXPECT_EQ(win::AdapterKind(win::kIfTypeIeee80211, L"Microsoft Wi-Fi Direct Virtual Adapter #2"),
              Kind::WiFiDirectVirtual);
    EXPECT_EQ(win::AdapterKind(win::kIfTypeIeee80211, L"MICROSOFT WI-FI DIRECT VIRTUAL ADAPTER"),
              Kind::WiFiDirectVirtual);
    EXPECT_EQ(win::AdapterKind(kIfTypeEthernet, L"Microsoft Wi-Fi Direct Virtual Adapter"),
              Kind::WiFiDirectVirtual);
    // Only the full name marks the virtual adapter.
    EXPECT_EQ(win::AdapterKind(win::kIfTypeIeee80211, L"Wi-Fi Direct Device"), Kind::Wifi);
    EXPECT_EQ(win::AdapterKind(win::kIfTypeIeee80211, L""), Kind::Wifi);
}

TEST(AdapterKind, OnlyTheInterfaceTypeMakesAWifiCard) {
    EXPECT_EQ(win::AdapterKind(kIfTypeEthernet, L"Intel(R) Wi-Fi 6 AX201 160MHz"), Kind::Other);
    EXPECT_EQ(win::AdapterKind(24, L"Software Loopback Interface 1"), Kind::Other);
    EXPECT_EQ(win::AdapterKind(kIfTypeEthernet, L""), Kind::Other);
}

TEST(MultiSz, SplitsUpToTheEmptyString) {
    const wchar_t twoIds[] = L"PCI\\VEN_8086&DEV_2723\0PCI\\VEN_8086\0\0";
    EXPECT_EQ(win::SplitMultiSz(twoIds, sizeof(twoIds) / sizeof(wchar_t)),
              (std::vector<std::wstring>{L"PCI\\VEN_8086&DEV_2723", L"PCI\\VEN_8086"}));
    const wchar_t trailing[] = L"A\0\0B\0";
    EXPECT_EQ(win::SplitMultiSz(trailing, sizeof(trailing) / sizeof(wchar_t)),
              std::vector<std::wstring>{L"A"});
    const wchar_t empty[] = L"\0";
    EXPECT_TRUE(win::SplitMultiSz(empty, 2).empty());
    EXPECT_TRUE(win::SplitMultiSz(nullptr, 0).empty());
}

TEST(MultiSz, NeverReadsPastTheGivenLength) {
    const wchar_t unterminated[] = {L'A', L'\0', L'B', L'C'};
    EXPECT_EQ(win::SplitMultiSz(unterminated, 4), (std::vector<std::wstring>{L"A", L"BC"}));
    EXPECT_EQ(win::SplitMultiSz(unterminated, 3), (std::vector<std::wstring>{L"A", L"B"}));
}

// Wine lists the host's own interfaces (loopback, ethernet, ...); the hosts
// of the test lane have no 802.11 interface.
TEST(WinNetworkAdapters, ListsTheHostsAdapters) {
    win::WinNetworkAdapters adapters;
    std::vector<platform::NetworkAdapterInfo> list(1);
    ASSERT_EQ(adapters.List(list), platform::kErrorSuccess);
    ASSERT_FALSE(list.empty());
    std::set<uint32_t> indexes;
    bool someUpWithAddress = false;
    for (const auto& adapter : list) {
        EXPECT_NE(adapter.index, 0u) << adapter.description.size();
        EXPECT_TRUE(indexes.insert(adapter.index).second) << adapter.index;
        EXPECT_FALSE(adapter.description.empty()) << adapter.index;
        EXPECT_EQ(adapter.kind, Kind::Other) << adapter.index;
        for (const auto& address : adapter.ipv4) {
            EXPECT_TRUE(IsDottedQuad(address)) << address;
        }
        someUpWithAddress = someUpWithAddress || (adapter.up && !adapter.ipv4.empty());
    }
    EXPECT_TRUE(someUpWithAddress);
}

// Wine's Configuration Manager has no device tree: the list is empty and
// locating any device node fails with CR_FAILURE.
TEST(WinDeviceSetup, WinesEmptyDeviceTree) {
    win::WinDeviceSetup devices;
    std::vector<std::wstring> present{L"stale"};
    platform::DeviceListCall failedCall{};
    EXPECT_EQ(devices.PresentDevices(present, failedCall), platform::kCrSuccess);
    EXPECT_TRUE(present.empty());

    std::vector<std::wstring> hardwareIds{L"stale"};
    EXPECT_EQ(devices.HardwareIds(kUnknownDevice, hardwareIds), platform::kCrFailure);
    EXPECT_TRUE(hardwareIds.empty());
    platform::DeviceState state{true, 7};
    EXPECT_EQ(devices.State(kUnknownDevice, state), platform::kCrFailure);
    EXPECT_FALSE(state.started);
    EXPECT_EQ(state.problem, 0u);
    std::wstring value = L"stale";
    EXPECT_EQ(devices.ReadDeviceValue(kUnknownDevice, L"PiePathHint", value), platform::kCrFailure);
    EXPECT_TRUE(value.empty());
}

// SetupAPI, unlike Configuration Manager, knows under Wine that the device
// does not exist, and that maps to CR_NO_SUCH_DEVNODE.
TEST(WinDeviceSetup, EnablingAnUnknownDeviceFindsNoDevnode) {
    win::WinDeviceSetup devices;
    EXPECT_EQ(devices.SetEnabled(kUnknownDevice, false), platform::kCrNoSuchDevnode);
    EXPECT_EQ(devices.SetEnabled(kUnknownDevice, true), platform::kCrNoSuchDevnode);
}

// An empty id would otherwise name the root of the device tree.
TEST(WinDeviceSetup, AnEmptyInstanceIdIsNoDevice) {
    win::WinDeviceSetup devices;
    std::vector<std::wstring> hardwareIds{L"stale"};
    EXPECT_EQ(devices.HardwareIds(L"", hardwareIds), platform::kCrNoSuchDevnode);
    EXPECT_TRUE(hardwareIds.empty());
    platform::DeviceState state{true, 7};
    EXPECT_EQ(devices.State(L"", state), platform::kCrNoSuchDevnode);
    EXPECT_FALSE(state.started);
    std::wstring value = L"stale";
    EXPECT_EQ(devices.ReadDeviceValue(L"", L"PiePathHint", value), platform::kCrNoSuchDevnode);
    EXPECT_TRUE(value.empty());
    EXPECT_EQ(devices.SetEnabled(L"", false), platform::kCrNoSuchDevnode);
}

// Wine's firewall object exists but does not implement its rule list; the
// answer comes back promptly and the same on every call.
TEST(WinFirewall, WinesRuleListAnswersNotImplementedPromptly) {
    win::WinClock clock;
    win::WinFirewall firewall;
    for (int round = 0; round < 2; ++round) {
        uint64_t before = clock.TickCount64();
        EXPECT_EQ(firewall.RemoveDhcpRules(), platform::kErrorCallNotImplemented);
        EXPECT_LT(clock.TickCount64() - before, 10000u);
    }
}

}  // namespace
}  // namespace connectkit::test
