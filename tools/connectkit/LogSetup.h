#pragma once

#include <string>

namespace connectkit::tool {

struct Options;

// Configures log4cplus for the tool, as a host of the library would: from a
// properties file, or one appender (stderr or --log-file) at --log-level;
// without any log option, nothing is logged.
// False with `error` set when the options cannot be used.
bool SetUpLogging(const Options& options, std::string& error);

}  // namespace connectkit::tool
