// What the Bluetooth radio answers through the Win32 API: its presence,
// address and name, renaming it, and an inquiry.
#include "SDK/Util/LogTool/LogTool.h"
#include "bluetooth/BluetoothControllerKeys.h"
#include "connectkit/BluetoothManage.h"
#include "foundation/FunctionName.h"
#include "foundation/Guarded.h"
#include "platform/Platform.h"
#include "platform/suite/DEString.h"

namespace ConnectKitBluetooth {

using connectkit::platform::BluetoothRadio;

namespace {

// IOCTL_BTH_... that makes the stack reload the local name from the registry.
constexpr uint32_t kReloadLocalNameCode = 0x411008;
constexpr uint32_t kReloadLocalNameArgument = 4;
constexpr int kSetNameFailed = 12;
// What the registry's "Local Name" buffer holds when it is read back.
constexpr size_t kMaxNameBytes = 256;
constexpr uint64_t kAddressMask = 0xFFFFFFFFFFFFull;

connectkit::platform::BluetoothClassic& Classic() {
    return connectkit::platform::Current().bluetooth();
}

// The first present controller on USB (with a device interface), whose
// "Device Parameters" key holds the name; empty when there is none.
std::wstring NameKeyPath() {
    std::vector<connectkit::platform::SetupDevice> set;
    if (connectkit::platform::Current().devices().ClassDevices(
            connectkit::bluetooth::kBluetoothClassGuid,
            connectkit::platform::kDigcfPresent | connectkit::platform::kDigcfProfile, set) != 0) {
        return {};
    }
    for (const auto& device : set) {
        if (device.instanceId.size() >= connectkit::bluetooth::kMaxPathChars) {
            LogWarnFun("get device instance failed");
            return {};
        }
        if (device.instanceId.size() > 4 && device.instanceId.compare(0, 4, L"USB\\") == 0) {
            return connectkit::bluetooth::DeviceParametersKey(device.instanceId);
        }
    }
    return {};
}

}  // namespace

const BT_ADDRESS* BluetoothManage::GetBtMacAndName() {
    return Guarded(
        CK_FUNCTION, static_cast<const BT_ADDRESS*>(nullptr), [this]() -> const BT_ADDRESS* {
            address_ = BT_ADDRESS{};
            std::unique_ptr<BluetoothRadio> radio;
            uint32_t error = 0;
            auto search = Classic().FindFirstRadio(radio, error);
            if (search && radio) {
                while (radio) {
                    connectkit::platform::BluetoothRadioInfo info;
                    if (radio->Info(info) != 0) {
                        return nullptr;
                    }
                    address_.address = info.address & kAddressMask;
                    address_.name = info.name;
                    radio = search->Next(error);
                }
                return &address_;
            }
            std::wstring name;
            GetBtname_ByRegist(name);
            char cache[6] = {};
            GetBtmac_ByRegist(cache, sizeof(cache));
            uint64_t address = 0;
            for (int i = 0; i < 6; ++i) {
                address |= static_cast<uint64_t>(static_cast<uint8_t>(cache[5 - i])) << (8 * i);
            }
            address_.address = address;
            address_.name = name;
            return &address_;
        });
}

std::wstring BluetoothManage::GetBtName() {
    return Guarded(CK_FUNCTION, std::wstring(), [this] {
        std::unique_ptr<BluetoothRadio> radio;
        uint32_t error = 0;
        auto search = Classic().FindFirstRadio(radio, error);
        std::wstring name;
        if (!search || !radio) {
            GetBtname_ByRegist(name);
            return name;
        }
        for (; radio && name.empty(); radio = search->Next(error)) {
            connectkit::platform::BluetoothRadioInfo info;
            if (radio->Info(info) == 0) {
                name = info.name;
            }
        }
        return name;
    });
}

int BluetoothManage::SetBTName(const std::wstring& name) {
    const char* function = CK_FUNCTION;
    return Guarded(function, kSetNameFailed, [&] {
        auto utf8 = DE::UnicodeToUTF8(name);
        if (utf8.size() > kMaxNameBytes || name.find(L'\0') != std::wstring::npos) {
            LogErrorFun("%s name of %zu bytes refused", function, utf8.size());
            LogErrorFun("set bt name failed");
            return kSetNameFailed;
        }
        auto path = NameKeyPath();
        auto value = connectkit::platform::RegistryData::FromBinary({utf8.begin(), utf8.end()});
        if (path.empty() || connectkit::platform::Current().registry().WriteExisting(
                                connectkit::platform::RegistryHive::LocalMachine, path,
                                L"Local Name", value) != 0) {
            LogErrorFun("set bt name failed");
            return kSetNameFailed;
        }
        std::unique_ptr<BluetoothRadio> radio;
        uint32_t error = 0;
        auto search = Classic().FindFirstRadio(radio, error);
        if (search && radio) {
            std::vector<uint8_t> argument{kReloadLocalNameArgument, 0, 0, 0};
            std::vector<uint8_t> output = argument;
            if (radio->Control(kReloadLocalNameCode, argument, output, 4) != 0) {
                LogWarnFun("update name may failed");
            }
        }
        return 0;
    });
}

bool BluetoothManage::IsRadioAvailable() {
    return Guarded(CK_FUNCTION, false, [] {
        std::unique_ptr<BluetoothRadio> radio;
        uint32_t error = 0;
        auto search = Classic().FindFirstRadio(radio, error);
        return search != nullptr && radio != nullptr;
    });
}

void BluetoothManage::BluetoothScan() {
    Guarded(CK_FUNCTION, [] {
        connectkit::platform::BluetoothDeviceSearch search;
        search.returnAuthenticated = true;
        search.returnRemembered = true;
        search.returnUnknown = true;
        search.returnConnected = true;
        search.issueInquiry = true;
        search.timeoutMultiplier = 1;
        connectkit::platform::BluetoothDeviceInfo first;
        Classic().FindFirstDevice(search, first);
    });
}

}  // namespace ConnectKitBluetooth
