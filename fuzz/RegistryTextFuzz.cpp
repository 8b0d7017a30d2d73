// Text the Intel driver's installation leaves in the registry and on device
// nodes is read as it lies: the PROSet folder (any value type, any length),
// the hardware id lists (REG_MULTI_SZ, split as the Windows backend splits
// them, with or without their terminators) and PiePathHint. Any of it must
// give a status and a log line, never a read outside the data.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzPc.h"
#include "channel/wifi_intel.h"
#include "platform/windows/machine/MultiSz.h"

namespace {

namespace platform = connectkit::platform;

// UTF-16 units as the registry holds them, zeros included.
std::vector<wchar_t> Units(FuzzedDataProvider& input, size_t most) {
    std::vector<wchar_t> units(input.ConsumeIntegralInRange<size_t>(0, most));
    for (wchar_t& unit : units) {
        unit = static_cast<wchar_t>(input.ConsumeIntegral<uint16_t>());
    }
    return units;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    connectkit::sim::Scenario scenario;
    platform::RegistryData proSet;
    proSet.type = input.PickValueInArray(
        {platform::RegistryType::String, platform::RegistryType::ExpandString,
         platform::RegistryType::MultiString, platform::RegistryType::Binary});
    proSet.bytes = input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, 1100));
    if (input.ConsumeBool()) {
        scenario.registry.push_back({platform::RegistryHive::LocalMachine,
                                     L"SOFTWARE\\Intel\\Wireless", L"PROSetBinDir", proSet});
    }

    connectkit::sim::SimDevices::Device device;
    device.instanceId = L"SWD\\DRIVERENUM\\PIE&0";
    auto ids = Units(input, 300);
    device.hardwareIds = connectkit::win::SplitMultiSz(ids.data(), ids.size());
    if (input.ConsumeBool()) {
        device.hardwareIds.push_back(L"swc\\vid_8086&pid_pie&sid_0001");
    }
    auto hint = Units(input, 600);
    device.values[L"PiePathHint"] = std::wstring(hint.begin(), hint.end());

    auto& pc = connectkit::fuzz::Pc();
    pc.Apply(scenario);
    pc.devices().Add(std::move(device));
    // Nothing lies where any of this points, so no adapter can come of it.
    if (ConnectKit::WifiIntelAPI().AdapterHandle() != -1) {
        __builtin_trap();
    }
    return 0;
}
