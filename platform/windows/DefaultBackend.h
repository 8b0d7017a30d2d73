#pragma once

#include <memory>

#include "platform/ports/Backend.h"

namespace connectkit::win {

// The real machine as a program's default backend.
std::shared_ptr<platform::Backend> MakeDefaultBackend();

}  // namespace connectkit::win
