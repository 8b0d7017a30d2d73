// The advertisement watcher SimBle hands out: a thin handle on its record in
// the world.
#include <mutex>

#include "platform/sim/bluetooth/SimBleWorld.h"

namespace connectkit::sim::ble {
namespace {

using platform::EventToken;

class SimWatcher final : public platform::BleAdvertisementWatcher {
public:
    SimWatcher(std::shared_ptr<World> world, uint64_t id) : world_(std::move(world)), id_(id) {}
    ~SimWatcher() override {
        WatcherRecord released;
        std::lock_guard<std::mutex> lock(world_->mutex);
        auto found = world_->watchers.find(id_);
        if (found != world_->watchers.end()) {
            released = std::move(found->second);
            world_->watchers.erase(found);
        }
    }

    platform::BleWatcherStatus Status() override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        return Record().status;
    }
    platform::BleScanningMode ScanningMode() override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        return Record().mode;
    }
    void SetScanningMode(platform::BleScanningMode mode) override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        Record().mode = mode;
    }
    void SetInRangeThreshold(std::optional<int16_t> dBm) override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        if (world_->config.watcher.refuseThreshold) {
            throw platform::PlatformError(static_cast<int32_t>(0x80004005u),
                                          "SignalStrengthFilter.InRangeThresholdInDBm: refused");
        }
        Record().threshold = dBm;
    }
    void SetBytePatterns(const std::vector<platform::BleBytePattern>& patterns) override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        Record().patterns = patterns;
    }
    void Start() override { world_->Start(id_); }
    void Stop() override { world_->Stop(id_); }

    EventToken AddReceived(ReceivedHandler handler) override {
        RequireHandler(handler);
        std::lock_guard<std::mutex> lock(world_->mutex);
        EventToken token = ++world_->lastToken;
        Record().received.Add(token, std::move(handler));
        return token;
    }
    void RemoveReceived(EventToken token) override {
        HandlerTable<ReceivedHandler>::Entry removed;
        std::lock_guard<std::mutex> lock(world_->mutex);
        removed = Record().received.Take(token);
    }
    EventToken AddStopped(StoppedHandler handler) override {
        RequireHandler(handler);
        std::lock_guard<std::mutex> lock(world_->mutex);
        EventToken token = ++world_->lastToken;
        Record().stopped.Add(token, std::move(handler));
        return token;
    }
    void RemoveStopped(EventToken token) override {
        HandlerTable<StoppedHandler>::Entry removed;
        std::lock_guard<std::mutex> lock(world_->mutex);
        removed = Record().stopped.Take(token);
    }

private:
    WatcherRecord& Record() { return world_->watchers.at(id_); }

    std::shared_ptr<World> world_;
    uint64_t id_;
};

}  // namespace

std::shared_ptr<platform::BleAdvertisementWatcher> MakeWatcher(
    const std::shared_ptr<World>& world) {
    std::lock_guard<std::mutex> lock(world->mutex);
    uint64_t id = ++world->lastId;
    auto watcher = std::make_shared<SimWatcher>(world, id);
    world->watchers[id].object = watcher;
    world->watchers[id].epoch = world->epoch;
    return watcher;
}

}  // namespace connectkit::sim::ble
