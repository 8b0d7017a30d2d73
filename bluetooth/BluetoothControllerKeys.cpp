#include "bluetooth/BluetoothControllerKeys.h"

#include <vector>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/Platform.h"

namespace connectkit::bluetooth {
namespace {

// The four string copies' error codes are formatted by placeholders spelled
// "d%", which take no argument: the line carries the text alone.
void LogCopyFailure() {
    LogWarnFun("%s", "wcscpy_s failed, err1 = d%,  err2 = d%, err3 = d%, err4 = d%");
}

// The key path as the 260-character buffer holds it; nothing when it does
// not fit, as the copy into that buffer would fail.
std::optional<std::wstring> KeyPath(const std::wstring& instanceId) {
    std::wstring path = DeviceParametersKey(instanceId);
    if (path.size() >= kMaxPathChars) {
        return std::nullopt;
    }
    return path;
}

}  // namespace

std::wstring DeviceParametersKey(const std::wstring& instanceId) {
    return L"SYSTEM\\CurrentControlSet\\Enum\\" + instanceId + L"\\Device Parameters";
}

KeyWalk ForEachControllerKey(
    const std::function<void(const std::optional<ControllerKey>&)>& visit) {
    auto& devices = platform::Current().devices();
    std::vector<platform::SetupDevice> set;
    if (devices.ClassDevices(kBluetoothClassGuid, platform::kDigcfPresent, set) != 0) {
        return KeyWalk::NoDevices;
    }
    for (const auto& device : set) {
        std::wstring className;
        if (devices.ClassName(device.classGuid, className) != 0 ||
            className.size() >= kMaxPathChars || className != L"Bluetooth") {
            visit(std::nullopt);
            continue;
        }
        if (device.instanceId.size() >= kMaxPathChars) {
            LogWarnFun("[BluetoothManage] instance id of %zu characters passed over",
                       device.instanceId.size());
            continue;
        }
        if (device.instanceId.compare(0, 6, L"BTH\\MS") == 0) {
            continue;
        }
        auto path = KeyPath(device.instanceId);
        if (!path) {
            LogCopyFailure();
            return KeyWalk::PathTooLong;
        }
        visit(ControllerKey{device.instanceId, *path});
    }
    return KeyWalk::Done;
}

}  // namespace connectkit::bluetooth
