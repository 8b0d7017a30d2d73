#include "bluetooth/VendorMultiAdv.h"

#include <algorithm>
#include <mutex>

#include "SDK/Util/LogTool/LogTool.h"
#include "bluetooth/RealtekBtLibrary.h"
#include "bluetooth/VendorHciCommand.h"
#include "foundation/FunctionName.h"
#include "foundation/Guarded.h"
#include "platform/Platform.h"

namespace bt = connectkit::bluetooth;
namespace realtek = connectkit::bluetooth::realtek;
namespace rtk = connectkit::platform::rtk;
using connectkit::platform::RadioState;
using Guard = std::lock_guard<connectkit::platform::Mutex>;

namespace {

constexpr size_t kMaxInput = 28;  // refused from here on, before building
constexpr size_t kMaxRaw = 32;
constexpr int kGeneralInterval = 80;
constexpr int kBeamletInterval = 32;
constexpr int kReopenFailed = 3;
constexpr int kMaxInterval = 0xFFFF;

void Report(int code) {
    if (code != 0) {
        AdvertiserFront().SetLastError(static_cast<unsigned long>(code));
    }
}

}  // namespace

IBLEAdvertiser::~IBLEAdvertiser() = default;

VendorMultiAdv::VendorMultiAdv(int vendorType, uint8_t instance)
    : vendorType_(vendorType),
      instance_(instance),
      lock_(connectkit::platform::Current().clock().NewMutex(true, 0)) {
    const char* function = CK_FUNCTION;
    LogWarnFun("%s start", function);
    // Outside our lock: the radio object may hold its own while it delivers
    // to us, which takes ours.
    auto* manage = ConnectKitBluetooth::BluetoothManage::GetInstance();
    manage->RegistBluetoothStateChangeCallback(this);
    LogWarnFun("%s RegistBluetoothStateChangeCallback", function);
    Guard guard(*lock_);
    isBtAvailable_ = manage->IsRadioAvailable();
    LogWarnFun("%s instance:%d, isBtAvailable:%d.", function, instance_, isBtAvailable_.load());
    if (isBtAvailable_) {
        if (OpenDevice() != 0) {
            LogErrorFun("%s OpenDevice failed", function);
        }
        if (!ForceStopAdvertise()) {
            LogErrorFun("%s StopAdvertise failed", function);
        }
    }
    LogWarnFun("%s end", function);
}

VendorMultiAdv::~VendorMultiAdv() {
    ConnectKitBluetooth::BluetoothManage::GetInstance()->UnRegistBluetoothStateChangeCallback(this);
    Guard guard(*lock_);
}

int VendorMultiAdv::OpenDevice() {
    const char* function = CK_FUNCTION;
    Guard guard(*lock_);
    if (vendorType_ != kVendorRealtek) {
        return static_cast<int>(device_.Open());
    }
    rtk::Device device = realtek::Open();
    if (device == rtk::InvalidDevice()) {
        LogErrorFun("%s Realtekbluetooth OpenDevice failed, device is invalid", function);
        return kReopenFailed;
    }
    realtekSlot_ = device;
    LogWarnFun("%s Realtekbluetooth device opened Radio is valid", function);
    return 0;
}

void VendorMultiAdv::CloseDevice() {
    Guard guard(*lock_);
    if (vendorType_ == kVendorRealtek) {
        realtek::Close();
        realtekSlot_ = nullptr;
    } else {
        device_.Close();
    }
}

bool VendorMultiAdv::IsBluetoothAvailable() {
    return isBtAvailable_;
}

bool VendorMultiAdv::StartAdvertise(const std::vector<uint8_t>& adv,
                                    const std::vector<uint8_t>& resp) {
    const char* function = CK_FUNCTION;
    int code = 0;
    {
        Guard guard(*lock_);
        bt::AdvBuffer advData{};
        bt::AdvBuffer respData{};
        size_t advLength = 0;
        size_t respLength = 0;
        if (adv.size() >= kMaxInput || resp.size() >= kMaxInput || !isBtAvailable_) {
            LogErrorFun("%s vecAdvInd.size():%d, vecScanResp.size():%d, isBtAvailable:%d.",
                        function, static_cast<int>(adv.size()), static_cast<int>(resp.size()),
                        isBtAvailable_.load());
            code = isBtAvailable_ ? bt::kErrorInvalidParameter : kErrorNotReady;
        } else if ((advLength = bt::BuildByFirstByte(adv, advData)) == 0) {
            LogErrorFun("%s advIndHciDataLen = 0", function);
            code = bt::kErrorInvalidParameter;
        } else if (!resp.empty() && (respLength = bt::BuildByFirstByte(resp, respData)) == 0) {
            LogErrorFun("%s scanRespHciDataLen = 0", function);
            code = bt::kErrorInvalidParameter;
        } else {
            code = SendBuilt(function, advData, advLength, respData, respLength, kGeneralInterval);
        }
    }
    Report(code);
    return code == 0;
}

