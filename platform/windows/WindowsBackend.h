#pragma once

#include "platform/ports/Backend.h"
#include "platform/windows/bluetooth/WinBluetoothClassic.h"
#include "platform/windows/bluetooth/WinBluetoothLE.h"
#include "platform/windows/core/WinClock.h"
#include "platform/windows/machine/WinDeviceSetup.h"
#include "platform/windows/machine/WinFileSystem.h"
#include "platform/windows/machine/WinFirewall.h"
#include "platform/windows/machine/WinLoader.h"
#include "platform/windows/machine/WinNetworkAdapters.h"
#include "platform/windows/machine/WinPrivileges.h"
#include "platform/windows/machine/WinProcesses.h"
#include "platform/windows/machine/WinRegistry.h"
#include "platform/windows/machine/WinSockets.h"
#include "platform/windows/radios/WinRadios.h"
#include "platform/windows/system/WinDebugOutput.h"
#include "platform/windows/system/WinFileContents.h"
#include "platform/windows/system/WinSystemFacts.h"
#include "platform/windows/wifidirect/WinWiFiDirect.h"
#include "platform/windows/wlan/WinWlan.h"

namespace connectkit::win {

// The real machine, through Win32.
class WindowsBackend final : public platform::Backend {
public:
    // `runtime` is where Windows Runtime objects come from, `wlanLibrary`
    // the Native Wi-Fi library and `bluetoothLibraries` classic Bluetooth's:
    // the system's, unless a test brings its own.
    explicit WindowsBackend(std::shared_ptr<RuntimeActivation> runtime = SystemActivation(),
                            LibrarySource wlanLibrary = kSystemWlanLibrary,
                            BluetoothLibraries bluetoothLibraries = {})
        : wifiDirect_(runtime),
          wlan_(std::move(wlanLibrary)),
          radios_(runtime),
          bluetooth_(std::move(bluetoothLibraries)),
          bluetoothLE_(std::move(runtime)) {}

    std::wstring Name() const override { return L"Windows"; }
    platform::Clock& clock() override { return clock_; }
    platform::Registry& registry() override { return registry_; }
    platform::Loader& loader() override { return loader_; }
    platform::FileSystem& files() override { return files_; }
    platform::Processes& processes() override { return processes_; }
    platform::DeviceSetup& devices() override { return devices_; }
    platform::NetworkAdapters& adapters() override { return adapters_; }
    platform::WiFiDirect& wifiDirect() override { return wifiDirect_; }
    platform::Firewall& firewall() override { return firewall_; }
    platform::DebugOutput& debugOutput() override { return debugOutput_; }
    platform::FileContents& fileContents() override { return fileContents_; }
    platform::SystemFacts& systemFacts() override { return systemFacts_; }
    platform::Wlan& wlan() override { return wlan_; }
    platform::Sockets& sockets() override { return sockets_; }
    platform::Radios& radios() override { return radios_; }
    platform::BluetoothClassic& bluetooth() override { return bluetooth_; }
    platform::BluetoothLE& bluetoothLE() override { return bluetoothLE_; }
    platform::Privileges& privileges() override { return privileges_; }

private:
    WinClock clock_;
    WinRegistry registry_;
    WinLoader loader_;
    WinFileSystem files_;
    WinProcesses processes_;
    WinDeviceSetup devices_;
    WinNetworkAdapters adapters_;
    WinWiFiDirect wifiDirect_;
    WinFirewall firewall_;
    WinDebugOutput debugOutput_;
    WinFileContents fileContents_;
    WinSystemFacts systemFacts_{registry_};
    WinWlan wlan_;
    WinSockets sockets_;
    WinRadios radios_;
    WinBluetoothClassic bluetooth_;
    WinBluetoothLE bluetoothLE_;
    WinPrivileges privileges_;
};

}  // namespace connectkit::win
