#include "platform/sim/machine/SimNetworkAdapters.h"

#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"

namespace connectkit::sim {

SimNetworkAdapters::Share::~Share() {
    std::lock_guard<std::mutex> lock(list_->mutex_);
    list_->entries_.erase(id_);
}

void SimNetworkAdapters::Share::Set(std::vector<Info> adapters) {
    std::lock_guard<std::mutex> lock(list_->mutex_);
    list_->entries_[id_].adapters = std::move(adapters);
}

void SimNetworkAdapters::Share::SetSource(Source source) {
    std::lock_guard<std::mutex> lock(list_->mutex_);
    list_->entries_[id_].source = std::move(source);
}

void SimNetworkAdapters::Share::SetLeases(Leases leases) {
    std::lock_guard<std::mutex> lock(list_->mutex_);
    list_->entries_[id_].leases = std::move(leases);
}

SimNetworkAdapters::Share SimNetworkAdapters::Own() {
    std::lock_guard<std::mutex> lock(mutex_);
    uint64_t id = ++lastId_;
    entries_[id];
    return Share(this, id);
}

uint32_t SimNetworkAdapters::List(std::vector<Info>& adapters) {
    adapters.clear();
    if (auto error = FaultedCall(faults_, clock_, "adapters.list", platform::kErrorNotSupported)) {
        return *error;
    }
    std::vector<Entry> entries;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (const auto& [id, entry] : entries_) {
            entries.push_back(entry);
        }
    }
    for (const auto& entry : entries) {
        adapters.insert(adapters.end(), entry.adapters.begin(), entry.adapters.end());
        if (entry.source) {
            entry.source(adapters);
        }
    }
    return platform::kErrorSuccess;
}

uint32_t SimNetworkAdapters::ListInfo(std::vector<Info>& adapters) {
    if (uint32_t error = List(adapters)) {
        return error;
    }
    for (auto& adapter : adapters) {
        if (adapter.ipv4.empty()) {
            adapter.ipv4.push_back("0.0.0.0");
        }
        adapter.up = false;
        adapter.friendlyName.clear();
    }
    return adapters.empty() ? platform::kErrorNoData : platform::kErrorSuccess;
}

uint32_t SimNetworkAdapters::InterfaceTable(
    std::vector<platform::InterfaceIndexEntry>& interfaces) {
    interfaces.clear();
    std::vector<Info> adapters;
    if (uint32_t error = List(adapters)) {
        return error;
    }
    for (const auto& adapter : adapters) {
        interfaces.push_back(
            {adapter.index,
             L"\\DEVICE\\TCPIP_" + std::wstring(adapter.name.begin(), adapter.name.end())});
    }
    return interfaces.empty() ? platform::kErrorNoData : platform::kErrorSuccess;
}

uint32_t SimNetworkAdapters::ReleaseAddress(const platform::InterfaceIndexEntry& entry) {
    return Lease(entry.index, false);
}

uint32_t SimNetworkAdapters::RenewAddress(const platform::InterfaceIndexEntry& entry) {
    return Lease(entry.index, true);
}

uint32_t SimNetworkAdapters::Lease(uint32_t index, bool renew) {
    std::vector<Leases> keepers;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (const auto& [id, entry] : entries_) {
            if (entry.leases) {
                keepers.push_back(entry.leases);
            }
        }
    }
    for (const auto& keeper : keepers) {
        if (auto result = keeper(index, renew)) {
            return *result;
        }
    }
    return platform::kErrorNotSupported;
}

bool SimNetworkAdapters::Update(uint32_t index, const std::function<void(Info& adapter)>& change) {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto& [id, entry] : entries_) {
        for (auto& adapter : entry.adapters) {
            if (adapter.index == index) {
                change(adapter);
                return true;
            }
        }
    }
    return false;
}

}  // namespace connectkit::sim
