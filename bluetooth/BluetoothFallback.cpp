// The fallback path of the Bluetooth radio: the controllers' registry values
// and device nodes, used when the platform lists no radio. Of several
// controllers the last one enumerated decides.
#include <algorithm>
#include <cstring>

#include "SDK/Util/LogTool/LogTool.h"
#include "bluetooth/BluetoothControllerKeys.h"
#include "connectkit/BluetoothManage.h"
#include "foundation/FunctionName.h"
#include "platform/Platform.h"
#include "platform/suite/DEString.h"

namespace ConnectKitBluetooth {

using connectkit::bluetooth::ControllerKey;
using connectkit::bluetooth::ForEachControllerKey;
using connectkit::bluetooth::KeyWalk;
using connectkit::platform::RegistryData;
using connectkit::platform::RegistryHive;
using connectkit::platform::RegistryType;

namespace {

constexpr uint32_t kRadioOnValue = 2;
constexpr uint32_t kRadioOffValue = 4;
constexpr uint32_t kSwitchPauseMs = 2000;
// The buffers the values are read into.
constexpr size_t kAddressCacheBytes = 512;
constexpr size_t kLocalNameBytes = 256;
constexpr size_t kHardwareIdsBytes = 520;
// ERROR_MORE_DATA and ERROR_UNSUPPORTED_TYPE, as RegGetValueW answers a
// value too long for the buffer or of a type it was not asked for.
constexpr long kErrorMoreData = 234;
constexpr long kErrorUnsupportedType = 1630;

connectkit::platform::Registry& Registry() {
    return connectkit::platform::Current().registry();
}

// Reads a value whose type and size the caller's buffer fixes.
long ReadBounded(const std::wstring& key, const wchar_t* name, RegistryType type, size_t maxBytes,
                 RegistryData& data) {
    long result = Registry().Read(RegistryHive::LocalMachine, key, name, data);
    if (result != 0) {
        return result;
    }
    if (data.type != type &&
        !(type == RegistryType::String && data.type == RegistryType::ExpandString)) {
        return kErrorUnsupportedType;
    }
    return data.bytes.size() > maxBytes ? kErrorMoreData : 0;
}

// The first string of a REG_MULTI_SZ in UTF-16LE.
std::wstring FirstString(const std::vector<uint8_t>& bytes) {
    std::wstring text;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        auto unit = static_cast<wchar_t>(bytes[i] | (bytes[i + 1] << 8));
        if (unit == 0) {
            break;
        }
        text.push_back(unit);
    }
    return text;
}

// Reads `name` under every controller's key in turn, handing each answer to
// `take`; 1 when `take` accepted one and the walk reached the set's end.
template <typename Take>
int ReadEachController(const wchar_t* name, RegistryType type, size_t maxBytes, const Take& take) {
    int result = 0;
    auto walk = ForEachControllerKey([&](const std::optional<ControllerKey>& controller) {
        if (!controller) {
            return;
        }
        RegistryData data;
        if (take(ReadBounded(controller->keyPath, name, type, maxBytes, data), data)) {
            result = 1;
        }
    });
    return walk == KeyWalk::Done ? result : 0;
}

}  // namespace

// A device passed over by the class-name filter makes the result 0 again.
int BluetoothManage::EnableBluetooth_ByRegist(int enable) {
    int result = 0;
    auto walk = ForEachControllerKey([&](const std::optional<ControllerKey>& controller) {
        result = 0;
        if (!controller) {
            return;
        }
        auto value = RegistryData::FromDword(enable == 1 ? kRadioOnValue : kRadioOffValue);
        result = Registry().WriteExisting(RegistryHive::LocalMachine, controller->keyPath,
                                          L"RadioState", value) == 0
                     ? 1
                     : 0;
        SwitchBtController(result, controller->instanceId);
    });
    return walk == KeyWalk::Done ? result : 0;
}

