// Runs every benchmark (the table is for people), then measures each figure
// side by side and prints it as
//   RATIO <name> <value> goal <op> <target>
// Exits non-zero when a figure misses its goal.

#include <benchmark/benchmark.h>
#include <log4cplus/initializer.h>

#include <alloca.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "Ratios.h"
#include "SimFigures.h"

namespace connectkit::bench {
namespace {

std::vector<Ratio>& Ratios() {
    static std::vector<Ratio> ratios;
    return ratios;
}

double TimeBatch(const std::function<void()>& operation, int batch) {
    auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < batch; ++i) {
        operation();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Where the stack lies within a page decides how the operations' stack
// buffers line up with the caches and with the other data they touch: one
// binary measured log_disabled anywhere from 1.01 to 1.13, by nothing but the
// offset that address-space randomisation gave the process. Every pair of
// rounds (one in each order) moves the stack a step further, so a figure is
// the median over offsets across a whole page instead of one draw. Not
// inlined: the pad is given back every round.
[[gnu::noinline]] double RoundRatio(const Ratio& ratio, int round) {
    constexpr size_t kStep = 32;
    constexpr size_t kPage = 4096;
    void* pad = alloca(static_cast<size_t>(round / 2) * kStep % kPage);
    benchmark::DoNotOptimize(pad);
    double top = 0;
    double bottom = 0;
    // Alternate which side goes first, so neither always follows the other.
    if (round % 2 == 0) {
        top = TimeBatch(ratio.numerator, ratio.batch);
        bottom = TimeBatch(ratio.denominator, ratio.batch);
    } else {
        bottom = TimeBatch(ratio.denominator, ratio.batch);
        top = TimeBatch(ratio.numerator, ratio.batch);
    }
    return top / bottom;
}

double Measure(const Ratio& ratio) {
    constexpr int kRounds = 301;
    if (ratio.setUp) {
        ratio.setUp();
    }
    if (ratio.measure) {
        return ratio.measure();
    }
    TimeBatch(ratio.numerator, ratio.batch);
    TimeBatch(ratio.denominator, ratio.batch);
    std::vector<double> ratios;
    for (int round = 0; round < kRounds; ++round) {
        ratios.push_back(RoundRatio(ratio, round));
    }
    std::nth_element(ratios.begin(), ratios.begin() + kRounds / 2, ratios.end());
    return ratios[kRounds / 2];
}

bool Meets(double value, const std::string& op, double target) {
    if (op == "<=")
        return value <= target;
    if (op == ">=")
        return value >= target;
    return value == target;
}

}  // namespace

void AddRatio(Ratio ratio) {
    Ratios().push_back(std::move(ratio));
}

void AddMeasured(std::string name, std::function<double()> measure, std::string op, double target) {
    Ratio figure;
    figure.name = std::move(name);
    figure.measure = std::move(measure);
    figure.op = std::move(op);
    figure.target = target;
    AddRatio(std::move(figure));
}

}  // namespace connectkit::bench

int main(int argc, char** argv) {
    using namespace connectkit::bench;
    log4cplus::Initializer initializer;
    // The simulated PC, whose scanner figure hands events to its watcher.
    Pc();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    int missed = 0;
    for (const auto& ratio : Ratios()) {
        double value = Measure(ratio);
        std::printf("RATIO %s %.3f goal %s %g\n", ratio.name.c_str(), value, ratio.op.c_str(),
                    ratio.target);
        missed += Meets(value, ratio.op, ratio.target) ? 0 : 1;
    }
    return missed == 0 ? 0 : 1;
}
