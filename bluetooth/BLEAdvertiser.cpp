// The advertiser front: five instances and the routing of each request.
#include "connectkit/BLEAdvertiser.h"

#include <mutex>
#include <new>

#include "SDK/Util/LogTool/LogTool.h"
#include "bluetooth/RadioObservers.h"
#include "bluetooth/VendorHciDevice.h"
#include "bluetooth/VendorMultiAdv.h"
#include "foundation/FunctionName.h"
#include "foundation/Guarded.h"
#include "platform/Platform.h"
#include "platform/suite/NetworkAdapter.h"

namespace {

using connectkit::bluetooth::kErrorInvalidParameter;
constexpr int kNearPairInterval = 32;
constexpr int kTestInterval = 32;

// The caller's bytes, or false (logged, last error 87) for null data or a
// negative length.
bool CopyInput(BLEAdvertiser& front, const char* function, const uint8_t* data, int length,
               std::vector<uint8_t>& bytes) {
    if (!data || length < 0) {
        LogErrorFun("%s null data or negative length %d", function, length);
        front.SetLastError(kErrorInvalidParameter);
        return false;
    }
    bytes.assign(data, data + length);
    return true;
}

using LogFunction = void (*)(const char*, ...);

// The single-payload starts: "%s start", the caller's bytes, then `call` on
// `advertiser`; `failure` for refused input or a missing instance (logged
// with `missing`).
template <typename Result, typename Call>
Result StartOn(BLEAdvertiser& front, const char* function, const uint8_t* data, int length,
               IBLEAdvertiser* advertiser, LogFunction log, const char* missing, Result failure,
               const Call& call) {
    return Guarded(function, failure, [&] {
        LogWarnFun("%s start", function);
        std::vector<uint8_t> bytes;
        if (!CopyInput(front, function, data, length, bytes)) {
            return failure;
        }
        if (!advertiser) {
            log(missing, function);
            return failure;
        }
        return call(*advertiser, bytes);
    });
}

IBLEAdvertiser* NewInstance(int vendorType, uint8_t instance) {
    return new (std::nothrow) VendorMultiAdv(vendorType, instance);
}

}  // namespace

BLEAdvertiser::BLEAdvertiser()
    : mutex_(connectkit::platform::Current().clock().NewMutex(false, 0)),
      callbacks_(std::make_unique<connectkit::bluetooth::ObserverList<INotification>>()) {}

BLEAdvertiser::~BLEAdvertiser() = default;

BLEAdvertiser& AdvertiserFront() {
    static BLEAdvertiser instance;
    return instance;
}

BLEAdvertiser* BLEAdvertiser::GetUniqueInstance() {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start", function);
    auto& instance = AdvertiserFront();
    Guarded(function, [&instance] { instance.init(); });
    LogWarnFun("%s end", function);
    return &instance;
}

void BLEAdvertiser::ReleaseUniqueInstance() {
    // Not through GetUniqueInstance: that would build the five instances
    // again only to tear them down.
    Guarded(CK_FUNCTION, [] { AdvertiserFront().unInit(); });
}

void BLEAdvertiser::init() {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        std::lock_guard<connectkit::platform::Mutex> guard(*mutex_);
        if (initialised_) {
            return;
        }
        LogWarnFun("%s start", function);
        const int vendorType = NetworkAdapter::GetWifiManuType();
        advertiserA_ = NewInstance(vendorType, 1);
        advertiserB_ = NewInstance(vendorType, 2);
        advertiserC_ = NewInstance(vendorType, 3);
        advertiserBeamlet_ = NewInstance(vendorType, 4);
        advertiserTest_ = NewInstance(vendorType, 5);
        initialised_ = true;
        LogWarnFun("%s end", function);
    });
}

void BLEAdvertiser::unInit() {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        std::lock_guard<connectkit::platform::Mutex> guard(*mutex_);
        for (auto** advertiser :
             {&advertiserA_, &advertiserB_, &advertiserC_, &advertiserBeamlet_, &advertiserTest_}) {
            if (*advertiser) {
                Guarded(function, [advertiser] { (*advertiser)->StopAdvertise(); });
                delete *advertiser;
                *advertiser = nullptr;
            }
        }
        initialised_ = false;
    });
}

bool BLEAdvertiser::StartAdvertise(const uint8_t* data, int length, unsigned) {
    return StartOn(*this, CK_FUNCTION, data, length, advertiserA_, LogErrorFun,
                   "%s advertiserA is null.", false,
                   [](IBLEAdvertiser& advertiser, const std::vector<uint8_t>& bytes) {
                       return advertiser.StartAdvertise(bytes, {});
                   });
}

