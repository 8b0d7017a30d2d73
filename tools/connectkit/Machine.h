#pragma once
// Which machine the tool's commands run against: the simulated PC off
// Windows, this PC on Windows. Each build links one implementation.

#include <string>

namespace connectkit::tool {

struct Options;

// The program description's line about the machine, and --world's help.
extern const char* const kMachineHelp;
extern const char* const kWorldHelp;

// Installs the machine the options ask for. False, with `error` set, when
// they ask for one this build cannot give.
bool UseMachine(const Options& options, std::string& error);

}  // namespace connectkit::tool
