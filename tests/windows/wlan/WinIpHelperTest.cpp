// IP Helper on the Windows backend: against Wine's own, which lists the
// host's real adapters but renews and releases nothing, and against the
// iphlpapi double, whose lists change between the size query and the fill.

// clang-format off
#include <winsock2.h>
#include <ws2tcpip.h>
#include <iphlpapi.h>
// clang-format on

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "DoubleControl.h"
#include "platform/ports/Errors.h"
#include "platform/windows/machine/WinNetworkAdapters.h"
#include "support/LogCapture.h"
#include "wlan/CkIpHelperControl.h"

namespace connectkit::test {
namespace {

// Wine lists the host's own interfaces (loopback, ethernet, ...); the
// hosts of the test lane have no 802.11 interface.
TEST(WinIpHelperOnWine, AdaptersAndInterfacesAreListedButLeasesAreNotRenewed) {
    win::WinNetworkAdapters adapters;
    std::vector<platform::NetworkAdapterInfo> info;
    ASSERT_EQ(adapters.List(info), 0u);
    bool someUpWithAddress = false;
    for (const auto& adapter : info) {
        EXPECT_EQ(adapter.kind, platform::NetworkAdapterInfo::Kind::Other) << adapter.index;
        for (const auto& address : adapter.ipv4) {
            in_addr parsed{};
            EXPECT_EQ(inet_pton(AF_INET, address.c_str(), &parsed), 1) << address;
        }
        someUpWithAddress = someUpWithAddress || (adapter.up && !adapter.ipv4.empty());
    }
    EXPECT_TRUE(someUpWithAddress);

    const uint32_t listed = adapters.ListInfo(info);
    ASSERT_TRUE(listed == 0 || listed == platform::kErrorNoData) << listed;
    for (const auto& adapter : info) {
        EXPECT_FALSE(adapter.ipv4.empty()) << "GetAdaptersInfo lists 0.0.0.0 at least";
        EXPECT_EQ(adapter.name.front(), '{');
    }

    std::vector<platform::InterfaceIndexEntry> interfaces;
    const uint32_t tabled = adapters.InterfaceTable(interfaces);
    ASSERT_TRUE(tabled == 0 || tabled == platform::kErrorNoData) << tabled;
    EXPECT_EQ(interfaces.size(), info.size());
    for (const auto& entry : interfaces) {
        EXPECT_EQ(entry.name.rfind(L"\\DEVICE\\TCPIP_{", 0), 0u);
    }

    const platform::InterfaceIndexEntry some =
        interfaces.empty() ? platform::InterfaceIndexEntry{1, L"\\DEVICE\\TCPIP_{00000000}"}
                           : interfaces.front();
    EXPECT_EQ(adapters.RenewAddress(some), platform::kErrorNotSupported);
    EXPECT_EQ(adapters.ReleaseAddress(some), platform::kErrorNotSupported);
    const platform::InterfaceIndexEntry overlong{1, std::wstring(MAX_ADAPTER_NAME, L'x')};
    EXPECT_EQ(adapters.RenewAddress(overlong), static_cast<uint32_t>(ERROR_INVALID_PARAMETER));
}

// What one of the lists gave: its answer, its length and its last index.
struct Listed {
    uint32_t result;
    size_t count;
    uint32_t lastIndex;
};

// Reads one of the lists through `list` on a fresh port.
template <typename Entry>
Listed Read(uint32_t (win::WinNetworkAdapters::*list)(std::vector<Entry>&)) {
    win::WinNetworkAdapters adapters({L"ckiphlpapi.dll", 0});
    std::vector<Entry> entries;
    const uint32_t result = (adapters.*list)(entries);
    return {result, entries.size(), entries.empty() ? 0u : entries.back().index};
}

constexpr uint32_t kNeverFits = 0xFFFFFFFF;

// Four calls at most: the size query and three fills.
TEST(WinIpHelperDouble, ListsThatChangeBetweenQueryAndFillAreReadOrRefusedWithinFourCalls) {
    DoubleControl<CkIpHelperSetup, CkIpHelperReport> ipHelper(L"ckiphlpapi.dll",
                                                              kCkIpHelperConfigureName);
    ASSERT_TRUE(ipHelper.Ready());
    using Adapters = win::WinNetworkAdapters;
    const struct {
        const wchar_t* name;
        uint32_t overflow;
        uint32_t empty;
        Listed (*read)();
    } lists[] = {
        {L"GetAdaptersAddresses", ERROR_BUFFER_OVERFLOW, 0, [] { return Read(&Adapters::List); }},
        {L"GetAdaptersInfo", ERROR_BUFFER_OVERFLOW, platform::kErrorNoData,
         [] { return Read(&Adapters::ListInfo); }},
        {L"GetInterfaceInfo", ERROR_INSUFFICIENT_BUFFER, platform::kErrorNoData,
         [] { return Read(&Adapters::InterfaceTable); }}};
    // Every count is beyond the first guess's room, so the first call is a
    // size query.
    const struct {
        CkIpHelperSetup setup;
        uint32_t calls;
        uint32_t listed;  // adapters read, or kNeverFits
    } cases[] = {
        {{2, {64, 80}, 0}, 3, 80}, {{3, {64, 80, 96}, 0}, 4, 96}, {{1, {64}, 1}, 4, kNeverFits},
        {{2, {64, 2}, 0}, 2, 2},   {{2, {64, 0}, 0}, 2, 0},
    };
    for (const auto& list : lists) {
        for (const auto& test : cases) {
            SCOPED_TRACE(testing::Message() << list.name << ", calls " << test.calls);
            ipHelper.Configure(test.setup);
            LogCapture log;
            const Listed got = list.read();
            EXPECT_EQ(ipHelper.Report().listCalls, test.calls);
            const bool neverFit = test.listed == kNeverFits;
            EXPECT_EQ(log.Contains(std::wstring(L"[IpHelper] ") + list.name + L" gave up"),
                      neverFit);
            EXPECT_EQ(got.result, neverFit ? list.overflow : test.listed ? 0u : list.empty);
            EXPECT_EQ(got.count, neverFit ? 0u : test.listed);
            EXPECT_EQ(got.lastIndex, neverFit ? 0u : test.listed);
        }
    }
}

}  // namespace
}  // namespace connectkit::test
