#pragma once
// One implementation of every port. Adding a port means: a header in
// platform/ports/, an accessor here, and an implementation in each backend.

#include <string>

#include "platform/ports/BluetoothClassic.h"
#include "platform/ports/BluetoothLE.h"
#include "platform/ports/Clock.h"
#include "platform/ports/DebugOutput.h"
#include "platform/ports/DeviceSetup.h"
#include "platform/ports/FileContents.h"
#include "platform/ports/FileSystem.h"
#include "platform/ports/Firewall.h"
#include "platform/ports/Loader.h"
#include "platform/ports/NetworkAdapters.h"
#include "platform/ports/Privileges.h"
#include "platform/ports/Processes.h"
#include "platform/ports/Radios.h"
#include "platform/ports/Registry.h"
#include "platform/ports/Sockets.h"
#include "platform/ports/SystemFacts.h"
#include "platform/ports/WiFiDirect.h"
#include "platform/ports/Wlan.h"

namespace connectkit::platform {

class Backend {
public:
    virtual ~Backend() = default;
    virtual std::wstring Name() const = 0;

    virtual Clock& clock() = 0;
    virtual Registry& registry() = 0;
    virtual Loader& loader() = 0;
    virtual FileSystem& files() = 0;
    virtual Processes& processes() = 0;
    virtual DeviceSetup& devices() = 0;
    virtual NetworkAdapters& adapters() = 0;
    virtual WiFiDirect& wifiDirect() = 0;
    virtual Firewall& firewall() = 0;
    virtual DebugOutput& debugOutput() = 0;
    virtual FileContents& fileContents() = 0;
    virtual SystemFacts& systemFacts() = 0;
    virtual Wlan& wlan() = 0;
    virtual Sockets& sockets() = 0;
    virtual Radios& radios() = 0;
    virtual BluetoothClassic& bluetooth() = 0;
    virtual BluetoothLE& bluetoothLE() = 0;
    virtual Privileges& privileges() = 0;
};

}  // namespace connectkit::platform
