#pragma once
// Bluetooth LE advertisements as the Windows Runtime receives them
// (Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementWatcher),
// with the conventions of the other runtime ports:
// - NewWatcher returns null when the runtime refuses to create the watcher
//   (class not registered, activation failure); that is an answer.
// - Every other call that fails throws platform::PlatformError with the
//   HRESULT.
// - Handlers run on platform threads, never on the caller's; a handler
//   removed is not called again once Remove... returns, except for a call
//   already under way on another thread.
//
// What a watcher hands over comes from the air and is untrusted: sections
// arrive as the platform parsed them, of any length including 0, and an
// advertisement may carry any number of them.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/ports/RuntimeTypes.h"

namespace connectkit::platform {

// BluetoothLEScanningMode
enum class BleScanningMode : int32_t { Passive = 0, Active = 1, None = 2 };
// BluetoothLEAdvertisementType
enum class BleAdvertisementType : int32_t {
    ConnectableUndirected = 0,
    ConnectableDirected = 1,
    ScannableUndirected = 2,
    NonConnectableUndirected = 3,
    ScanResponse = 4,
    Extended = 5
};
// BluetoothLEAdvertisementWatcherStatus
enum class BleWatcherStatus : int32_t {
    Created = 0,
    Started = 1,
    Stopping = 2,
    Stopped = 3,
    Aborted = 4
};
// Windows.Devices.Bluetooth.BluetoothError
enum class BluetoothError : int32_t {
    Success = 0,
    RadioNotAvailable = 1,
    ResourceInUse = 2,
    DeviceNotConnected = 3,
    OtherError = 4,
    DisabledByPolicy = 5,
    NotSupported = 6,
    DisabledByUser = 7,
    ConsentRequired = 8,
    TransportNotSupported = 9
};

// BluetoothLEManufacturerData: the company identifier is not part of `data`.
struct BleManufacturerData {
    uint16_t companyId = 0;
    std::vector<uint8_t> data;
};

// BluetoothLEAdvertisementDataSection: one AD structure, its type and the
// bytes after the type.
struct BleDataSection {
    uint8_t dataType = 0;
    std::vector<uint8_t> data;
};

// BluetoothLEAdvertisementReceivedEventArgs with its advertisement, copied
// out. `dataSections` holds every section the platform parsed, manufacturer
// data (type 0xFF) included, in the order they came.
struct BleAdvertisementReceived {
    int16_t rawSignalStrengthInDBm = 0;
    // The 48-bit device address in the low bits.
    uint64_t bluetoothAddress = 0;
    BleAdvertisementType advertisementType = BleAdvertisementType::ConnectableUndirected;
    // DateTime: 100-ns intervals since 1601-01-01 UTC.
    int64_t timestamp = 0;
    std::vector<BleManufacturerData> manufacturerData;
    std::vector<BleDataSection> dataSections;
};

// BluetoothLEAdvertisementBytePattern: `data` must appear at `offset` within
// a section of type `dataType` for an advertisement to pass the filter.
struct BleBytePattern {
    uint8_t dataType = 0;
    int16_t offset = 0;
    std::vector<uint8_t> data;
};

class BleAdvertisementWatcher {
public:
    using ReceivedHandler = std::function<void(BleAdvertisementWatcher& sender,
                                               const BleAdvertisementReceived& received)>;
    // BluetoothLEAdvertisementWatcherStoppedEventArgs carries only its error.
    using StoppedHandler =
        std::function<void(BleAdvertisementWatcher& sender, BluetoothError error)>;

    virtual ~BleAdvertisementWatcher() = default;
    virtual BleWatcherStatus Status() = 0;
    virtual BleScanningMode ScanningMode() = 0;
    virtual void SetScanningMode(BleScanningMode mode) = 0;
    // SignalStrengthFilter().InRangeThresholdInDBm; nullopt removes it.
    virtual void SetInRangeThreshold(std::optional<int16_t> dBm) = 0;
    // AdvertisementFilter().BytePatterns(), replaced by `patterns`; an
    // advertisement passes when it matches any one of them (or none is set).
    virtual void SetBytePatterns(const std::vector<BleBytePattern>& patterns) = 0;
    // Both return at once. Start may end in Aborted, reported as Stopped
    // with an error; Stop ends in Stopped, reported the same way.
    virtual void Start() = 0;
    virtual void Stop() = 0;
    virtual EventToken AddReceived(ReceivedHandler handler) = 0;
    virtual void RemoveReceived(EventToken token) = 0;
    virtual EventToken AddStopped(StoppedHandler handler) = 0;
    virtual void RemoveStopped(EventToken token) = 0;
};

class BluetoothLE {
public:
    virtual ~BluetoothLE() = default;
    // new BluetoothLEAdvertisementWatcher(); null when the runtime refuses.
    virtual std::shared_ptr<BleAdvertisementWatcher> NewWatcher() = 0;
};

}  // namespace connectkit::platform
