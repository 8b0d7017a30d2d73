#pragma once
// A scenario: the simulated PC's world as a JSON file describes it. Each model
// reads its own section in a parser beside it, listed in Scenario.cpp's
// section table; every section rejects fields it does not know, so a typo in
// a scenario is an error, not a silently ignored setting.
//
//   {
//     "description": "free text",
//     "clock": {"localTime": "2024-03-05T09:05:03.007", "utcOffsetMinutes": 60},
//     "registry": [{"key": "HKLM\\SOFTWARE\\Veltra", "values": {"Name": {"string": "x"},
//                   "Count": {"dword": 3}, "Blob": {"binary": "0a0b"}}}],
//     "files": {"mainModuleDirectory": "C:\\Suite\\", "present": ["C:\\Suite\\a.dll"],
//               "contents": {"C:\\Suite\\b.txt": "the file's bytes"},
//               "hostFolders": {"C:\\Suite\\": "/a/folder/on/this/machine"}},
//     "programs": [{"name": "ipconfig", "exitCode": 0, "durationMs": 300}],
//     "faults": [{"call": "registry.read", "action": "fail|timeout|throw",
//                 "after": 0, "times": 1, "error": 5, "delayMs": 30000}],
//     "wifiCard": {"maker": "intel|realtek|other", "description": "...",
//                  "areaCode": "DE", "channels": [1, 6, 11, 36],
//                  "intel": {"discovery": "proset|pie|none", "directory": "C:\\x\\",
//                            "libraryAtDefaultPath": false, "missingExports": ["..."],
//                            "adapters": [{"handle": 7, "inUse": true}],
//                            "listCount": 64, "listBytes": 4 (a faulty adapter list),
//                            "failures": {"WifiPanQueryPreferredChannelSetting": 1}},
//                  "realtek": {"initialisationsBeforeReady": 2, "missingOrdinals": [71]}},
//     "wifiDirect": {"runtimeAvailable": true,
//                    "publisher": {"startLatencyMs": 800, "stopLatencyMs": 200,
//                                  "startOutcomes": ["started", "aborted", "silent"],
//                                  "abortError": "radioNotAvailable|resourceInUse",
//                                  "stopOutcome": "stopped|stuck"},
//                    "virtualAdapter": {"present": true, "enabled": true, "index": 21,
//                                       "description": "...", "mac": "3a:7c:76:12:9e:51",
//                                       "macDelayMs": 300 (null: never), "macAfterRepair": false,
//                                       "ip": "192.168.137.1", "ipPresent": true,
//                                       "restartLatencyMs": 1500},
//                    "foreignGroupOwner": {"running": false, "survivesRestart": false},
//                    "phones": [{"id": "WiFiDirect#phone", "address": "192.168.137.23",
//                                "joinAfterMs": 1000, "leaveAfterMs": 5000,
//                                "fromIdLatencyMs": 200, "fromIdFails": false,
//                                "missDisconnectEvent": false}]},
//     "system": {"os": {"version": "10.0.22631", "updateRevision": 2861, "displayVersion": "23H2"},
//                "biosVersion": "...", "model": "...", "deviceId": "...", "dpi": 144},
//     "bluetooth": {"controllers": [...], "softwareNodesLast": false},
//     "radios": {"listing": {...}, "wifi": {...}}   (see ScenarioBluetooth.cpp)
//     "ble": {"elevated": true, "phones": [...], ...}  (see ScenarioBle.cpp)
//     "wlan": (see ScenarioWlan.cpp)
//   }

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/ports/Clock.h"
#include "platform/ports/Registry.h"
#include "platform/sim/bluetooth/SimBle.h"
#include "platform/sim/bluetooth/SimBluetooth.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/system/SimSystemFacts.h"
#include "platform/sim/wificard/SimWifiCard.h"
#include "platform/sim/wifidirect/SimWiFiDirect.h"
#include "platform/sim/wlan/SimWlan.h"

namespace connectkit::sim {

struct Scenario {
    struct Value {
        platform::RegistryHive hive = platform::RegistryHive::LocalMachine;
        std::wstring key;
        std::wstring name;
        platform::RegistryData data;
    };
    struct Program {
        std::wstring name;
        uint32_t exitCode = 0;
        uint32_t durationMs = 0;
    };

    std::string description;
    std::optional<platform::LocalTime> localTime;
    int utcOffsetMinutes = 0;
    std::vector<Value> registry;
    std::optional<std::wstring> mainModuleDirectory;
    std::vector<std::wstring> files;
    std::map<std::wstring, std::string> fileContents;
    // Simulated folder to a folder of this machine (UTF-8).
    std::map<std::wstring, std::string> hostFolders;
    std::vector<Program> programs;
    std::vector<FaultRule> faults;
    SimWifiCardConfig wifiCard;
    SimWiFiDirectConfig wifiDirect;
    SimSystemConfig system;
    // "bluetooth" and "radios" (see ScenarioBluetooth.cpp).
    SimBluetoothConfig bluetooth;
    SimBleConfig ble;
    // Absent: the card's adapter, if any, is the Wi-Fi interface, with no
    // network in range.
    std::optional<SimWlanConfig> wlan;
};

struct ScenarioError {
    std::string file;
    // Where in the document: "registry[0].values.Name", or "line 3, column 14".
    std::string field;
    std::string message;

    std::string ToString() const;
};

// False, with `error` filled, when the text is not a valid scenario.
bool ParseScenario(const std::string& text, const std::string& sourceName, Scenario& scenario,
                   ScenarioError& error);
bool LoadScenarioFile(const std::string& path, Scenario& scenario, ScenarioError& error);

}  // namespace connectkit::sim