bool VendorMultiAdv::StartAdvertiseBeamlet(const std::vector<uint8_t>& adv,
                                           const std::vector<uint8_t>& resp) {
    const char* function = CK_FUNCTION;
    int code = 0;
    {
        Guard guard(*lock_);
        if (adv.size() >= kMaxInput || resp.size() >= kMaxInput) {
            LogErrorFun("%s invalid data size,adv size:%d, resp size:%d", function,
                        static_cast<int>(adv.size()), static_cast<int>(resp.size()));
            code = bt::kErrorInvalidParameter;
        } else if (!isBtAvailable_) {
            LogErrorFun("%s bt is not available", function);
            code = kErrorNotReady;
        } else {
            bt::AdvBuffer advData{};
            bt::AdvBuffer respData{};
            size_t advLength =
                bt::BuildAdStructure(bt::kAdTypeServiceData16, bt::kBeamletUuid, adv, advData);
            size_t respLength = resp.empty() ? 0
                                             : bt::BuildAdStructure(bt::kAdTypeManufacturer,
                                                                    bt::kCompanyId, resp, respData);
            code = SendBuilt(function, advData, advLength, respData, respLength, kBeamletInterval);
        }
    }
    Report(code);
    return code == 0;
}

int VendorMultiAdv::SendBuilt(const char* function, const bt::AdvBuffer& adv, size_t advLength,
                              const bt::AdvBuffer& resp, size_t respLength, int interval) {
    int code = VendorSendAdvertise(adv.data(), advLength, respLength ? resp.data() : nullptr,
                                   respLength, false, randomAddress_, interval);
    if (code == 0) {
        isOnAdv_ = true;
        LogWarnFun("%s end success,instance:%d.", function, instance_);
    } else {
        LogErrorFun("%s VendorSendAdvertise failed,instance %d, error code %d", function, instance_,
                    code);
    }
    return code;
}

int VendorMultiAdv::SendAdv(const std::vector<uint8_t>& data, int interval) {
    Guard guard(*lock_);
    if (data.size() >= kMaxRaw || !isBtAvailable_) {
        LogErrorFun("%s vecAdvInd.size() %d,m_bIsBtAvailable %d.", CK_FUNCTION,
                    static_cast<int>(data.size()), isBtAvailable_.load());
        return isBtAvailable_ ? bt::kErrorInvalidParameter : kErrorNotReady;
    }
    bt::AdvBuffer buffer{};
    std::copy(data.begin(), data.end(), buffer.begin());
    return VendorSendAdvertise(buffer.data(), data.size(), nullptr, 0, false, randomAddress_,
                               interval);
}

bool VendorMultiAdv::StartAdvertiseRawData(const std::vector<uint8_t>& data, int interval) {
    int code = 0;
    {
        Guard guard(*lock_);
        code = SendAdv(data, interval);
        if (code == 0) {
            isOnAdv_ = true;
        } else {
            LogErrorFun("%s SendAdv failed, instance:%d,error code:%d.", CK_FUNCTION, instance_,
                        code);
        }
    }
    Report(code);
    return code == 0;
}

int VendorMultiAdv::StartAdvertiseTest(const std::vector<uint8_t>& data, int interval) {
    int code = 0;
    {
        Guard guard(*lock_);
        code = SendAdv(data, interval);
        isOnAdv_ = true;
    }
    Report(code);
    return code;
}

