#pragma once
// One advertising instance of the controller's vendor multi-advertising
// feature, sent either through vendor HCI commands of our own (vendor type
// 0, and any type other than 1: bluetooth/VendorHciDevice.h) or through
// the Realtek Bluetooth library (type 1: bluetooth/RealtekBtLibrary.h). It
// builds the payloads itself (bluetooth/AdvPayload.h), follows the
// Bluetooth radio's state as an observer of BluetoothManage, and reports
// send errors to BLEAdvertiser::SetLastError of the front it reaches
// through AdvertiserFront (not GetUniqueInstance, whose log lines would
// flood a field log with one pair per error, and which builds the
// instances again after unInit).
//
// Kept as the suite knows it: after a failed first Realtek send the result
// is inverted (1 when the second attempt succeeded, 0 when it failed or the
// device could not be reopened), and StartAdvertiseTest marks the instance
// advertising whatever the result.
//
// Decisions of our own:
// - A lock of the clock port (recursive) serialises the calls with the
//   radio's state changes, which arrive on other threads; the error is
//   reported to the front after the lock is let go, so an observer there
//   may call back into any instance.
// - Refused input reports ERROR_INVALID_PARAMETER (87) and a send without a
//   radio ERROR_NOT_READY (21) to the front, beside its log line; an
//   interval outside 0..65535 is refused with 87.
// - The destructor leaves the radio's observers, which waits for a state
//   change being delivered to this object on another thread; the device
//   handle of the own path goes with the object, the Realtek library's
//   handle stays with the process.

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "bluetooth/AdvPayload.h"
#include "bluetooth/VendorHciDevice.h"
#include "connectkit/BLEAdvertiser.h"
#include "connectkit/BluetoothManage.h"
#include "platform/ports/VendorBluetooth.h"

BLEAdvertiser& AdvertiserFront();

class VendorMultiAdv final
    : public IBLEAdvertiser,
      public ConnectKitBluetooth::BluetoothManage::IBluetoothStateChangeNotification {
public:
    static constexpr int kVendorOwnHci = 0;
    static constexpr int kVendorRealtek = 1;
    static constexpr uint32_t kErrorNotReady = 21;

    VendorMultiAdv(int vendorType, uint8_t instance);
    ~VendorMultiAdv() override;
    VendorMultiAdv(const VendorMultiAdv&) = delete;
    VendorMultiAdv& operator=(const VendorMultiAdv&) = delete;

    bool StartAdvertise(const std::vector<uint8_t>& adv, const std::vector<uint8_t>& resp) override;
    bool StartAdvertiseRawData(const std::vector<uint8_t>& data, int interval) override;
    bool StartAdvertiseBeamlet(const std::vector<uint8_t>& adv,
                               const std::vector<uint8_t>& resp) override;
    int StartAdvertiseTest(const std::vector<uint8_t>& data, int interval) override;
    bool StopAdvertise() override;
    bool IsBluetoothAvailable() override;
    void CloseDevice() override;

    int OpenDevice();
    int SendAdv(const std::vector<uint8_t>& data, int interval);
    int VendorSendAdvertise(const uint8_t* adv, size_t advLength, const uint8_t* resp,
                            size_t respLength, bool randomAddress, const uint8_t (&address)[6],
                            int interval);
    bool ForceStopAdvertise();
    void OnBluetoothStateChanged(connectkit::platform::RadioState state) override;

    // Whether this instance is advertising, as it last recorded.
    bool IsOnAdv() const { return isOnAdv_; }

private:
    // Builds both payloads, sends, records success; the code (0 success).
    int SendBuilt(const char* function, const connectkit::bluetooth::AdvBuffer& adv,
                  size_t advLength, const connectkit::bluetooth::AdvBuffer& resp, size_t respLength,
                  int interval);
    int RealtekSend(const connectkit::platform::rtk::MultiAdvParam& parameters, const uint8_t* adv,
                    size_t advLength, const uint8_t* resp, size_t respLength);
    bool StopInstance();
    bool Stop(bool force);

    const int vendorType_;
    const uint8_t instance_;
    std::atomic<bool> isBtAvailable_{false};
    std::atomic<bool> isOnAdv_{false};
    uint8_t randomAddress_[6] = {};
    connectkit::bluetooth::VendorHciDevice device_;
    connectkit::platform::rtk::Device realtekSlot_ = nullptr;
    std::unique_ptr<connectkit::platform::Mutex> lock_;
};
