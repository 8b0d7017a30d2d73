#pragma once

#include <memory>

#include "platform/ports/BluetoothLE.h"
#include "platform/windows/winrt/RuntimeActivation.h"
#include "platform/windows/winrt/RuntimeCall.h"
#include "platform/windows/winrt/Subscriptions.h"
#include "platform/windows/winrt/abi/BluetoothAdvertisement.h"

namespace connectkit::win {

// Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementWatcher.
// The threshold box, the pattern buffers and the patterns come from the
// same runtime as the watcher. Made only through std::make_shared: its
// event delegates hold it weakly, so an event that arrives after the
// wrapper is gone finds nobody and is dropped.
//
// A received event is copied out whole before any handler sees it. An event
// whose reading fails (a call of the event, its advertisement or its
// vectors) is logged and dropped; a section or manufacturer entry whose
// buffer cannot be believed is logged and left out, the rest delivered. A
// Stopped event whose error cannot be read still arrives, as OtherError: the
// end of a watcher is never lost.
class WinRtAdvertisementWatcher final
    : public platform::BleAdvertisementWatcher,
      public std::enable_shared_from_this<WinRtAdvertisementWatcher> {
public:
    WinRtAdvertisementWatcher(std::shared_ptr<RuntimeActivation> runtime,
                              ComPtr<abi::IBluetoothLEAdvertisementWatcher> watcher)
        : runtime_(std::move(runtime)), watcher_(std::move(watcher)) {}
    ~WinRtAdvertisementWatcher() override;
    WinRtAdvertisementWatcher(const WinRtAdvertisementWatcher&) = delete;
    WinRtAdvertisementWatcher& operator=(const WinRtAdvertisementWatcher&) = delete;

    platform::BleWatcherStatus Status() override;
    platform::BleScanningMode ScanningMode() override;
    void SetScanningMode(platform::BleScanningMode mode) override;
    // The threshold travels in the runtime's own Int16 box
    // (PropertyValue.CreateInt16): the object the platform's projections
    // hand it, answering whatever the platform asks of a boxed value.
    void SetInRangeThreshold(std::optional<int16_t> dBm) override;
    // Every pattern is made before the filter's list is touched, so a
    // failure leaves the patterns set before in place.
    void SetBytePatterns(const std::vector<platform::BleBytePattern>& patterns) override;
    void Start() override;
    void Stop() override;
    platform::EventToken AddReceived(ReceivedHandler handler) override;
    void RemoveReceived(platform::EventToken token) override;
    platform::EventToken AddStopped(StoppedHandler handler) override;
    void RemoveStopped(platform::EventToken token) override;

private:
    std::shared_ptr<RuntimeActivation> runtime_;
    ComPtr<abi::IBluetoothLEAdvertisementWatcher> watcher_;
    Subscriptions<ReceivedHandler> receivedHandlers_;
    Subscriptions<StoppedHandler> stoppedHandlers_;
};

}  // namespace connectkit::win
