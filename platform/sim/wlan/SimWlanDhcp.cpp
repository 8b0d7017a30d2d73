// The DHCP servers of the networks in range and the Wi-Fi adapter's address:
// lease exchanges, release, and the ipconfig commands that drive them.
#include <cstdio>

#include "platform/ports/Errors.h"
#include "platform/sim/core/SimText.h"
#include "platform/sim/core/VirtualClock.h"
#include "platform/sim/wlan/SimWlanWorld.h"

namespace connectkit::sim::wlan {
namespace {

using Dhcp = SimWlanConfig::Network::Dhcp;

// What Windows makes up when no server answered.
constexpr char kAutomaticPrivateAddress[] = "169.254.83.17";
constexpr uint32_t kErrorSemTimeout = 121;
constexpr uint32_t kErrorDeviceNotConnected = 1167;
// ipconfig's exit code when no adapter is in a state for the operation.
constexpr uint32_t kIpconfigNoAdapter = 1;

bool Connected(const World& world) {
    return world.connection && world.connection->state == platform::WlanInterfaceState::Connected;
}

std::string GuidText(const platform::Guid& guid) {
    char text[40];
    std::snprintf(text, sizeof(text), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                  guid.data1, guid.data2, guid.data3, guid.data4[0], guid.data4[1], guid.data4[2],
                  guid.data4[3], guid.data4[4], guid.data4[5], guid.data4[6], guid.data4[7]);
    return text;
}

// The adapter name after ipconfig's switch, as the C runtime splits a
// command line: quotes group, a backslash escapes a quote.
std::wstring AdapterArgument(const std::wstring& commandLine, const std::wstring& verb) {
    size_t at = Lower(commandLine).find(verb);
    std::wstring rest = commandLine.substr(at + verb.size());
    std::wstring name;
    bool quoted = false;
    size_t backslashes = 0;
    size_t i = rest.find_first_not_of(L" \t");
    for (; i != std::wstring::npos && i < rest.size(); ++i) {
        wchar_t c = rest[i];
        if (c == L'\\') {
            ++backslashes;
            continue;
        }
        if (c == L'"') {
            name.append(backslashes / 2, L'\\');
            if (backslashes % 2) {
                name.push_back(L'"');
            } else {
                quoted = !quoted;
            }
            backslashes = 0;
            continue;
        }
        name.append(backslashes, L'\\');
        backslashes = 0;
        if (!quoted && (c == L' ' || c == L'\t')) {
            break;
        }
        name.push_back(c);
    }
    name.append(backslashes, L'\\');
    return name;
}

}  // namespace

void StartLease(World& world, Lock&) {
    if (!Connected(world) || world.leasePending) {
        return;
    }
    world.leasePending = true;
    const auto& network = world.config.networks[world.connection->network];
    After(world, network.leaseDelayMs, world.generation, [](World& w, Lock&) {
        w.leasePending = false;
        const auto& server = w.config.networks[w.connection->network];
        uint32_t exchange = ++w.connection->exchanges;
        switch (server.dhcp) {
            case Dhcp::Lease:
                SetAddress(w, server.address);
                break;
            case Dhcp::ApipaThenLease:
                SetAddress(w, exchange == 1 ? kAutomaticPrivateAddress : server.address);
                break;
            case Dhcp::Never:
                break;
        }
    });
}

void SetAddress(World& world, const std::string& address) {
    world.address = address;
    PublishAdapter(world);
}

void PublishAdapter(World& world) {
    if (!world.share) {
        return;
    }
    const auto& wifi = world.config.interface;
    if (!wifi.present) {
        world.adapterDescription.clear();
        return;
    }
    auto fill = [&world, &wifi](platform::NetworkAdapterInfo& adapter) {
        if (!wifi.description.empty()) {
            adapter.description = wifi.description;
        }
        world.adapterDescription = adapter.description;
        adapter.name = GuidText(wifi.guid);
        adapter.friendlyName = wifi.friendlyName;
        adapter.ipv4.clear();
        if (!world.address.empty()) {
            adapter.ipv4.push_back(world.address);
        }
    };
    if (!world.ownsAdapter && world.adapters.Update(wifi.index, fill)) {
        return;
    }
    if (!world.mayOwnAdapter) {
        world.config.interface.present = false;
        world.adapterDescription.clear();
        return;
    }
    world.ownsAdapter = true;
    platform::NetworkAdapterInfo adapter;
    adapter.kind = platform::NetworkAdapterInfo::Kind::Wifi;
    adapter.index = wifi.index;
    adapter.description = L"Intel(R) Wireless-AC 9560 160MHz";
    adapter.mac = {0x3C, 0x6A, 0xA7, 0x12, 0x34, 0x56};
    adapter.up = true;
    fill(adapter);
    world.share->Set({adapter});
}

uint32_t RenewAndWait(World& world) {
    uint32_t delay = 0;
    {
        Lock lock(world.mutex);
        if (!Connected(world)) {
            return kErrorDeviceNotConnected;
        }
        StartLease(world, lock);
        delay = world.config.networks[world.connection->network].leaseDelayMs;
    }
    // The lease lands at `delay` on the clock's dispatcher, which the clock
    // releases together with a sleeper of the same instant: looking a
    // millisecond later is the first moment the lease is sure to be there.
    const uint32_t settled = delay + 1;
    if (settled < kRenewTimeoutMs) {
        world.clock.Sleep(settled);
        Lock lock(world.mutex);
        if (!world.address.empty() && world.address != kAutomaticPrivateAddress) {
            return platform::kErrorSuccess;
        }
    }
    world.clock.Sleep(kRenewTimeoutMs - std::min(settled, kRenewTimeoutMs));
    return kErrorSemTimeout;
}

uint32_t RunIpconfig(World& world, const std::wstring& commandLine) {
    bool renew = Lower(commandLine).find(L"/renew") != std::wstring::npos;
    std::wstring name = AdapterArgument(commandLine, renew ? L"/renew" : L"/release");
    Lock lock(world.mutex);
    const auto& wifi = world.config.interface;
    if (!wifi.present || (!name.empty() && Lower(name) != Lower(wifi.friendlyName))) {
        return kIpconfigNoAdapter;
    }
    if (!renew) {
        SetAddress(world, "");
        return 0;
    }
    if (!Connected(world)) {
        return kIpconfigNoAdapter;
    }
    StartLease(world, lock);
    return 0;
}

}  // namespace connectkit::sim::wlan
