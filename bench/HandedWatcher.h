#pragma once
// The simulated PC with a watcher that hears only what it is handed: the
// benches and fuzzers drive the scanner's receive path (filter, copy,
// delivery) directly, on the caller's thread, without the air's timers.
// The backend is the simulated PC in everything else; NewWatcher hands out
// the handed watcher while `handOut` is set, the air's otherwise.

#include <atomic>
#include <memory>

#include "platform/Platform.h"
#include "platform/sim/SimulatedPc.h"

namespace connectkit::bench {

class HandedWatcher final : public platform::BleAdvertisementWatcher {
public:
    // Calls the Received handler, if one is added, with `received`.
    void Hand(const platform::BleAdvertisementReceived& received) {
        if (received_) {
            received_(*this, received);
        }
    }

    platform::BleWatcherStatus Status() override { return status_; }
    platform::BleScanningMode ScanningMode() override { return mode_; }
    void SetScanningMode(platform::BleScanningMode mode) override { mode_ = mode; }
    void SetInRangeThreshold(std::optional<int16_t>) override {}
    void SetBytePatterns(const std::vector<platform::BleBytePattern>&) override {}
    void Start() override { status_ = platform::BleWatcherStatus::Started; }
    void Stop() override { status_ = platform::BleWatcherStatus::Stopped; }
    platform::EventToken AddReceived(ReceivedHandler handler) override {
        received_ = std::move(handler);
        return 1;
    }
    void RemoveReceived(platform::EventToken) override { received_ = nullptr; }
    platform::EventToken AddStopped(StoppedHandler) override { return 1; }
    void RemoveStopped(platform::EventToken) override {}

private:
    platform::BleWatcherStatus status_ = platform::BleWatcherStatus::Created;
    platform::BleScanningMode mode_ = platform::BleScanningMode::Passive;
    ReceivedHandler received_;
};

class HandedWatcherPc final : public platform::Backend, public platform::BluetoothLE {
public:
    sim::SimulatedPc& sim() { return *pc_; }
    std::shared_ptr<HandedWatcher> watcher = std::make_shared<HandedWatcher>();
    std::atomic<bool> handOut{false};

    std::shared_ptr<platform::BleAdvertisementWatcher> NewWatcher() override {
        if (handOut) {
            return watcher;
        }
        return pc_->bluetoothLE().NewWatcher();
    }

    std::wstring Name() const override { return pc_->Name(); }
    platform::Clock& clock() override { return pc_->clock(); }
    platform::Registry& registry() override { return pc_->registry(); }
    platform::Loader& loader() override { return pc_->loader(); }
    platform::FileSystem& files() override { return pc_->files(); }
    platform::Processes& processes() override { return pc_->processes(); }
    platform::DeviceSetup& devices() override { return pc_->devices(); }
    platform::NetworkAdapters& adapters() override { return pc_->adapters(); }
    platform::WiFiDirect& wifiDirect() override { return pc_->wifiDirect(); }
    platform::Firewall& firewall() override { return pc_->firewall(); }
    platform::DebugOutput& debugOutput() override { return pc_->debugOutput(); }
    platform::FileContents& fileContents() override { return pc_->fileContents(); }
    platform::SystemFacts& systemFacts() override { return pc_->systemFacts(); }
    platform::Wlan& wlan() override { return pc_->wlan(); }
    platform::Sockets& sockets() override { return pc_->sockets(); }
    platform::Radios& radios() override { return pc_->radios(); }
    platform::BluetoothClassic& bluetooth() override { return pc_->bluetooth(); }
    platform::BluetoothLE& bluetoothLE() override { return *this; }
    platform::Privileges& privileges() override { return pc_->privileges(); }

private:
    std::shared_ptr<sim::SimulatedPc> pc_ = std::make_shared<sim::SimulatedPc>();
};

// The process's backend, installed on first use; traps when another backend
// came first.
inline HandedWatcherPc& HandedPc() {
    static std::shared_ptr<HandedWatcherPc> pc = [] {
        auto created = std::make_shared<HandedWatcherPc>();
        if (!platform::Install(created)) {
            __builtin_trap();
        }
        return created;
    }();
    return *pc;
}

}  // namespace connectkit::bench
