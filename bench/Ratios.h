#pragma once
// A figure is the ratio of two operations' times, measured side by side: the
// two run in alternating batches, so both meet the same machine, and the
// figure is the median of the per-round ratios.

#include <functional>
#include <string>

namespace connectkit::bench {

struct Ratio {
    std::string name;
    // Runs once before the figure is measured.
    std::function<void()> setUp;
    std::function<void()> numerator;
    std::function<void()> denominator;
    std::string op;  // "<=", ">=" or "="
    double target;
    // Calls of each operation per batch.
    int batch = 200;
    // For a figure that is not a time ratio (virtual against wall time, say):
    // measures it directly, in place of numerator and denominator.
    std::function<double()> measure;
};

// Adds a figure to measure and print after the benchmarks ran.
void AddRatio(Ratio ratio);
// Adds a figure that `measure` gives directly, to hold `op` `target`.
void AddMeasured(std::string name, std::function<double()> measure, std::string op, double target);

}  // namespace connectkit::bench
