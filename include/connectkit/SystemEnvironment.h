#pragma once
// Questions host modules ask about the machine and the installation.

#include <string>

#include "connectkit/Export.h"

class CONNECTKIT_API SystemEnvironment {
public:
    // True when the manifest config\CheckFileIntergrity.xml beside the host
    // executable has an entry for `filePath` (relative to the executable's
    // folder, starting with a backslash, UTF-8) carrying the file's actual
    // SHA-256. What goes wrong is written to the debugger output.
    static bool CompareFileIntergrity(const std::string& filePath);

    // The machine's facts; each answers "" (0 for the build, 96 for the DPI)
    // when its source is missing.
    // "10.0.22631.2861": major, minor, build and update revision.
    static std::string GetOsVersion();
    static unsigned GetOsBuildNumber();
    // The release as Settings shows it, such as "23H2".
    static std::string GetOsDisplayVersion();
    static std::string GetBiosVersion();
    // The maker's model name, which keys the feature switches.
    static std::string GetModelName();
    // Stable across reboots and reinstalling the suite.
    static std::string GetDeviceId();
    static unsigned GetDisplayDpi();
    // This model's switch `name` from the suite's registry (see
    // environment/SystemFacts.cpp); off when no table sets it.
    static bool GetModelFeatureSwitch(const std::string& name);
};
