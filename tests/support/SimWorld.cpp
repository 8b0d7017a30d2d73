#include "support/SimWorld.h"

#include "platform/Platform.h"

namespace connectkit::test {

sim::SimulatedPc& Pc() {
    static std::shared_ptr<sim::SimulatedPc> pc = [] {
        auto created = std::make_shared<sim::SimulatedPc>();
        if (!platform::Install(created)) {
            ADD_FAILURE() << "a backend was chosen before the tests installed the simulated PC";
        }
        return created;
    }();
    return *pc;
}

}  // namespace connectkit::test