void BluetoothManage::SwitchBtController(int& ok, const std::wstring& instanceId) {
    if (!ok) {
        return;
    }
    auto& platform = connectkit::platform::Current();
    connectkit::platform::PropertyChange change;
    connectkit::platform::InstallerCall failedCall;
    change.stateChange = connectkit::platform::kDicsDisable;
    ok = platform.devices().ChangeProperty(instanceId, change, failedCall) == 0 ? 1 : 0;
    platform.clock().Sleep(kSwitchPauseMs);
    change.stateChange = connectkit::platform::kDicsEnable;
    ok = platform.devices().ChangeProperty(instanceId, change, failedCall) == 0 ? 1 : 0;
}

int BluetoothManage::GetBluetoothState_ByRegist(int* on) {
    const char* function = CK_FUNCTION;
    if (!on) {
        return 0;
    }
    return ReadEachController(
        L"RadioState", RegistryType::Dword, 4, [&](long read, const RegistryData& data) {
            uint32_t value = 0;
            if (read == kErrorUnsupportedType || (read == 0 && !data.ToDword(value))) {
                LogWarnFun("%s RadioState is not a DWORD", function);
                return false;
            }
            if (read != 0) {
                return false;
            }
            *on = value == kRadioOnValue ? 1 : 0;
            return true;
        });
}

int BluetoothManage::GetBluetoothState_Bydevice(int* on) {
    if (!on) {
        return 0;
    }
    *on = 0;
    auto& devices = connectkit::platform::Current().devices();
    std::vector<connectkit::platform::SetupDevice> set;
    if (devices.ClassDevices(connectkit::bluetooth::kBluetoothClassGuid,
                             connectkit::platform::kDigcfPresent, set) != 0) {
        return 0;
    }
    for (const auto& device : set) {
        std::vector<uint8_t> ids;
        if (devices.ReadProperty(device.instanceId,
                                 connectkit::platform::SetupProperty::HardwareIds, ids) != 0 ||
            ids.size() > kHardwareIdsBytes || FirstString(ids).compare(0, 3, L"USB") != 0) {
            continue;
        }
        std::vector<uint8_t> problem;
        if (devices.ReadProperty(device.instanceId,
                                 connectkit::platform::SetupProperty::ProblemCode, problem) != 0 ||
            problem.size() != 4) {
            // An unknown problem code counts as a controller that does not run.
            LogWarnFun("SetupDiGetDeviceProperty failed");
            *on = 0;
            continue;
        }
        *on = (problem[0] | problem[1] | problem[2] | problem[3]) == 0 ? 1 : 0;
    }
    return 0;
}

int BluetoothManage::GetBtmac_ByRegist(char* out, int size) {
    const char* function = CK_FUNCTION;
    if (!out || size < 0) {
        return 0;
    }
    return ReadEachController(
        L"DeviceAddressCache", RegistryType::String, kAddressCacheBytes,
        [&](long read, const RegistryData& data) {
            std::wstring text;
            if (read != 0 || !data.ToString(text)) {
                LogWarnFun("BluetoothManage::GetBtmac_ByRegist fail res %d",
                           static_cast<int>(read));
                return false;
            }
            std::string bytes;
            if (!DE::HexStringToBytesString(DE::UnicodeToUTF8(text), bytes) ||
                bytes.size() > static_cast<size_t>(size)) {
                LogWarnFun("%s DeviceAddressCache of %zu characters is not an address", function,
                           text.size());
                return false;
            }
            std::memcpy(out, bytes.data(), bytes.size());
            return true;
        });
}

int BluetoothManage::GetBtname_ByRegist(std::wstring& name) {
    const char* function = CK_FUNCTION;
    return ReadEachController(
        L"Local Name", RegistryType::Binary, kLocalNameBytes,
        [&](long read, const RegistryData& data) {
            if (read != 0) {
                LogWarnFun("%s Local Name unreadable res %d", function, static_cast<int>(read));
                return false;
            }
            auto end = std::find(data.bytes.begin(), data.bytes.end(), uint8_t{0});
            std::string utf8(data.bytes.begin(), end);
            name = DE::UTF8ToUnicode(utf8);
            if (DE::UnicodeToUTF8(name) != utf8) {
                LogWarnFun("%s Local Name is not UTF-8", function);
            }
            return true;
        });
}

}  // namespace ConnectKitBluetooth
