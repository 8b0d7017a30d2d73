#include "platform/sim/DefaultBackend.h"

#include "platform/sim/SimulatedPc.h"

namespace connectkit::sim {

std::shared_ptr<platform::Backend> MakeDefaultBackend() {
    return std::make_shared<SimulatedPc>();
}

}  // namespace connectkit::sim
