// The objects SimBluetooth hands out: thin handles on the world, the platform
// radios by record, the Win32 radios by controller.
#include <mutex>

#include "platform/ports/Errors.h"
#include "platform/sim/bluetooth/SimRadiosWorld.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/VirtualClock.h"

namespace connectkit::sim::radios {
namespace {

using platform::EventToken;

constexpr int32_t kInvalidArgument = static_cast<int32_t>(0x80070057u);
// RPC_E_DISCONNECTED: the object's server went away under it.
constexpr int32_t kDisconnected = static_cast<int32_t>(0x80010108u);
constexpr uint32_t kErrorInvalidParameter = 87;
constexpr uint32_t kErrorDeviceNotConnected = 1167;
// IOCTL_BTH_... that makes the stack reload the radio's local name.
constexpr uint32_t kReloadLocalName = 0x411008;

class SimRadio final : public platform::Radio {
public:
    SimRadio(std::shared_ptr<World> world, uint64_t id) : world_(std::move(world)), id_(id) {}
    ~SimRadio() override {
        RadioRecord released;
        std::lock_guard<std::mutex> lock(world_->mutex);
        auto found = world_->radios.find(id_);
        if (found != world_->radios.end()) {
            released = std::move(found->second);
            world_->radios.erase(found);
        }
    }

    platform::RadioKind Kind() override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        return Record().owner == kWifiOwner ? platform::RadioKind::WiFi
                                            : platform::RadioKind::Bluetooth;
    }
    platform::RadioState State() override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        const auto& record = Record();
        if (world_->Behaviour(record.owner).stateThrows) {
            throw platform::PlatformError(kDisconnected, "Radio.State: disconnected");
        }
        return world_->StateOf(record.owner, record.epoch);
    }
    std::wstring Name() override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        return Record().owner == kWifiOwner ? world_->config.wifi.name : L"Bluetooth";
    }
    void SetStateAsync(platform::RadioState state) override {
        int owner = 0;
        uint64_t epoch = 0;
        {
            std::lock_guard<std::mutex> lock(world_->mutex);
            owner = Record().owner;
            epoch = Record().epoch;
        }
        world_->RequestState(owner, epoch, state);
    }
    EventToken AddStateChanged(StateHandler handler) override {
        if (!handler) {
            throw platform::PlatformError(kInvalidArgument, "null event handler");
        }
        std::lock_guard<std::mutex> lock(world_->mutex);
        EventToken token = ++world_->lastToken;
        Record().stateChanged.Add(token, std::move(handler));
        return token;
    }
    void RemoveStateChanged(EventToken token) override {
        HandlerTable<StateHandler>::Entry removed;
        std::lock_guard<std::mutex> lock(world_->mutex);
        removed = Record().stateChanged.Take(token);
    }

private:
    RadioRecord& Record() { return world_->radios.at(id_); }

    std::shared_ptr<World> world_;
    uint64_t id_;
};

class SimClassicRadio final : public platform::BluetoothRadio {
public:
    SimClassicRadio(std::shared_ptr<World> world, size_t index, uint64_t epoch)
        : world_(std::move(world)), index_(index), epoch_(epoch) {}

    uint32_t Info(platform::BluetoothRadioInfo& info) override {
        info = {};
        if (auto error = FaultedCall(world_->faults, world_->clock, "bluetooth.radioInfo",
                                     kErrorDeviceNotConnected)) {
            return *error;
        }
        std::lock_guard<std::mutex> lock(world_->mutex);
        if (!world_->Running(static_cast<int>(index_), epoch_)) {
            return kErrorDeviceNotConnected;
        }
        const auto& controller = world_->controllers[index_];
        info.address = controller.config.address & 0xFFFFFFFFFFFFull;
        info.name = controller.name;
        info.classOfDevice = controller.config.classOfDevice;
        info.manufacturer = controller.config.manufacturer;
        info.lmpSubversion = controller.config.lmpSubversion;
        return platform::kErrorSuccess;
    }

    uint32_t Control(uint32_t code, const std::vector<uint8_t>& input, std::vector<uint8_t>& output,
                     uint32_t outputSize) override {
        output.assign(outputSize, 0);
        if (auto error = FaultedCall(world_->faults, world_->clock, "bluetooth.control",
                                     kErrorDeviceNotConnected)) {
            return *error;
        }
        std::unique_lock<std::mutex> lock(world_->mutex);
        if (!world_->Running(static_cast<int>(index_), epoch_)) {
            return kErrorDeviceNotConnected;
        }
        if (code != kReloadLocalName) {
            auto extension = world_->extension.lock();
            if (!extension) {
                return platform::kErrorNotSupported;
            }
            auto controller = world_->controllers[index_].config;
            controller.name = world_->controllers[index_].name;
            lock.unlock();
            return extension->Control(controller, code, input, output, outputSize);
        }
        if (input.size() < 4) {
            return kErrorInvalidParameter;
        }
        ++world_->history.nameReloads;
        world_->ReloadName(world_->controllers[index_]);
        output.clear();
        return platform::kErrorSuccess;
    }

private:
    std::shared_ptr<World> world_;
    size_t index_;
    uint64_t epoch_;
};

class SimRadioSearch final : public platform::BluetoothRadioSearch {
public:
    SimRadioSearch(std::shared_ptr<World> world, std::vector<size_t> remaining)
        : world_(std::move(world)), remaining_(std::move(remaining)) {}

    std::unique_ptr<platform::BluetoothRadio> Next(uint32_t& error) override {
        if (remaining_.empty()) {
            error = platform::kErrorNoMoreItems;
            return nullptr;
        }
        error = platform::kErrorSuccess;
        size_t index = remaining_.front();
        remaining_.erase(remaining_.begin());
        return MakeClassicRadio(world_, index);
    }

private:
    std::shared_ptr<World> world_;
    std::vector<size_t> remaining_;
};

}  // namespace

std::shared_ptr<platform::Radio> MakeRadio(const std::shared_ptr<World>& world, uint64_t id) {
    return std::make_shared<SimRadio>(world, id);
}

std::unique_ptr<platform::BluetoothRadio> MakeClassicRadio(const std::shared_ptr<World>& world,
                                                           size_t index) {
    std::lock_guard<std::mutex> lock(world->mutex);
    return std::make_unique<SimClassicRadio>(world, index, world->epoch);
}

std::unique_ptr<platform::BluetoothRadioSearch> MakeRadioSearch(const std::shared_ptr<World>& world,
                                                                std::vector<size_t> remaining) {
    return std::make_unique<SimRadioSearch>(world, std::move(remaining));
}

}  // namespace connectkit::sim::radios
