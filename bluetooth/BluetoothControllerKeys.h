#pragma once
// The Bluetooth controllers' device nodes and their "Device Parameters"
// registry keys, as the fallback path walks them: the present devices of the
// Bluetooth setup class, in the set's order, minus the system's software
// enumerated ones ("BTH\MS...").

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace connectkit::bluetooth {

inline constexpr wchar_t kBluetoothClassGuid[] = L"{E0CBF06C-CD8B-4647-BB8A-263B43F0F974}";
// SetupAPI's buffers for class names, instance ids and key paths.
inline constexpr size_t kMaxPathChars = 260;

// "SYSTEM\CurrentControlSet\Enum\<instance id>\Device Parameters"
std::wstring DeviceParametersKey(const std::wstring& instanceId);

struct ControllerKey {
    std::wstring instanceId;
    // Its DeviceParametersKey.
    std::wstring keyPath;
};

enum class KeyWalk {
    Done,
    // The device set could not be opened.
    NoDevices,
    // A key path did not fit its buffer (logged): the walk stopped there.
    PathTooLong,
};

// Calls `visit` for each controller, and with nothing for each device whose
// class name is not "Bluetooth" (callers count those as failed devices).
KeyWalk ForEachControllerKey(const std::function<void(const std::optional<ControllerKey>&)>& visit);

}  // namespace connectkit::bluetooth
