#include "SimFigures.h"

#include <chrono>

#include "HandedWatcher.h"
#include "Ratios.h"

namespace connectkit::bench {

sim::SimulatedPc& Pc() {
    return HandedPc().sim();
}

double MeasureVirtualPerWall(int cycles, const std::function<bool()>& cycle) {
    auto& clock = Pc().clock();
    uint64_t virtualStart = clock.TickCount64();
    auto wallStart = std::chrono::steady_clock::now();
    for (int i = 0; i < cycles; ++i) {
        if (!cycle()) {
            return -1;
        }
    }
    double wallMs =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - wallStart)
            .count();
    return static_cast<double>(clock.TickCount64() - virtualStart) / wallMs;
}

void AddSimFigures(std::string overheadName, std::function<double()> overhead,
                   std::string speedName, std::function<double()> speed) {
    AddMeasured(std::move(overheadName), std::move(overhead), "=", 0);
    AddMeasured(std::move(speedName), std::move(speed), ">=", 1000);
}

}  // namespace connectkit::bench
