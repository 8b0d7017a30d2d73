#include "platform/Platform.h"
#include "platform/windows/WindowsBackend.h"

namespace connectkit::platform {

std::shared_ptr<Backend> MakeDefaultBackend() {
    return std::make_shared<win::WindowsBackend>();
}

}  // namespace connectkit::platform
