#include "bluetooth/VendorHciDevice.h"

#include <iterator>

#include "SDK/Util/LogTool/LogTool.h"
#include "bluetooth/HciCapture.h"
#include "bluetooth/VendorHciCommand.h"
#include "foundation/FunctionName.h"
#include "platform/Platform.h"
#include "platform/ports/BluetoothHci.h"

namespace connectkit::bluetooth {

namespace hci = platform::hci;

namespace {

// BTH_VENDOR_EVENT_INFO with the largest HCI event.
constexpr uint32_t kAnswerBytes = hci::event::kEventInfo + 2 + 255;
constexpr uint8_t kLmpVersion50 = 9;
constexpr uint32_t kBuild2004 = 19041;

// LMP version numbers as Bluetooth core versions.
const char* CoreVersion(uint8_t lmp) {
    static const char* const kNames[] = {"1.0b", "1.1", "1.2", "2.0", "2.1", "3.0", "4.0",
                                         "4.1",  "4.2", "5.0", "5.1", "5.2", "5.3", "5.4"};
    return lmp < std::size(kNames) ? kNames[lmp] : "newer than 5.4";
}

}  // namespace

VendorHciDevice::VendorHciDevice() = default;
VendorHciDevice::~VendorHciDevice() = default;

uint32_t VendorHciDevice::Open() {
    Close();
    auto& backend = platform::Current();
    std::unique_ptr<platform::BluetoothRadio> radio;
    uint32_t error = 0;
    auto search = backend.bluetooth().FindFirstRadio(radio, error);
    if (!search || !radio) {
        LogErrorFun("BleAdv,ApplOpenDevice failed.BluetoothFindFirstRadio failed.");
        return error ? error : kErrorInvalidHandle;
    }
    platform::BluetoothRadioInfo info;
    error = radio->Info(info);
    if (error != 0) {
        LogErrorFun("BleAdv,ApplOpenDevice failed.BluetoothGetRadioInfo failed.");
        return error;
    }
    error = backend.privileges().Enable(platform::kLoadDriverPrivilege);
    if (error != 0) {
        LogErrorFun("BleAdv,ApplOpenDevice failed.ApplAdjustPrivileges failed.");
        return error;
    }
    radio_ = std::move(radio);
    manufacturer_ = info.manufacturer;
    CheckVersion();
    return 0;
}

void VendorHciDevice::Close() {
    radio_.reset();
    manufacturer_ = 0;
    extendedChosen_ = false;
}

void VendorHciDevice::CheckVersion() {
    std::vector<uint8_t> local;
    platform::OsVersion os;
    if (radio_->Control(hci::kIoctlGetLocalInfo, {}, local, hci::localInfo::kSize) != 0 ||
        local.size() < hci::localInfo::kSize ||
        !platform::Current().systemFacts().ReadOsVersion(os)) {
        LogErrorFun("commpareBtVersion error");
        return;
    }
    const uint8_t lmp = local[hci::localInfo::kLmpVersion];
    LogWarnFun("GetBtVersion bluetooth version is = %s", CoreVersion(lmp));
    LogWarnFun("GetMicrosoftVersion Microsoft version is = %d", static_cast<int>(os.build));
    extendedChosen_ = lmp >= kLmpVersion50 && os.build >= kBuild2004;
}

uint32_t VendorHciDevice::Send(const std::vector<uint8_t>& parameters) {
    const unsigned subOpcode = parameters.empty() ? 0 : parameters[0];
    HciCapture::Command(HciCommandPacket(parameters));
    std::vector<uint8_t> output;
    uint32_t error =
        radio_->Control(hci::kIoctlVendorCommand, VendorCommandInput(manufacturer_, parameters),
                        output, kAnswerBytes);
    if (error == 0) {
        auto answer = ReadVendorAnswer(output);
        if (!answer.event.empty()) {
            HciCapture::Event(answer.event);
        }
        if (!answer.complete) {
            LogErrorFun("SendHciLeMultiAdvCmd bad answer (%s): %s", answer.fault.c_str(),
                        HexBytes(output).c_str());
            error = kErrorBadAnswer;
        } else if (answer.status != hci::kStatusSuccess) {
            error = kHciStatusBase | answer.status;
        }
    }
    if (error != 0) {
        LogErrorFun("SendHciLeMultiAdvCmd fail,opcode:0x%08x subOpcode:0x%08x errCode:%d",
                    static_cast<unsigned>(hci::kOpMultiAdvertising), subOpcode,
                    static_cast<int>(error));
    }
    return error;
}

uint32_t VendorHciDevice::SendAdvertise(const platform::rtk::MultiAdvParam& parameters,
                                        const AdvBuffer& adv, size_t advLength,
                                        const AdvBuffer& resp, size_t respLength) {
    if (!radio_) {
        return kErrorInvalidHandle;
    }
    if (advLength > kAdvDataMax || respLength > kAdvDataMax) {
        return kErrorInvalidParameter;
    }
    if (extendedChosen_) {
        LogWarnFun("ApplSendAdvExtend start");
        LogWarnFun(
            "%s extended advertising is not reachable through vendor commands, "
            "multi-advertising sent instead",
            CK_FUNCTION);
    }
    if (uint32_t error = Send(SetParametersCommand(parameters))) {
        LogErrorFun("ApplSendAdv failed.SendHciLeSetMultiAdvParam failed.\n");
        return error;
    }
    const uint8_t instance = parameters.instance;
    if (uint32_t error = Send(
            SetDataCommand(hci::kSubSetData, adv, static_cast<uint8_t>(advLength), instance))) {
        LogErrorFun("ApplSendAdv failed.SendHciLeSetMultiAdvData failed.\n");
        return error;
    }
    if (respLength != 0) {
        if (uint32_t error = Send(SetDataCommand(hci::kSubSetScanResponse, resp,
                                                 static_cast<uint8_t>(respLength), instance))) {
            LogErrorFun("ApplSendAdv failed.SendHciLeSetMultiAdvScanRsp failed.\n");
            return error;
        }
    }
    if (uint32_t error = Send(EnableCommand(true, instance))) {
        LogErrorFun("ApplSendAdv failed.SendHciLeSetMultiAdvEnable failed.\n");
        return error;
    }
    return 0;
}

uint32_t VendorHciDevice::CloseAdvertise(uint8_t instance) {
    if (!radio_) {
        return kErrorInvalidHandle;
    }
    if (extendedChosen_) {
        LogWarnFun("ApplCloseAdvExtend start");
        LogWarnFun(
            "%s extended advertising is not reachable through vendor commands, "
            "multi-advertising disabled instead",
            CK_FUNCTION);
    }
    return Send(EnableCommand(false, instance));
}

}  // namespace connectkit::bluetooth
