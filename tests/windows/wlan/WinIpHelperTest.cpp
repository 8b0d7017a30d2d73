// The DHCP side of the Windows backend against Wine's IP Helper, which
// lists the host's real adapters but renews and releases nothing.

// clang-format off
#include <winsock2.h>
#include <iphlpapi.h>
// clang-format on

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/ports/Errors.h"
#include "platform/windows/machine/WinNetworkAdapters.h"

namespace connectkit::test {
namespace {

TEST(WinIpHelperOnWine, AdaptersAndInterfacesAreListedButLeasesAreNotRenewed) {
    win::WinNetworkAdapters adapters;
    std::vector<platform::NetworkAdapterInfo> info;
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

}  // namespace
}  // namespace connectkit::test
