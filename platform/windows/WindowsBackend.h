#pragma once

#include "platform/ports/Backend.h"
#include "platform/windows/WinClock.h"
#include "platform/windows/WinDeviceSetup.h"
#include "platform/windows/WinFileSystem.h"
#include "platform/windows/WinFirewall.h"
#include "platform/windows/WinLoader.h"
#include "platform/windows/WinNetworkAdapters.h"
#include "platform/windows/WinProcesses.h"
#include "platform/windows/WinRegistry.h"
#include "platform/windows/WinWiFiDirect.h"
#include "platform/windows/system/WinDebugOutput.h"
#include "platform/windows/system/WinFileContents.h"
#include "platform/windows/system/WinSystemFacts.h"

namespace connectkit::win {

// The real machine, through Win32.
class WindowsBackend final : public platform::Backend {
public:
    // `runtime` is where Windows Runtime objects come from: the system's,
    // unless a test brings its own.
    explicit WindowsBackend(std::shared_ptr<RuntimeActivation> runtime = SystemActivation())
        : wifiDirect_(std::move(runtime)) {}

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
};

}  // namespace connectkit::win
