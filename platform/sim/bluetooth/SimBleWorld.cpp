#include "platform/sim/bluetooth/SimBleWorld.h"

#include <algorithm>

#include "platform/ports/BluetoothHci.h"
#include "platform/ports/Errors.h"
#include "platform/sim/core/VirtualClock.h"
#include "platform/suite/DEString.h"

namespace connectkit::sim::ble {
namespace {

using platform::BleAdvertisementType;
using platform::BleWatcherStatus;

constexpr uint32_t kErrorPrivilegeNotHeld = 1314;
// DateTime counts 100-ns intervals from 1601; Unix time starts 11644473600 s
// later.
constexpr int64_t kUnixEpochAsDateTime = 116444736000000000;
constexpr uint8_t kManufacturerData = 0xFF;

bool Matches(const platform::BleBytePattern& pattern,
             const std::vector<platform::BleDataSection>& sections) {
    if (pattern.offset < 0) {
        return false;
    }
    size_t offset = static_cast<size_t>(pattern.offset);
    return std::any_of(sections.begin(), sections.end(), [&](const auto& section) {
        return section.dataType == pattern.dataType &&
               section.data.size() >= offset + pattern.data.size() &&
               std::equal(pattern.data.begin(), pattern.data.end(), section.data.begin() + offset);
    });
}

bool Passes(const WatcherRecord& watcher, const platform::BleAdvertisementReceived& event) {
    if (watcher.threshold && event.rawSignalStrengthInDBm < *watcher.threshold) {
        return false;
    }
    return watcher.patterns.empty() ||
           std::any_of(watcher.patterns.begin(), watcher.patterns.end(),
                       [&](const auto& pattern) { return Matches(pattern, event.dataSections); });
}

platform::BleAdvertisementReceived Received(const SimBlePhone& phone, BleAdvertisementType type,
                                            const std::vector<platform::BleDataSection>& sections,
                                            int64_t timestamp) {
    platform::BleAdvertisementReceived event;
    event.rawSignalStrengthInDBm = phone.rssi;
    event.bluetoothAddress = phone.address & 0xFFFFFFFFFFFFull;
    event.advertisementType = type;
    event.timestamp = timestamp;
    event.dataSections = sections;
    for (const auto& section : sections) {
        if (section.dataType == kManufacturerData && section.data.size() >= 2) {
            event.manufacturerData.push_back(
                {static_cast<uint16_t>(section.data[0] | section.data[1] << 8),
                 {section.data.begin() + 2, section.data.end()}});
        }
    }
    return event;
}

bool Scannable(BleAdvertisementType type) {
    return type == BleAdvertisementType::ConnectableUndirected ||
           type == BleAdvertisementType::ScannableUndirected;
}

// What an enabled instance puts on the air.
SimBlePhone OwnAdvertiser(uint8_t number, const SimHciInstance& instance, uint64_t address,
                          int16_t rssi) {
    static constexpr BleAdvertisementType kTypes[] = {
        BleAdvertisementType::ConnectableUndirected, BleAdvertisementType::ConnectableDirected,
        BleAdvertisementType::ScannableUndirected, BleAdvertisementType::NonConnectableUndirected,
        BleAdvertisementType::ConnectableDirected};
    SimBlePhone phone;
    phone.name = "instance " + std::to_string(number);
    phone.address = address;
    phone.rssi = rssi;
    // Units of 0.625 ms.
    phone.intervalMs = std::max(1u, instance.parameters.intervalMin * 5u / 8u);
    uint8_t type = instance.parameters.advertisingType;
    phone.type = type < 5 ? kTypes[type] : BleAdvertisementType::NonConnectableUndirected;
    phone.advertisement = ParseSections(instance.data);
    phone.scanResponse = ParseSections(instance.scanResponse);
    return phone;
}

bool SameAdvertiser(const SimBlePhone& a, const SimBlePhone& b) {
    auto same = [](const auto& x, const auto& y) {
        return x.size() == y.size() &&
               std::equal(x.begin(), x.end(), y.begin(), [](const auto& s, const auto& t) {
                   return s.dataType == t.dataType && s.data == t.data;
               });
    };
    return a.address == b.address && a.intervalMs == b.intervalMs && a.type == b.type &&
           same(a.advertisement, b.advertisement) && same(a.scanResponse, b.scanResponse);
}

}  // namespace

std::vector<platform::BleDataSection> ParseSections(const std::vector<uint8_t>& data) {
    std::vector<platform::BleDataSection> sections;
    size_t at = 0;
    while (at < data.size() && data[at] != 0 && data.size() - at - 1 >= data[at]) {
        size_t length = data[at];
        sections.push_back({data[at + 1], {data.begin() + at + 2, data.begin() + at + 1 + length}});
        at += 1 + length;
    }
    return sections;
}

bool World::AnyStarted() const {
    return std::any_of(watchers.begin(), watchers.end(), [&](const auto& entry) {
        return entry.second.epoch == epoch && entry.second.status == BleWatcherStatus::Started;
    });
}

void World::Place(const SimBlePhone& phone) {
    auto& advertiser = air[phone.name];
    advertiser = Advertiser{phone, ++lastGeneration, false};
    if (phone.onAir) {
        Schedule(phone.name);
    }
}

void World::Schedule(const std::string& name) {
    auto& advertiser = air.at(name);
    if (advertiser.ticking || !advertiser.phone.onAir || !AnyStarted()) {
        return;
    }
    advertiser.ticking = true;
    clock.Post(std::max(1u, advertiser.phone.intervalMs),
               [weak = weak_from_this(), name, generation = advertiser.generation] {
                   if (auto world = weak.lock()) {
                       world->Tick(name, generation);
                   }
               });
}

void World::Tick(const std::string& name, uint64_t generation) {
    Events events;
    {
        std::lock_guard<std::mutex> lock(mutex);
        auto found = air.find(name);
        if (detached || found == air.end() || found->second.generation != generation) {
            return;
        }
        auto& advertiser = found->second;
        advertiser.ticking = false;
        const SimBlePhone& phone = advertiser.phone;
        int64_t timestamp = static_cast<int64_t>(clock.UnixTimeMs()) * 10000 + kUnixEpochAsDateTime;
        auto advertisement = Received(phone, phone.type, phone.advertisement, timestamp);
        auto response =
            Received(phone, BleAdvertisementType::ScanResponse, phone.scanResponse, timestamp);
        bool responds = Scannable(phone.type) && !phone.scanResponse.empty();
        for (const auto& [id, watcher] : watchers) {
            if (watcher.epoch != epoch || watcher.status != BleWatcherStatus::Started) {
                continue;
            }
            bool active = watcher.mode == platform::BleScanningMode::Active;
            for (const auto* event : {&advertisement, responds && active ? &response : nullptr}) {
                if (event && Passes(watcher, *event)) {
                    events.push_back(
                        Delivery(*this, &World::watchers, &WatcherRecord::received, id,
                                 [object = watcher.object, event = *event](const auto& handler) {
                                     if (auto sender = object.lock()) {
                                         handler(*sender, event);
                                     }
                                 }));
                }
            }
        }
        Schedule(name);
    }
    Run(events);
}

void World::Stopped(uint64_t id, platform::BluetoothError error, Events& events) {
    events.push_back(Delivery(*this, &World::watchers, &WatcherRecord::stopped, id,
                              [object = watchers.at(id).object, error](const auto& handler) {
                                  if (auto sender = object.lock()) {
                                      handler(*sender, error);
                                  }
                              }));
}

void World::Start(uint64_t id) {
    bool radioOn = bluetooth.BluetoothOn();
    Events events;
    {
        std::lock_guard<std::mutex> lock(mutex);
        auto& watcher = watchers.at(id);
        if (detached || watcher.epoch != epoch || watcher.status == BleWatcherStatus::Started) {
            return;
        }
        if (!radioOn || config.watcher.abortOnStart) {
            watcher.status = BleWatcherStatus::Aborted;
            Stopped(
                id,
                radioOn ? config.watcher.abortError : platform::BluetoothError::RadioNotAvailable,
                events);
        } else {
            watcher.status = BleWatcherStatus::Started;
            for (const auto& [name, advertiser] : air) {
                Schedule(name);
            }
        }
    }
    PostEvents(clock, std::move(events));
}

void World::Stop(uint64_t id) {
    Events events;
    {
        std::lock_guard<std::mutex> lock(mutex);
        auto& watcher = watchers.at(id);
        if (watcher.status != BleWatcherStatus::Started) {
            return;
        }
        watcher.status = BleWatcherStatus::Stopped;
        if (watcher.epoch == epoch && !detached) {
            Stopped(id, platform::BluetoothError::Success, events);
        }
    }
    PostEvents(clock, std::move(events));
}

void World::BluetoothChanged() {
    if (bluetooth.BluetoothOn()) {
        return;
    }
    Events events;
    std::lock_guard<std::mutex> lock(mutex);
    for (auto& [id, watcher] : watchers) {
        if (watcher.epoch != epoch || watcher.status != BleWatcherStatus::Started) {
            continue;
        }
        watcher.status = BleWatcherStatus::Aborted;
        if (!config.watcher.silentOnRadioOff) {
            Stopped(id, platform::BluetoothError::RadioNotAvailable, events);
        }
    }
    PostEvents(clock, std::move(events));
}

uint32_t World::Control(const SimBluetoothConfig::Controller& radio, uint32_t code,
                        const std::vector<uint8_t>& input, std::vector<uint8_t>& output,
                        uint32_t outputSize) {
    uint64_t address = radio.address & 0xFFFFFFFFFFFFull;
    if (code == platform::hci::kIoctlGetLocalInfo) {
        SimLocalRadio local{address,
                            radio.classOfDevice,
                            DE::UnicodeToUTF8(radio.name),
                            radio.manufacturer,
                            radio.lmpSubversion,
                            0};
        {
            std::lock_guard<std::mutex> lock(mutex);
            local.lmpVersion = config.lmpVersion;
        }
        return SimLocalInfo(local, output, outputSize);
    }
    if (code != platform::hci::kIoctlVendorCommand) {
        return platform::kErrorNotSupported;
    }
    {
        std::lock_guard<std::mutex> lock(mutex);
        if (!loadDriverEnabled) {
            output.clear();
            return kErrorPrivilegeNotHeld;
        }
    }
    uint32_t waitMs = 0;
    uint32_t error =
        controller.VendorCommand(radio.manufacturer, address, input, output, outputSize, waitMs);
    clock.Sleep(waitMs);
    RefreshOwn();
    return error;
}

std::vector<uint8_t> World::Send(const std::vector<uint8_t>& packet) {
    uint32_t noAnswerWaitMs = 0;
    {
        std::lock_guard<std::mutex> lock(mutex);
        noAnswerWaitMs = config.controller.noAnswerWaitMs;
    }
    if (!bluetooth.BluetoothOn()) {
        clock.Sleep(noAnswerWaitMs);
        return {};
    }
    auto answer = controller.Command(packet);
    clock.Sleep(answer.event.empty() ? noAnswerWaitMs : answer.latencyMs);
    RefreshOwn();
    return answer.event;
}

void World::RefreshOwn() {
    auto instances = controller.Instances();
    std::lock_guard<std::mutex> lock(mutex);
    for (size_t i = 0; i < instances.size(); ++i) {
        auto own =
            OwnAdvertiser(static_cast<uint8_t>(i + 1), instances[i], ownAddress, config.ownRssi);
        auto found = air.find(own.name);
        if (!instances[i].enabled) {
            if (found != air.end()) {
                air.erase(found);
            }
        } else if (found == air.end() || !SameAdvertiser(found->second.phone, own)) {
            Place(own);
        }
    }
}

}  // namespace connectkit::sim::ble
