// The DHCP side of the Windows backend against Wine's IP Helper, which
// lists the host's real adapters but renews and releases nothing.

// clang-format off
#include <winsock2.h>
#include <iphlpapi.h>
// clang-format on

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/ports/Errors.h"
#include "platform/windows/machine/GrowingFill.h"
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

// Wine's list never changes between two calls; a PC's does when an adapter
// arrives between the size answer and the fill.
TEST(GrowingFill, AListThatGrowsWhileBeingFetchedIsAskedForAgainAFewTimesOnly) {
    struct Case {
        int growths;
        uint32_t result;
        size_t calls;
    };
    for (const Case& c :
         {Case{0, 0u, 1u}, Case{2, 0u, 3u},
          Case{100, uint32_t{ERROR_BUFFER_OVERFLOW}, size_t{win::kMaxFillAttempts}}}) {
        std::vector<uint64_t> buffer;
        uint32_t needed = win::kFirstFillBytes - 8;
        int growths = c.growths;
        size_t calls = 0;
        const uint32_t result = win::GrowingFill<uint32_t>(
            buffer, ERROR_BUFFER_OVERFLOW, [&](void* data, uint32_t& bytes) -> uint32_t {
                ++calls;
                EXPECT_EQ(data, buffer.data());
                EXPECT_LE(bytes, buffer.size() * sizeof(uint64_t)) << "offered beyond the buffer";
                if (growths-- > 0) {
                    needed = std::max(needed, bytes) + 4096;
                    bytes = needed;
                    return ERROR_BUFFER_OVERFLOW;
                }
                EXPECT_GE(bytes, needed) << "offered less than the last answer asked for";
                return bytes >= needed ? 0u : uint32_t{ERROR_BUFFER_OVERFLOW};
            });
        EXPECT_EQ(result, c.result) << c.growths << " growths";
        EXPECT_EQ(calls, c.calls) << c.growths << " growths";
    }
}

}  // namespace
}  // namespace connectkit::test
