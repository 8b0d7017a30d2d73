#include "platform/windows/DefaultBackend.h"

#include "platform/windows/WindowsBackend.h"

namespace connectkit::win {

std::shared_ptr<platform::Backend> MakeDefaultBackend() {
    return std::make_shared<WindowsBackend>();
}

}  // namespace connectkit::win
