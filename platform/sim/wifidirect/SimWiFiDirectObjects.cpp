// The runtime objects SimWiFiDirect hands out: thin handles on their records
// in the world.
#include <mutex>

#include "platform/ports/Errors.h"
#include "platform/sim/wifidirect/SimWiFiDirectWorld.h"

namespace connectkit::sim::wfd {
namespace {

using platform::EventToken;

// RO_E_CLOSED: the object was closed.
constexpr int32_t kRoErrorClosed = static_cast<int32_t>(0x80000013u);

std::wstring Widen(const std::string& ascii) {
    return std::wstring(ascii.begin(), ascii.end());
}

class SimPublisher final : public platform::WiFiDirectPublisher {
public:
    SimPublisher(std::shared_ptr<World> world, uint64_t id) : world_(std::move(world)), id_(id) {}
    ~SimPublisher() override { world_->ReleasePublisher(id_); }

    platform::PublisherStatus Status() override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        return Record().status;
    }
    EventToken AddStatusChanged(StatusHandler handler) override {
        RequireHandler(handler);
        std::lock_guard<std::mutex> lock(world_->mutex);
        EventToken token = ++world_->lastToken;
        Record().statusChanged.Add(token, std::move(handler));
        return token;
    }
    void RemoveStatusChanged(EventToken token) override {
        HandlerTable<StatusHandler>::Entry removed;
        std::lock_guard<std::mutex> lock(world_->mutex);
        removed = Record().statusChanged.Take(token);
    }
    void SetAutonomousGroupOwnerEnabled(bool enabled) override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        Record().autonomousGroupOwner = enabled;
    }
    void SetLegacyEnabled(bool enabled) override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        Record().legacyEnabled = enabled;
    }
    void SetLegacySsid(const std::wstring& ssid) override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        Record().ssid = ssid;
    }
    void SetLegacyPassphrase(
        const std::shared_ptr<platform::PasswordCredential>& passphrase) override {
        std::shared_ptr<platform::PasswordCredential> previous = passphrase;
        std::lock_guard<std::mutex> lock(world_->mutex);
        std::swap(previous, Record().passphrase);
    }
    void Start() override { world_->StartPublisher(id_); }
    void Stop() override { world_->StopPublisher(id_); }

private:
    PublisherRecord& Record() { return world_->publishers.at(id_); }

    std::shared_ptr<World> world_;
    uint64_t id_;
};

class SimListener final : public platform::WiFiDirectConnectionListener {
public:
    SimListener(std::shared_ptr<World> world, uint64_t id) : world_(std::move(world)), id_(id) {}
    ~SimListener() override {
        ListenerRecord released;
        std::lock_guard<std::mutex> lock(world_->mutex);
        auto found = world_->listeners.find(id_);
        if (found != world_->listeners.end()) {
            released = std::move(found->second);
            world_->listeners.erase(found);
        }
    }

    EventToken AddConnectionRequested(RequestHandler handler) override {
        RequireHandler(handler);
        std::lock_guard<std::mutex> lock(world_->mutex);
        EventToken token = ++world_->lastToken;
        world_->listeners.at(id_).requested.Add(token, std::move(handler));
        return token;
    }
    void RemoveConnectionRequested(EventToken token) override {
        HandlerTable<RequestHandler>::Entry removed;
        std::lock_guard<std::mutex> lock(world_->mutex);
        removed = world_->listeners.at(id_).requested.Take(token);
    }

private:
    std::shared_ptr<World> world_;
    uint64_t id_;
};

class SimDevice final : public platform::WiFiDirectDevice {
public:
    SimDevice(std::shared_ptr<World> world, uint64_t id) : world_(std::move(world)), id_(id) {}
    ~SimDevice() override {
        DeviceRecord released;
        std::lock_guard<std::mutex> lock(world_->mutex);
        auto found = world_->devices.find(id_);
        if (found != world_->devices.end()) {
            released = std::move(found->second);
            world_->devices.erase(found);
        }
    }

