// The hotspot's Windows ports (device nodes, firewall) against Wine's real
// Win32, and the rules they apply to what Win32 reports (adapter kinds,
// multi-strings).

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "platform/ports/DeviceSetup.h"
#include "platform/ports/Errors.h"
#include "platform/windows/core/WinClock.h"
#include "platform/windows/machine/AdapterKind.h"
#include "platform/windows/machine/MultiSz.h"
#include "platform/windows/machine/WinDeviceSetup.h"
#include "platform/windows/machine/WinFirewall.h"

namespace connectkit::test {
namespace {

using Kind = platform::NetworkAdapterInfo::Kind;

constexpr uint32_t kIfTypeEthernet = 6;
const std::wstring kUnknownDevice = L"ROOT\\CONNECTKIT_NO_SUCH_DEVICE\\0000";
constexpr uint32_t kNoSuchDevice = 0xE000020B;  // ERROR_NO_SUCH_DEVINST

// The virtual adapter never passes for the Wi-Fi card: only the full name
// marks it, and only the interface type makes a Wi-Fi card.
TEST(AdapterKind, ByInterfaceTypeAndFullVirtualAdapterName) {
    const std::tuple<uint32_t, const wchar_t*, Kind> cases[] = {
        {win::kIfTypeIeee80211, L"Intel(R) Wi-Fi 6 AX201 160MHz", Kind::Wifi},
        {win::kIfTypeIeee80211, L"Microsoft Wi-Fi Direct Virtual Adapter #2",
         Kind::WiFiDirectVirtual},
        {win::kIfTypeIeee80211, L"MICROSOFT WI-FI DIRECT VIRTUAL ADAPTER", Kind::WiFiDirectVirtual},
        {kIfTypeEthernet, L"Microsoft Wi-Fi Direct Virtual Adapter", Kind::WiFiDirectVirtual},
        {win::kIfTypeIeee80211, L"Wi-Fi Direct Device", Kind::Wifi},
        {win::kIfTypeIeee80211, L"", Kind::Wifi},
        {kIfTypeEthernet, L"Intel(R) Wi-Fi 6 AX201 160MHz", Kind::Other},
    };
    for (const auto& [type, name, kind] : cases) {
        EXPECT_EQ(win::AdapterKind(type, name), kind) << type << " " << std::wstring(name).size();
    }
}

// Up to the empty string, and never past the given length.
TEST(MultiSz, SplitsUpToTheEmptyStringWithinTheLength) {
    using Ids = std::vector<std::wstring>;
    const wchar_t twoIds[] = L"PCI\\VEN_8086&DEV_2723\0PCI\\VEN_8086\0\0";
    const wchar_t trailing[] = L"A\0\0B\0";
    const wchar_t unterminated[] = {L'A', L'\0', L'B', L'C'};
    EXPECT_EQ(win::SplitMultiSz(twoIds, std::size(twoIds)),
              (Ids{L"PCI\\VEN_8086&DEV_2723", L"PCI\\VEN_8086"}));
    EXPECT_EQ(win::SplitMultiSz(trailing, std::size(trailing)), Ids{L"A"});
    EXPECT_TRUE(win::SplitMultiSz(L"\0", 2).empty());
    EXPECT_TRUE(win::SplitMultiSz(nullptr, 0).empty());
    EXPECT_EQ(win::SplitMultiSz(unterminated, 4), (Ids{L"A", L"BC"}));
    EXPECT_EQ(win::SplitMultiSz(unterminated, 3), (Ids{L"A", L"B"}));
}

// Wine's Configuration Manager has no device tree: the list is empty and
// locating any device node fails with CR_FAILURE. SetupAPI, unlike it,
// knows that the device does not exist (CR_NO_SUCH_DEVNODE, and
// ERROR_NO_SUCH_DEVINST for its property calls, which stop at opening the
// device). An empty id would otherwise name the root of the device tree.
TEST(WinDeviceSetup, WinesEmptyDeviceTree) {
    win::WinDeviceSetup devices;
    std::vector<std::wstring> present{L"stale"};
    platform::DeviceListCall failedCall{};
    EXPECT_EQ(devices.PresentDevices(present, failedCall), platform::kCrSuccess);
    EXPECT_TRUE(present.empty());

    const std::pair<std::wstring, uint32_t> cases[] = {{kUnknownDevice, platform::kCrFailure},
                                                       {L"", platform::kCrNoSuchDevnode}};
    for (const auto& [id, located] : cases) {
        SCOPED_TRACE(std::string(id.begin(), id.end()));
        std::vector<std::wstring> hardwareIds{L"stale"};
        EXPECT_EQ(devices.HardwareIds(id, hardwareIds), located);
        EXPECT_TRUE(hardwareIds.empty());
        platform::DeviceState state{true, 7};
        EXPECT_EQ(devices.State(id, state), located);
        EXPECT_FALSE(state.started);
        EXPECT_EQ(state.problem, 0u);
        std::wstring value = L"stale";
        EXPECT_EQ(devices.ReadDeviceValue(id, L"PiePathHint", value), located);
        EXPECT_TRUE(value.empty());
        EXPECT_EQ(devices.SetEnabled(id, false), platform::kCrNoSuchDevnode);
        EXPECT_EQ(devices.SetEnabled(id, true), platform::kCrNoSuchDevnode);
        std::vector<uint8_t> property{1};
        EXPECT_EQ(devices.ReadProperty(id, platform::SetupProperty::ProblemCode, property),
                  kNoSuchDevice);
        EXPECT_TRUE(property.empty());
        auto failedCall = platform::InstallerCall::CallInstaller;
        EXPECT_EQ(devices.ChangeProperty(id, {}, failedCall), kNoSuchDevice);
        EXPECT_EQ(failedCall, platform::InstallerCall::SetParams);
    }
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
