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

sim::Scenario WorldFromJson(const std::string& json) {
    sim::Scenario scenario;
    sim::ScenarioError error;
    EXPECT_TRUE(sim::ParseScenario(json, "world.json", scenario, error)) << error.ToString();
    return scenario;
}

void ApplyJsonWorld(const std::string& json) {
    Pc().Apply(WorldFromJson(json));
}

void ApplyExampleWorld(const std::string& name) {
    sim::Scenario scenario;
    sim::ScenarioError error;
    ASSERT_TRUE(sim::LoadScenarioFile(std::string(CONNECTKIT_WORLDS_DIR) + "/" + name + ".json",
                                      scenario, error))
        << error.ToString();
    Pc().Apply(scenario);
}

}  // namespace connectkit::test
