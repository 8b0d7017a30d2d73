#include "platform/sim/wificard/SimWifiCard.h"

#include <memory>

#include "platform/sim/core/Scenario.h"
#include "platform/sim/machine/SimDevices.h"
#include "platform/sim/machine/SimFileSystem.h"
#include "platform/sim/machine/SimRegistry.h"

namespace connectkit::sim {
namespace {

template <class F>
platform::ProcAddress Entry(F function) {
    return reinterpret_cast<platform::ProcAddress>(function);
}

std::shared_ptr<SimLibraryImage> IntelImage(const SimWifiCardConfig::Intel& intel) {
    auto image = std::make_shared<SimLibraryImage>();
    image->symbols = {
        {"WifiGetAdapterList", Entry(&driver::IntelGetAdapterList)},
        {"WifiPanQuerySupportedChannels", Entry(&driver::IntelQuerySupportedChannels)},
        {"WifiPanSetPreferredChannelSettings", Entry(&driver::IntelSetPreferredChannelSettings)},
        {"WifiPanQueryPreferredChannelSetting", Entry(&driver::IntelQueryPreferredChannelSetting)},
        {"WifiPanSetDiscoveryFilter", Entry(&driver::IntelSetDiscoveryFilter)},
        {"WifiPanResetPreferredChannelSettings",
         Entry(&driver::IntelResetPreferredChannelSettings)},
        {"WifiPanReSetDiscoveryFilter", Entry(&driver::IntelResetDiscoveryFilter)},
        {"WifiLegacyGoSetScanFilter", Entry(&driver::IntelSetLegacyGoScanFilter)},
        {"WifiPanReSetLegacyGoScanFilter", Entry(&driver::IntelResetLegacyGoScanFilter)},
    };
    for (const auto& missing : intel.missingExports) {
        image->symbols.erase(missing);
    }
    return image;
}

std::shared_ptr<SimLibraryImage> RealtekImage(const SimWifiCardConfig::Realtek& realtek) {
    auto image = std::make_shared<SimLibraryImage>();
    image->ordinals = {
        {68, Entry(&driver::Realtek68GetSupportedChannels)},
        {69, Entry(&driver::Realtek69SetPreferredChannelSettings)},
        {70, Entry(&driver::Realtek70ResetPreferredChannelSettings)},
        {71, Entry(&driver::Realtek71GetPreferredChannelSetting)},
        {72, Entry(&driver::Realtek72SetLegacyGoScanFilter)},
        {73, Entry(&driver::Realtek73ResetLegacyGoScanFilter)},
        {74, Entry(&driver::Realtek74EnableSoftApShow)},
        {75, Entry(&driver::Realtek75DisableSoftApShow)},
        {76, Entry(&driver::Realtek76Initialize)},
        {77, Entry(&driver::Realtek77Deinitialize)},
    };
    for (uint16_t missing : realtek.missingOrdinals) {
        image->ordinals.erase(missing);
    }
    return image;
}

const wchar_t* DefaultDescription(SimWifiCardConfig::Maker maker) {
    switch (maker) {
        case SimWifiCardConfig::Maker::Intel:
            return L"Intel(R) Wi-Fi 6 AX201 160MHz";
        case SimWifiCardConfig::Maker::Realtek:
            return L"Realtek RTL8852BE WiFi 6 802.11ax PCIe Adapter";
        default:
            return L"MediaTek Wi-Fi 6 MT7921 Wireless LAN Card";
    }
}

}  // namespace

void SimWifiCard::Apply(const Scenario& scenario) {
    const SimWifiCardConfig& config = scenario.wifiCard;
    SimDriverSettings settings;
    settings.areaCode = config.areaCode;
    settings.channels = config.channels;
    settings.intelAdapters.clear();
    for (const auto& adapter : config.intel.adapters) {
        settings.intelAdapters.push_back({adapter.handle, adapter.inUse});
    }
    settings.intelFailures = config.intel.failures;
    settings.realtekInitialisationsBeforeReady = config.realtek.initialisationsBeforeReady;
    ConfigureSimDrivers(settings);
    if (config.maker == SimWifiCardConfig::Maker::None) {
        adapter_.Set({});
        return;
    }
    platform::NetworkAdapterInfo wifi;
    wifi.kind = platform::NetworkAdapterInfo::Kind::Wifi;
    wifi.index = 12;
    wifi.description =
        config.description.empty() ? DefaultDescription(config.maker) : config.description;
    wifi.mac = {0x3C, 0x6A, 0xA7, 0x12, 0x34, 0x56};
    adapter_.Set({wifi});

    if (config.maker == SimWifiCardConfig::Maker::Realtek) {
        files_.AddFile(std::wstring(SimFileSystem::kSystemDirectory) + L"RealtekWiFi.dll",
                       RealtekImage(config.realtek));
    } else if (config.maker == SimWifiCardConfig::Maker::Intel) {
        InstallIntelLibrary(config.intel);
    }
}

void SimWifiCard::Count(SimCensus& census) const {
    census.driverBuffers += DriverLog().outstandingBuffers;
}

void SimWifiCard::InstallIntelLibrary(const SimWifiCardConfig::Intel& intel) {
    auto image = IntelImage(intel);
    // The library lies in the folder whatever the registry value looks like.
    std::wstring directory = intel.directory;
    if (!directory.empty() && directory.back() != L'\\') {
        directory += L'\\';
    }
    switch (intel.discovery) {
        case SimWifiCardConfig::Intel::Discovery::ProSet:
            registry_.Write(platform::RegistryHive::LocalMachine, L"SOFTWARE\\Intel\\Wireless",
                            L"PROSetBinDir", platform::RegistryData::FromString(intel.directory));
            files_.AddFile(directory + L"murocapi.dll", image);
            break;
        case SimWifiCardConfig::Intel::Discovery::Pie: {
            SimDevices::Device pie;
            pie.instanceId = L"SWD\\DRIVERENUM\\PIE&4&1A2B3C&0";
            pie.hardwareIds = {L"SWC\\VID_8086&PID_PIE&SID_0001", L"SWC\\VID_8086&PID_PIE"};
            pie.values = {{L"PiePathHint", directory + L"murocapi.dll"}};
            devices_.Add(std::move(pie));
            files_.AddFile(directory + L"murocapi.dll", image);
            break;
        }
        case SimWifiCardConfig::Intel::Discovery::None:
            if (intel.libraryAtDefaultPath) {
                files_.AddFile(L"C:\\Program Files\\Intel\\WiFi\\bin\\MurocApi.dll", image);
            }
            break;
    }
}

}  // namespace connectkit::sim
