#pragma once

#include <memory>

#include "platform/ports/Backend.h"

namespace connectkit::sim {

// The simulated PC as a program's default backend: a machine with no
// scenario loaded.
std::shared_ptr<platform::Backend> MakeDefaultBackend();

}  // namespace connectkit::sim
