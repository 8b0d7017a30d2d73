#include "platform/Platform.h"
#include "platform/sim/SimulatedPc.h"

namespace connectkit::platform {

std::shared_ptr<Backend> MakeDefaultBackend() {
    return std::make_shared<sim::SimulatedPc>();
}

}  // namespace connectkit::platform
