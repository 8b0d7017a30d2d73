// The advertisement watcher's two handlers, the filter in front of the
// observers, and the byte patterns handed to the platform.
#include "connectkit/BleScanner.h"

#include <mutex>

#include "SDK/Util/LogTool/LogTool.h"
#include "bluetooth/AdvPayload.h"
#include "bluetooth/DeliveryGate.h"
#include "bluetooth/RadioObservers.h"
#include "bluetooth/ScanFilter.h"
#include "foundation/FunctionName.h"
#include "foundation/Guarded.h"
#include "platform/ModuleLifetime.h"
#include "platform/Platform.h"

namespace ConnectKit {

using connectkit::bluetooth::ClassifyAdvertisement;
using connectkit::bluetooth::ScanDelivery;
using connectkit::bluetooth::ScanVerdict;
namespace platform = connectkit::platform;

const uint16_t BleScanner::companyId = connectkit::bluetooth::kCompanyId;
const uint16_t BleScanner::serviceUUID = connectkit::bluetooth::kServiceUuid;
const uint8_t BleScanner::serviceDataType = connectkit::bluetooth::kAdTypeServiceData16;
const int16_t BleScanner::minSignalStrength = -87;

namespace {
// The data of a legacy section after its length and type bytes.
constexpr int kSectionBytes = 29;
}  // namespace

BleScanner::BleScanner()
    : observers_(std::make_unique<connectkit::bluetooth::ObserverList<INotification>>()),
      gate_(std::make_shared<connectkit::bluetooth::DeliveryGate>()) {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        watcher_ = platform::Current().bluetoothLE().NewWatcher();
        if (!watcher_) {
            LogErrorFun("%s the platform refused the advertisement watcher", function);
            return;
        }
        platform::KeepModuleLoaded();
        receivedToken_ = watcher_->AddReceived(
            [this, gate = gate_](platform::BleAdvertisementWatcher& sender,
                                 const platform::BleAdvertisementReceived& received) {
                gate->Pass([&] { OnWatcherRecved(sender, received); });
            });
        stoppedToken_ =
            watcher_->AddStopped([this, gate = gate_](platform::BleAdvertisementWatcher& sender,
                                                      platform::BluetoothError error) {
                gate->Pass([&] { OnWatcherStopped(sender, error); });
            });
    });
    // Set apart so that a threshold the platform refuses leaves a scanner
    // that hears every strength rather than one that hears nothing.
    if (watcher_) {
        Guarded(function, [&] { watcher_->SetInRangeThreshold(minSignalStrength); });
    }
}

BleScanner::~BleScanner() {
    // Each step on its own: a removal the platform refuses must not keep the
    // watcher running.
    const char* function = CK_FUNCTION;
    if (watcher_) {
        if (receivedToken_) {
            Guarded(function, [this] { watcher_->RemoveReceived(receivedToken_); });
        }
        if (stoppedToken_) {
            Guarded(function, [this] { watcher_->RemoveStopped(stoppedToken_); });
        }
        Guarded(function, [this] { watcher_->Stop(); });
    }
    Guarded(function,
            [this, function] { gate_->Close(function, connectkit::bluetooth::kDeliveryWaitMs); });
}

void BleScanner::Start() {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start", function);
    Guarded(function, [&] {
        if (!watcher_) {
            LogErrorFun("%s no advertisement watcher", function);
            return;
        }
        watcher_->SetScanningMode(platform::BleScanningMode::Active);
        watcher_->Start();
    });
    LogWarnFun("%s end", function);
}

void BleScanner::Stop() {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        if (!watcher_) {
            LogErrorFun("%s no advertisement watcher", function);
            return;
        }
        watcher_->Stop();
    });
}

void BleScanner::SetComanyIdFilter(unsigned short) {}

void BleScanner::SetBytesFilter(const std::list<_BLEScanFilter*>& filters) {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        std::vector<platform::BleBytePattern> patterns;
        for (const auto* filter : filters) {
            if (!filter || filter->length == 0 ||
                filter->length > _BLEScanFilter::kMaxFilterBytes || filter->offset < 0 ||
                filter->offset + filter->length > kSectionBytes) {
                LogErrorFun("%s filter skipped: null, or its bytes do not fit a section", function);
                continue;
            }
            patterns.push_back({filter->dataType, filter->offset,
                                std::vector<uint8_t>(filter->data, filter->data + filter->length)});
        }
        if (!watcher_) {
            LogErrorFun("%s no advertisement watcher", function);
            return;
        }
        watcher_->SetBytePatterns(patterns);
    });
}

void BleScanner::RegisterRecvedCallback(INotification* observer) {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] {
        if (!observers_->AddOnce(observer)) {
            LogErrorFun("%s null or already registered", function);
        }
    });
}

void BleScanner::UnRegisterRecvedCallback(INotification* observer) {
    const char* function = CK_FUNCTION;
    Guarded(function, [&] { observers_->Remove(observer, function); });
}

// On a platform thread.
void BleScanner::OnWatcherRecved(platform::BleAdvertisementWatcher&,
                                 const platform::BleAdvertisementReceived& args) {
    Guarded(CK_FUNCTION, [&] {
        ScanDelivery delivery;
        switch (ClassifyAdvertisement(args, delivery)) {
            case ScanVerdict::NotOurs:
                return;
            case ScanVerdict::OtherUuid:
                LogWarnFun("BleScanner ===== RECEIVE DATA ===== uuid != serviceUUID return");
                return;
            case ScanVerdict::ShortSection:
                LogWarnFun(
                    "BleScanner ===== RECEIVE DATA ===== service data shorter than its uuid");
                return;
            case ScanVerdict::Deliver:
                break;
        }
        const auto type = static_cast<BleAdvType>(args.advertisementType);
        const auto timestamp = static_cast<uint64_t>(args.timestamp);
        observers_->Deliver("ConnectKit::BleScanner::OnRecved", [&](INotification& observer) {
            observer.OnRecved(args.bluetoothAddress, timestamp, delivery.payload, type,
                              delivery.uuid);
        });
    });
}

// On a platform thread.
void BleScanner::OnWatcherStopped(platform::BleAdvertisementWatcher&, platform::BluetoothError) {
    Guarded(CK_FUNCTION, [this] {
        observers_->Deliver("ConnectKit::BleScanner::OnStopped",
                            [](INotification& observer) { observer.OnStopped(); });
    });
}

}  // namespace ConnectKit
