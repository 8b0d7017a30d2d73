#pragma once
// Bluetooth LE advertisements of this PC: a general advertisement (one or
// two payloads), a pairing advertisement for a nearby phone, a casting
// advertisement and a test advertisement, each on an advertising instance
// of the controller (1 general, 2 the general's second payload, 3 pairing,
// 4 casting, 5 test), driven by bluetooth/VendorMultiAdv.h.
//
// Decisions of our own:
// - unInit stops each instance's advertising and destroys the instances
//   (each leaves the radio's observers first, waiting for a radio change
//   being delivered to it on another thread); the next GetUniqueInstance
//   builds them again. As it may wait, it is not for DLL_PROCESS_DETACH.
// - Observers (INotification) hear every non-zero code that SetLastError
//   records, on the thread that recorded it (the caller's, for a failed
//   start), after the instance has let go of its lock. What one throws is
//   caught and logged; one may unregister during delivery. Unregistration
//   from another thread returns once no delivery to it is under way
//   (bluetooth/RadioObservers.h). A null or an already registered observer
//   is refused with a log line.
// - Bad input is refused before any instance is asked, with a log line and
//   the last error ERROR_INVALID_PARAMETER (87): null data, a negative
//   length, buffer and length vectors of different sizes or with more than
//   two entries.
// - Start and stop take no lock: the suite calls them from one thread at a
//   time. Radio state changes reach the instances on other threads; each
//   instance serialises those with its own calls.
// - No exception crosses these functions.
#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "connectkit/Export.h"

namespace connectkit::platform {
class Mutex;
}
namespace connectkit::bluetooth {
template <typename Observer>
class ObserverList;
}  // namespace connectkit::bluetooth

// One advertising instance.
class CONNECTKIT_API IBLEAdvertiser {
public:
    virtual ~IBLEAdvertiser();
    virtual bool StartAdvertise(const std::vector<uint8_t>& adv,
                                const std::vector<uint8_t>& resp) = 0;
    virtual bool StartAdvertiseRawData(const std::vector<uint8_t>& data, int interval) = 0;
    virtual bool StartAdvertiseBeamlet(const std::vector<uint8_t>& adv,
                                       const std::vector<uint8_t>& resp) = 0;
    // 0 on success.
    virtual int StartAdvertiseTest(const std::vector<uint8_t>& data, int interval) = 0;
    virtual bool StopAdvertise() = 0;
    // Whether a Bluetooth radio is present and on.
    virtual bool IsBluetoothAvailable() = 0;
    virtual void CloseDevice() = 0;
};

class CONNECTKIT_API BLEAdvertiser {
public:
    class CONNECTKIT_API INotification {
    public:
        // A send failed with `errorCode` (the value GetLastError now reads).
        virtual void OnAdvertiseError(unsigned long errorCode) = 0;

    protected:
        // The library never deletes an observer.
        ~INotification() = default;
    };

    static BLEAdvertiser* GetUniqueInstance();
    static void ReleaseUniqueInstance();

    void init();
    void unInit();
    bool StartAdvertise(const uint8_t* data, int length, unsigned interval);
    bool StartAdvertise(const std::vector<const uint8_t*>& buffers, const std::vector<int>& lengths,
                        unsigned interval);
    // The interval is always 32 (20 ms), whatever the caller passes.
    bool StartAdvertiseForNearPair(const uint8_t* data, int length, unsigned interval);
    void StartAdvertiseForBeamlet(const std::vector<uint8_t>& adv,
                                  const std::vector<uint8_t>& resp);
    int StartAdvertiseForTest(const uint8_t* data, int length);
    void StopAdvertise(int);
    void StopAdvertiseForNearPair(int);
    void StopAdvertiseForBeamlet();
    void StopAdvertiseForTest();
    bool IsNearPairAdvAvailable();
    void CloseRealtekBTDevice();
    unsigned long GetLastError();
    void SetLastError(unsigned long code);
    void RegisterEventCallback(INotification* callback);
    void UnRegisterEventCallback(INotification* callback);

    BLEAdvertiser(const BLEAdvertiser&) = delete;
    BLEAdvertiser& operator=(const BLEAdvertiser&) = delete;

private:
    // The instance GetUniqueInstance hands out, without its log lines and
    // without building the advertising instances: how those report errors.
    friend BLEAdvertiser& AdvertiserFront();

    BLEAdvertiser();
    ~BLEAdvertiser();

    std::atomic<unsigned long> lastError_{0};
    bool singleInstance_ = false;
    IBLEAdvertiser* advertiserA_ = nullptr;
    IBLEAdvertiser* advertiserB_ = nullptr;
    IBLEAdvertiser* advertiserC_ = nullptr;
    IBLEAdvertiser* advertiserBeamlet_ = nullptr;
    IBLEAdvertiser* advertiserTest_ = nullptr;
    std::atomic<bool> initialised_{false};
    std::unique_ptr<connectkit::platform::Mutex> mutex_;
    std::unique_ptr<connectkit::bluetooth::ObserverList<INotification>> callbacks_;
};
