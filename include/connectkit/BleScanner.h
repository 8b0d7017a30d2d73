#pragma once
// Bluetooth LE advertisements of the suite's phones, through the platform's
// advertisement watcher, handed to registered observers.
//
// An advertisement is delivered when it carries exactly one section of the
// suite's kinds (bluetooth/ScanFilter.h): manufacturer data under companyId,
// delivered under serviceUUID; or service data under serviceUUID or 0xFDEE,
// delivered under its own UUID. Both kinds at once are dropped.
//
// Decisions of our own:
// - The second 64-bit value handed to observers is the event's time stamp
//   (a Windows DateTime: 100-ns intervals since 1601-01-01 UTC).
// - minSignalStrength is the watcher's in-range threshold, set in the
//   constructor: the platform drops weaker advertisements before they reach
//   us.
// - _BLEScanFilter is one byte pattern: `length` bytes of `data` at
//   `offset` within a section of type `dataType` (offset counted from the
//   section's first byte after its type). SetBytesFilter replaces the
//   watcher's patterns with one per filter; an advertisement passes when
//   any one matches, or when none is set. A null filter, a length of 0 or
//   over kMaxFilterBytes, or a pattern reaching past a legacy section's 29
//   bytes is skipped with a log line; the others still apply.
// - Stop asks the watcher to stop and returns at once. The observers hear
//   "stopped" on the platform's thread when the watcher reports it; with
//   Bluetooth off some platforms never do, so nothing waits for it.
// - Observers are called on the platform's thread, over a copy of the list:
//   one may unregister (itself or another) during delivery, and an
//   unregistration from another thread returns once no delivery to that
//   observer is under way; what one throws is caught and logged and the
//   others still hear. Registering a null or
//   an already registered observer is refused with a log line.
// - The watcher's handlers reach this object until the destructor removes
//   them; the destructor then waits (up to 5 s) for a call the platform's
//   thread is still making, so no handler outlives the scanner. An observer
//   must not destroy the scanner from inside its own call. The module pins
//   itself before handing the handlers over (platform/ModuleLifetime.h).
// - When the platform refuses to create a watcher, every operation logs and
//   does nothing.
#include <cstdint>
#include <list>
#include <memory>
#include <vector>

#include "connectkit/Export.h"

namespace connectkit::platform {
class BleAdvertisementWatcher;
struct BleAdvertisementReceived;
enum class BluetoothError : int32_t;
}  // namespace connectkit::platform
namespace connectkit::bluetooth {
class DeliveryGate;
template <typename Observer>
class ObserverList;
}  // namespace connectkit::bluetooth

namespace ConnectKit {

// The platform's advertisement type (BluetoothLEAdvertisementType). The
// underlying type is fixed so that any value the platform hands over, even
// one this list does not name, is a valid BleAdvType.
enum BleAdvType : int32_t {
    BLE_ADV_CONNECTABLE_UNDIRECTED = 0,
    BLE_ADV_CONNECTABLE_DIRECTED = 1,
    BLE_ADV_SCANNABLE_UNDIRECTED = 2,
    BLE_ADV_NON_CONNECTABLE_UNDIRECTED = 3,
    BLE_ADV_SCAN_RESPONSE = 4,
    BLE_ADV_EXTENDED = 5,
};

struct _BLEScanFilter {
    static constexpr uint8_t kMaxFilterBytes = 29;
    uint8_t dataType = 0;
    int16_t offset = 0;
    uint8_t length = 0;
    uint8_t data[kMaxFilterBytes] = {};
};

class CONNECTKIT_API BleScanner {
public:
    class CONNECTKIT_API INotification {
    public:
        virtual void OnRecved(uint64_t address, uint64_t timestamp,
                              const std::vector<uint8_t>& payload, BleAdvType type,
                              uint16_t uuid) = 0;
        virtual void OnStopped() = 0;

    protected:
        // The library never deletes an observer.
        ~INotification() = default;
    };

    static const uint16_t companyId;
    static const uint16_t serviceUUID;
    static const uint8_t serviceDataType;
    static const int16_t minSignalStrength;

    BleScanner();
    ~BleScanner();
    BleScanner(const BleScanner&) = delete;
    BleScanner& operator=(const BleScanner&) = delete;

    void Start();
    void Stop();
    // Kept as the suite knows it: the company identifier is fixed.
    void SetComanyIdFilter(unsigned short companyId);
    void SetBytesFilter(const std::list<_BLEScanFilter*>& filters);
    void RegisterRecvedCallback(INotification* observer);
    void UnRegisterRecvedCallback(INotification* observer);

private:
    void OnWatcherRecved(connectkit::platform::BleAdvertisementWatcher& watcher,
                         const connectkit::platform::BleAdvertisementReceived& args);
    void OnWatcherStopped(connectkit::platform::BleAdvertisementWatcher& watcher,
                          connectkit::platform::BluetoothError error);

    std::shared_ptr<connectkit::platform::BleAdvertisementWatcher> watcher_;
    int64_t receivedToken_ = 0;
    int64_t stoppedToken_ = 0;
    std::unique_ptr<connectkit::bluetooth::ObserverList<INotification>> observers_;
    // The watcher's handlers pass it; the destructor waits for them.
    std::shared_ptr<connectkit::bluetooth::DeliveryGate> gate_;
};

}  // namespace ConnectKit
