#include "platform/windows/machine/WinNetworkAdapters.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/core/FieldText.h"
#include "platform/windows/machine/AdapterKind.h"
#include "platform/windows/machine/GrowingBuffer.h"

namespace connectkit::win {
namespace {

constexpr ULONG kListFlags =
    GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;

// GetAdaptersInfo's texts are in the ANSI code page.
std::wstring Wide(const std::string& text) {
    if (text.empty()) {
        return {};
    }
    const int length =
        MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring wide(static_cast<size_t>(std::max(length, 0)), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), wide.data(), length);
    return wide;
}

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

platform::NetworkAdapterInfo Describe(const IP_ADAPTER_INFO& entry) {
    platform::NetworkAdapterInfo info;
    info.index = entry.Index;
    info.name = FieldText(entry.AdapterName);
    info.description = Wide(FieldText(entry.Description));
    if (entry.AddressLength >= info.mac.size()) {
        std::copy_n(entry.Address, info.mac.size(), info.mac.begin());
    }
    for (const IP_ADDR_STRING* address = &entry.IpAddressList; address; address = address->Next) {
        info.ipv4.push_back(FieldText(address->IpAddress.String));
    }
    info.kind = AdapterKind(entry.Type, info.description);
    return info;
}

// The adapters of the list IP Helper linked together in `buffer`.
template <typename Record>
std::vector<platform::NetworkAdapterInfo> DescribeAll(const std::vector<uint64_t>& buffer) {
    std::vector<platform::NetworkAdapterInfo> adapters;
    for (auto* entry = reinterpret_cast<const Record*>(buffer.data()); entry; entry = entry->Next) {
        adapters.push_back(Describe(*entry));
    }
    return adapters;
}

// A regrowing read of one of IP Helper's lists (the policy in
// WinNetworkAdapters.h); `what` names it in the log line of one that never fit.
template <typename Call>
ULONG FillList(const char* what, std::vector<uint64_t>& buffer, ULONG overflow, Call call) {
    const ULONG result = GrowingFill<ULONG>(buffer, overflow, call);
    if (result == overflow) {
        LogErrorFun(
            "[IpHelper] %s gave up after at most %d calls: the list kept growing or "
            "asked for too much, error %lu",
            what, kMaxGrowAttempts, static_cast<unsigned long>(result));
    }
    return result;
}

// IpReleaseAddress or IpRenewAddress. IP_ADAPTER_INDEX_MAP holds a name of
// fewer than MAX_ADAPTER_NAME characters.
uint32_t OnLease(const platform::InterfaceIndexEntry& entry,
                 DWORD(WINAPI* call)(PIP_ADAPTER_INDEX_MAP)) {
    if (entry.name.size() >= MAX_ADAPTER_NAME) {
        LogErrorFun(L"[IpHelper] interface name of %zu characters refused", entry.name.size());
        return ERROR_INVALID_PARAMETER;
    }
    IP_ADAPTER_INDEX_MAP map{};
    map.Index = entry.index;
    std::copy(entry.name.begin(), entry.name.end(), map.Name);
    return call(&map);
}

}  // namespace

template <typename Body>
uint32_t WinNetworkAdapters::WithEntries(Body body) {
    uint32_t error = 0;
    const auto entries = entries_.Get(error);
    return entries ? body(*entries) : error;
}

uint32_t WinNetworkAdapters::List(std::vector<platform::NetworkAdapterInfo>& adapters) {
    adapters.clear();
    return WithEntries([&](const IpHelperEntries& entries) -> uint32_t {
        std::vector<uint64_t> buffer;
        const ULONG result = FillList(
            "GetAdaptersAddresses", buffer, ERROR_BUFFER_OVERFLOW, [&](void* data, ULONG& bytes) {
                return entries.getAdaptersAddresses(
                    AF_INET, kListFlags, nullptr, static_cast<IP_ADAPTER_ADDRESSES*>(data), &bytes);
            });
        if (result == ERROR_NO_DATA) {
            return ERROR_SUCCESS;
        }
        if (result == ERROR_SUCCESS) {
            adapters = DescribeAll<IP_ADAPTER_ADDRESSES>(buffer);
        }
        return result;
    });
}

uint32_t WinNetworkAdapters::ListInfo(std::vector<platform::NetworkAdapterInfo>& adapters) {
    adapters.clear();
    return WithEntries([&](const IpHelperEntries& entries) -> uint32_t {
        std::vector<uint64_t> buffer;
        const ULONG result = FillList(
            "GetAdaptersInfo", buffer, ERROR_BUFFER_OVERFLOW, [&](void* data, ULONG& bytes) {
                return entries.getAdaptersInfo(static_cast<IP_ADAPTER_INFO*>(data), &bytes);
            });
        if (result == ERROR_SUCCESS) {
            adapters = DescribeAll<IP_ADAPTER_INFO>(buffer);
        }
        return result;
    });
}

uint32_t WinNetworkAdapters::InterfaceTable(
    std::vector<platform::InterfaceIndexEntry>& interfaces) {
    interfaces.clear();
    return WithEntries([&](const IpHelperEntries& entries) -> uint32_t {
        std::vector<uint64_t> buffer;
        ULONG filled = 0;
        const ULONG result = FillList(
            "GetInterfaceInfo", buffer, ERROR_INSUFFICIENT_BUFFER, [&](void* data, ULONG& bytes) {
                const ULONG answer =
                    entries.getInterfaceInfo(static_cast<IP_INTERFACE_INFO*>(data), &bytes);
                filled = bytes;
                return answer;
            });
        if (result != ERROR_SUCCESS) {
            return result;
        }
        // The count is read against the bytes there are.
        const auto& table = *reinterpret_cast<const IP_INTERFACE_INFO*>(buffer.data());
        constexpr size_t kHeader = offsetof(IP_INTERFACE_INFO, Adapter);
        const size_t bytes = std::min<size_t>(filled, buffer.size() * sizeof(uint64_t));
        const size_t room = bytes > kHeader ? (bytes - kHeader) / sizeof(IP_ADAPTER_INDEX_MAP) : 0;
        const size_t count = std::min<size_t>(std::max<LONG>(table.NumAdapters, 0), room);
        const IP_ADAPTER_INDEX_MAP* first = table.Adapter;
        for (size_t i = 0; i < count; ++i) {
            interfaces.push_back({first[i].Index, FieldText(first[i].Name)});
        }
        return ERROR_SUCCESS;
    });
}

uint32_t WinNetworkAdapters::ReleaseAddress(const platform::InterfaceIndexEntry& entry) {
    return WithEntries(
        [&](const IpHelperEntries& entries) { return OnLease(entry, entries.ipReleaseAddress); });
}

uint32_t WinNetworkAdapters::RenewAddress(const platform::InterfaceIndexEntry& entry) {
    return WithEntries(
        [&](const IpHelperEntries& entries) { return OnLease(entry, entries.ipRenewAddress); });
}

}  // namespace connectkit::win