    platform::WiFiDirectConnectionStatus ConnectionStatus() override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        return Open().connected ? platform::WiFiDirectConnectionStatus::Connected
                                : platform::WiFiDirectConnectionStatus::Disconnected;
    }
    std::wstring DeviceId() override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        return Open().deviceId;
    }
    EventToken AddConnectionStatusChanged(StatusHandler handler) override {
        RequireHandler(handler);
        std::lock_guard<std::mutex> lock(world_->mutex);
        auto& record = Open();
        EventToken token = ++world_->lastToken;
        record.statusChanged.Add(token, std::move(handler));
        return token;
    }
    // Closing already dropped every handler, so removing after Close is
    // harmless rather than an error.
    void RemoveConnectionStatusChanged(EventToken token) override {
        HandlerTable<StatusHandler>::Entry removed;
        std::lock_guard<std::mutex> lock(world_->mutex);
        removed = world_->devices.at(id_).statusChanged.Take(token);
    }
    // The endpoints go with the connection.
    std::vector<platform::EndpointPair> ConnectionEndpointPairs() override {
        std::lock_guard<std::mutex> lock(world_->mutex);
        const auto& record = Open();
        if (!record.connected) {
            return {};
        }
        return {record.endpoints};
    }
    void Close() override {
        std::map<EventToken, HandlerTable<StatusHandler>::Entry> dropped;
        std::lock_guard<std::mutex> lock(world_->mutex);
        auto& record = world_->devices.at(id_);
        record.closed = true;
        dropped = record.statusChanged.TakeAll();
    }

private:
    DeviceRecord& Open() {
        auto& record = world_->devices.at(id_);
        if (record.closed) {
            throw platform::PlatformError(kRoErrorClosed, "the device was closed");
        }
        return record;
    }

    std::shared_ptr<World> world_;
    uint64_t id_;
};

class SimRequest final : public platform::WiFiDirectConnectionRequest {
public:
    explicit SimRequest(std::wstring deviceId) : deviceId_(std::move(deviceId)) {}
    std::wstring DeviceId() override { return deviceId_; }

private:
    std::wstring deviceId_;
};

class SimCredential final : public platform::PasswordCredential {
public:
    void SetPassword(const std::wstring& password) override {
        std::lock_guard<std::mutex> lock(mutex_);
        password_ = password;
    }
    std::wstring Password() const override {
        std::lock_guard<std::mutex> lock(mutex_);
        return password_;
    }

private:
    mutable std::mutex mutex_;
    std::wstring password_;
};

uint64_t NextId(World& world) {
    std::lock_guard<std::mutex> lock(world.mutex);
    return ++world.lastId;
}

}  // namespace

std::shared_ptr<platform::WiFiDirectPublisher> MakePublisher(const std::shared_ptr<World>& world) {
    uint64_t id = NextId(*world);
    auto publisher = std::make_shared<SimPublisher>(world, id);
    std::lock_guard<std::mutex> lock(world->mutex);
    world->publishers[id].object = publisher;
    return publisher;
}

std::shared_ptr<platform::WiFiDirectConnectionListener> MakeListener(
    const std::shared_ptr<World>& world) {
    uint64_t id = NextId(*world);
    auto listener = std::make_shared<SimListener>(world, id);
    std::lock_guard<std::mutex> lock(world->mutex);
    world->listeners[id];
    return listener;
}

std::shared_ptr<platform::WiFiDirectDevice> MakeDevice(const std::shared_ptr<World>& world,
                                                       const std::wstring& deviceId,
                                                       uint64_t epoch) {
    uint64_t id = NextId(*world);
    auto device = std::make_shared<SimDevice>(world, id);
    {
        std::lock_guard<std::mutex> lock(world->mutex);
        if (world->detached || world->epoch != epoch) {
            return nullptr;
        }
        for (const auto& phone : world->phones) {
            if (phone.config.id != deviceId || phone.stage != PhoneRecord::Stage::Joined ||
                phone.config.fromIdFails) {
                continue;
            }
            auto& record = world->devices[id];
            record.object = device;
            record.deviceId = deviceId;
            record.phone = phone.serial;
            record.endpoints = {Widen(world->config.virtualAdapter.ip),
                                Widen(phone.config.address)};
            return device;
        }
    }
    return nullptr;
}

std::shared_ptr<platform::WiFiDirectConnectionRequest> MakeRequest(std::wstring deviceId) {
    return std::make_shared<SimRequest>(std::move(deviceId));
}

std::shared_ptr<platform::PasswordCredential> MakeCredential() {
    return std::make_shared<SimCredential>();
}

}  // namespace connectkit::sim::wfd
