#include "platform/windows/machine/WinNetworkAdapters.h"

// clang-format off
#include <winsock2.h>
#include <ws2tcpip.h>
#include <iphlpapi.h>
// clang-format on

#include <algorithm>

#include "platform/windows/machine/AdapterKind.h"

namespace connectkit::win {
namespace {

// Microsoft's advice for a first guess; adapters come and go between the
// size query and the call, so a few regrowths are allowed, not an endless loop.
constexpr ULONG kInitialBufferBytes = 15 * 1024;
constexpr int kMaxAttempts = 4;
constexpr ULONG kListFlags =
    GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;

std::string Dotted(const sockaddr_in& address) {
    const auto& bytes = address.sin_addr.S_un.S_un_b;
    return std::to_string(bytes.s_b1) + '.' + std::to_string(bytes.s_b2) + '.' +
           std::to_string(bytes.s_b3) + '.' + std::to_string(bytes.s_b4);
}

platform::NetworkAdapterInfo Describe(const IP_ADAPTER_ADDRESSES& entry) {
    platform::NetworkAdapterInfo info;
    info.index = entry.IfIndex;
    info.description = entry.Description ? entry.Description : L"";
    info.name = entry.AdapterName ? entry.AdapterName : "";
    info.friendlyName = entry.FriendlyName ? entry.FriendlyName : L"";
    if (entry.PhysicalAddressLength >= info.mac.size()) {
        std::copy_n(entry.PhysicalAddress, info.mac.size(), info.mac.begin());
    }
    for (auto* unicast = entry.FirstUnicastAddress; unicast; unicast = unicast->Next) {
        const SOCKET_ADDRESS& address = unicast->Address;
        if (address.lpSockaddr && address.lpSockaddr->sa_family == AF_INET &&
            address.iSockaddrLength >= static_cast<INT>(sizeof(sockaddr_in))) {
            info.ipv4.push_back(Dotted(*reinterpret_cast<const sockaddr_in*>(address.lpSockaddr)));
        }
    }
    info.up = entry.OperStatus == IfOperStatusUp;
    info.kind = AdapterKind(entry.IfType, info.description);
    return info;
}

}  // namespace

uint32_t WinNetworkAdapters::List(std::vector<platform::NetworkAdapterInfo>& adapters) {
    adapters.clear();
    ULONG bytes = kInitialBufferBytes;
    // uint64_t elements keep the adapter records aligned.
    std::vector<uint64_t> buffer;
    ULONG result = ERROR_BUFFER_OVERFLOW;
    for (int attempt = 0; attempt < kMaxAttempts && result == ERROR_BUFFER_OVERFLOW; ++attempt) {
        buffer.assign(bytes / sizeof(uint64_t) + 1, 0);
        bytes = static_cast<ULONG>(buffer.size() * sizeof(uint64_t));
        result =
            GetAdaptersAddresses(AF_INET, kListFlags, nullptr,
                                 reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data()), &bytes);
    }
    if (result == ERROR_NO_DATA) {
        return ERROR_SUCCESS;
    }
    if (result != ERROR_SUCCESS) {
        return result;
    }
    for (auto* entry = reinterpret_cast<const IP_ADAPTER_ADDRESSES*>(buffer.data()); entry;
         entry = entry->Next) {
        adapters.push_back(Describe(*entry));
    }
    return ERROR_SUCCESS;
}

uint32_t WinNetworkAdapters::ListInfo(std::vector<platform::NetworkAdapterInfo>& adapters) {
    adapters.clear();
    return ERROR_NOT_SUPPORTED;
}

uint32_t WinNetworkAdapters::InterfaceTable(
    std::vector<platform::InterfaceIndexEntry>& interfaces) {
    interfaces.clear();
    return ERROR_NOT_SUPPORTED;
}

uint32_t WinNetworkAdapters::ReleaseAddress(const platform::InterfaceIndexEntry&) {
    return ERROR_NOT_SUPPORTED;
}

uint32_t WinNetworkAdapters::RenewAddress(const platform::InterfaceIndexEntry&) {
    return ERROR_NOT_SUPPORTED;
}

}  // namespace connectkit::win
