#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/ports/NetworkAdapters.h"

namespace connectkit::platform {
class Clock;
}

namespace connectkit::sim {

class FaultInjector;

// The adapters IP Helper would list. Several models own adapters (the Wi-Fi
// card its adapter, Wi-Fi Direct its virtual adapter); each holds a Share,
// and the list is every share's adapters in the order the shares were taken.
class SimNetworkAdapters final : public platform::NetworkAdapters {
public:
    using Info = platform::NetworkAdapterInfo;
    // Adapters whose state lives in their model, read at each listing. It is
    // called with no lock of this class held, so it may take its model's lock.
    using Source = std::function<void(std::vector<Info>& adapters)>;
    // Releases (renew false) or renews the DHCP lease of the adapter with
    // interface index `index`: the Win32 code, or nullopt when the model
    // keeps no lease for that adapter. Called with no lock of this class held.
    using Leases = std::function<std::optional<uint32_t>(uint32_t index, bool renew)>;

    // One model's adapters; they leave the list when the share is destroyed.
    class Share {
    public:
        Share(const Share&) = delete;
        Share& operator=(const Share&) = delete;
        ~Share();

        // Replaces the adapters the model keeps here.
        void Set(std::vector<Info> adapters);
        // Lists what `source` appends, after the adapters kept here.
        void SetSource(Source source);
        // Answers IpReleaseAddress and IpRenewAddress for the leases it keeps.
        void SetLeases(Leases leases);

    private:
        friend class SimNetworkAdapters;
        Share(SimNetworkAdapters* list, uint64_t id) : list_(list), id_(id) {}
        SimNetworkAdapters* list_;
        uint64_t id_;
    };

    SimNetworkAdapters(platform::Clock& clock, FaultInjector& faults)
        : clock_(clock), faults_(faults) {}

    uint32_t List(std::vector<Info>& adapters) override;
    uint32_t ListInfo(std::vector<Info>& adapters) override;
    uint32_t InterfaceTable(std::vector<platform::InterfaceIndexEntry>& interfaces) override;
    // The share that keeps the adapter's lease answers; ERROR_NOT_SUPPORTED
    // when none does.
    uint32_t ReleaseAddress(const platform::InterfaceIndexEntry& entry) override;
    uint32_t RenewAddress(const platform::InterfaceIndexEntry& entry) override;

    Share Own();
    // Changes the kept adapter with interface index `index`, whichever model
    // owns it: a renewed lease changes the Wi-Fi card's address. False when
    // no share keeps such an adapter.
    bool Update(uint32_t index, const std::function<void(Info& adapter)>& change);

private:
    struct Entry {
        std::vector<Info> adapters;
        Source source;
        Leases leases;
    };

    uint32_t Lease(uint32_t index, bool renew);

    platform::Clock& clock_;
    FaultInjector& faults_;
    std::mutex mutex_;
    uint64_t lastId_ = 0;
    std::map<uint64_t, Entry> entries_;
};

}  // namespace connectkit::sim