bool BLEAdvertiser::StartAdvertise(const std::vector<const uint8_t*>& buffers,
                                   const std::vector<int>& lengths, unsigned interval) {
    const char* function = CK_FUNCTION;
    return Guarded(function, false, [&] {
        LogWarnFun("%s start", function);
        if (buffers.size() != lengths.size()) {
            LogErrorFun("%s failed,vecByteArray.size() != vecByteLenArray.size()", function);
            SetLastError(kErrorInvalidParameter);
            return false;
        }
        if (lengths.size() == 1) {
            return StartAdvertise(buffers[0], lengths[0], interval);
        }
        std::vector<uint8_t> first;
        std::vector<uint8_t> second;
        if (lengths.size() != 2) {
            LogErrorFun("%s takes one or two payloads, not %d", function,
                        static_cast<int>(lengths.size()));
            SetLastError(kErrorInvalidParameter);
            return false;
        }
        if (!CopyInput(*this, function, buffers[0], lengths[0], first) ||
            !CopyInput(*this, function, buffers[1], lengths[1], second)) {
            return false;
        }
        if (!advertiserA_ || !advertiserB_) {
            LogErrorFun("%s advertiserA || advertiserB is null.", function);
            return false;
        }
        bool result = false;
        if (singleInstance_) {
            result = advertiserA_->StartAdvertise(first, second);
        } else {
            result =
                advertiserA_->StartAdvertise(first, {}) && advertiserB_->StartAdvertise(second, {});
        }
        LogWarnFun("%s end ret:%d", function, result ? 1 : 0);
        if (!result) {
            StopAdvertise(0);
        }
        return result;
    });
}

bool BLEAdvertiser::StartAdvertiseForNearPair(const uint8_t* data, int length, unsigned) {
    return StartOn(*this, CK_FUNCTION, data, length, advertiserC_, LogErrorFun,
                   "%s advertiserC is null.", false,
                   [](IBLEAdvertiser& advertiser, const std::vector<uint8_t>& bytes) {
                       return advertiser.StartAdvertiseRawData(bytes, kNearPairInterval);
                   });
}

void BLEAdvertiser::StartAdvertiseForBeamlet(const std::vector<uint8_t>& adv,
                                             const std::vector<uint8_t>& resp) {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        LogWarnFun("%s start", function);
        if (advertiserBeamlet_) {
            advertiserBeamlet_->StartAdvertiseBeamlet(adv, resp);
        }
        LogWarnFun("%s end", function);
    });
}

int BLEAdvertiser::StartAdvertiseForTest(const uint8_t* data, int length) {
    return StartOn(*this, CK_FUNCTION, data, length, advertiserTest_, LogWarnFun,
                   "%s advertiserTest == nullptr", 0,
                   [](IBLEAdvertiser& advertiser, const std::vector<uint8_t>& bytes) {
                       return advertiser.StartAdvertiseTest(bytes, kTestInterval);
                   });
}

void BLEAdvertiser::StopAdvertise(int) {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        if (!advertiserA_ || !advertiserB_) {
            LogErrorFun("%s advertiserA || advertiserB is null.", function);
            return;
        }
        advertiserA_->StopAdvertise();
        if (!singleInstance_) {
            advertiserB_->StopAdvertise();
        }
    });
}

void BLEAdvertiser::StopAdvertiseForNearPair(int) {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        if (!advertiserC_) {
            LogErrorFun("%s advertiserC is null.", function);
            return;
        }
        advertiserC_->StopAdvertise();
    });
}

void BLEAdvertiser::StopAdvertiseForBeamlet() {
    Guarded(CK_FUNCTION, [this] {
        if (advertiserBeamlet_) {
            advertiserBeamlet_->StopAdvertise();
        }
    });
}

void BLEAdvertiser::StopAdvertiseForTest() {
    Guarded(CK_FUNCTION, [this] {
        if (advertiserTest_) {
            advertiserTest_->StopAdvertise();
        }
    });
}

bool BLEAdvertiser::IsNearPairAdvAvailable() {
    const char* function = CK_FUNCTION;
    return Guarded(function, false, [&] {
        if (!advertiserC_) {
            LogErrorFun("%s advertiserC is null", function);
            return false;
        }
        return advertiserC_->IsBluetoothAvailable();
    });
}

void BLEAdvertiser::CloseRealtekBTDevice() {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        if (!advertiserC_) {
            LogWarnFun("%s advertiserC == nullptr", function);
            return;
        }
        advertiserC_->CloseDevice();
    });
}

unsigned long BLEAdvertiser::GetLastError() {
    return lastError_;
}

void BLEAdvertiser::SetLastError(unsigned long code) {
    lastError_ = code;
    if (code == 0) {
        return;
    }
    Guarded(CK_FUNCTION, [&] {
        callbacks_->Deliver("BLEAdvertiser::INotification::OnAdvertiseError",
                            [code](INotification& callback) { callback.OnAdvertiseError(code); });
    });
}

void BLEAdvertiser::RegisterEventCallback(INotification* callback) {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        if (!callbacks_->AddOnce(callback)) {
            LogErrorFun("%s null or already registered", function);
        }
    });
}

void BLEAdvertiser::UnRegisterEventCallback(INotification* callback) {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] { callbacks_->Remove(callback, function); });
}
