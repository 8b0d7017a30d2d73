#pragma once
// Which machine the tool's commands run against: the simulated PC off
// Windows, this PC on Windows. Each build links one implementation.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/ports/BluetoothLE.h"

namespace connectkit::tool {

struct Options;

// The program description's line about the machine, and --world's help.
extern const char* const kMachineHelp;
extern const char* const kWorldHelp;

// Installs the machine the options ask for. False, with `error` set, when
// they ask for one this build cannot give.
bool UseMachine(const Options& options, std::string& error);

// What the library wrote to the debugger during this run. The simulated PC
// keeps it; on Windows it went to the debugger itself (DebugView shows it)
// and nothing is kept here.
std::vector<std::wstring> DebuggerLines();

// One advertiser on the air around the PC.
struct AirAdvertiser {
    std::string name;
    uint64_t address = 0;
    int16_t rssi = 0;
    uint32_t intervalMs = 0;
    platform::BleAdvertisementType type = platform::BleAdvertisementType::NonConnectableUndirected;
    std::vector<platform::BleDataSection> advertisement;
    std::vector<platform::BleDataSection> scanResponse;
};

// What is on the air now, this PC's own advertisements included. Only the
// simulated PC knows it: false on a real PC, where a scan is the way to look.
bool AirAdvertisers(std::vector<AirAdvertiser>& air);

// Makes `directory` the folder the library reads installed files from (the
// executable's folder, as the integrity check resolves manifest paths) and
// sets `folder` to its name as the library's digests take it, without a
// trailing separator. False, with `error` set, when it cannot.
bool UseInstallationFolder(const std::string& directory, std::string& folder, std::string& error);

}  // namespace connectkit::tool