int VendorMultiAdv::VendorSendAdvertise(const uint8_t* adv, size_t advLength, const uint8_t* resp,
                                        size_t respLength, bool randomAddress,
                                        const uint8_t (&address)[6], int interval) {
    const char* function = CK_FUNCTION;
    Guard guard(*lock_);
    LogWarnFun("%s start vendorType %d, instance %d, sendInterval %d, scanRespLen %d", function,
               vendorType_, instance_, interval, static_cast<int>(respLength));
    if (interval < 0 || interval > kMaxInterval || advLength > bt::kAdvDataMax ||
        respLength > bt::kAdvDataMax || (respLength && !resp)) {
        LogErrorFun("%s interval or lengths out of range", function);
        return bt::kErrorInvalidParameter;
    }
    const auto parameters = bt::MultiAdvParameters(static_cast<uint16_t>(interval), respLength > 0,
                                                   randomAddress, address, instance_);
    if (vendorType_ != kVendorRealtek) {
        bt::AdvBuffer advData{};
        bt::AdvBuffer respData{};
        std::copy(adv, adv + advLength, advData.begin());
        if (respLength) {
            std::copy(resp, resp + respLength, respData.begin());
        }
        return static_cast<int>(
            device_.SendAdvertise(parameters, advData, advLength, respData, respLength));
    }
    int result = RealtekSend(parameters, adv, advLength, resp, respLength);
    if (result == rtk::kRtkSuccess) {
        return 0;
    }
    LogErrorFun("%s RealtekApplSendAdv failed, instance:%d,error code:%d.", function, instance_,
                result);
    realtek::Close();
    realtekSlot_ = nullptr;
    if (OpenDevice() != 0) {
        realtekSlot_ = nullptr;
        return 0;
    }
    if (realtek::CloseAdv(instance_) != rtk::kRtkSuccess) {
        LogErrorFun("%s RealtekApplCloseAdv failed", function);
    }
    result = RealtekSend(parameters, adv, advLength, resp, respLength);
    if (result == rtk::kRtkSuccess) {
        isOnAdv_ = true;
        LogWarnFun("%s success, TRY TIMES*2, instance:%d.", function, instance_);
        return 1;
    }
    LogErrorFun("%s RealtekApplSendAdv failed,TRY TIMES*2, instance:%d,error code:%d.", function,
                instance_, result);
    return 0;
}

int VendorMultiAdv::RealtekSend(const rtk::MultiAdvParam& parameters, const uint8_t* adv,
                                size_t advLength, const uint8_t* resp, size_t respLength) {
    int result = realtek::SetParameters(parameters);
    if (result != rtk::kRtkSuccess) {
        return result;
    }
    return realtek::SendAdv(instance_, adv, static_cast<uint8_t>(advLength), resp,
                            static_cast<uint8_t>(respLength));
}

bool VendorMultiAdv::StopInstance() {
    if (vendorType_ == kVendorRealtek) {
        return realtek::CloseAdv(instance_) == rtk::kRtkSuccess;
    }
    return device_.CloseAdvertise(instance_) == 0;
}

bool VendorMultiAdv::Stop(bool force) {
    const char* function =
        force ? "VendorMultiAdv::ForceStopAdvertise" : "VendorMultiAdv::StopAdvertise";
    Guard guard(*lock_);
    LogWarnFun("%s start instance:%d,isBtAvailable:%d,isOnAdv:%d.", function, instance_,
               isBtAvailable_.load(), isOnAdv_.load());
    if (!force && (!isBtAvailable_ || !isOnAdv_)) {
        return true;
    }
    const bool stopped = StopInstance();
    if (!force) {
        isOnAdv_ = false;
    }
    if (!stopped) {
        LogErrorFun("%s end failed,instance:%d.", function, instance_);
        return false;
    }
    LogWarnFun("%s end success,instance:%d.", function, instance_);
    return true;
}

bool VendorMultiAdv::StopAdvertise() {
    return Stop(false);
}

bool VendorMultiAdv::ForceStopAdvertise() {
    return Stop(true);
}

// On whichever thread the radio object notifies.
void VendorMultiAdv::OnBluetoothStateChanged(RadioState state) {
    Guard guard(*lock_);
    LogWarnFun("%s BluetoothState %d, isBtAvailable %d", CK_FUNCTION, static_cast<int>(state),
               isBtAvailable_.load());
    if (state == RadioState::On) {
        isBtAvailable_ = true;
        if (OpenDevice() != 0) {
            CloseDevice();
        }
        return;
    }
    CloseDevice();
    isBtAvailable_ = false;
}
