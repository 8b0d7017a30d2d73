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
};
