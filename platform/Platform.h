#pragma once
// The process picks its backend once, before the first singleton needs a
// port: Windows builds default to the real machine, other builds to the
// simulated PC. Tests and the command-line tool may install a configured
// backend before anything uses one.

#include <memory>

#include "platform/ports/Backend.h"

namespace connectkit::platform {

// The backend in use; the first call settles on the default one.
Backend& Current();

// Installs a backend for the whole process. False, with a log line, when a
// backend is already in use or the pointer is null.
bool Install(std::shared_ptr<Backend> backend);

// Provided by the backend library that the build links as the default.
std::shared_ptr<Backend> MakeDefaultBackend();

}  // namespace connectkit::platform
