#pragma once

#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "platform/ports/DebugOutput.h"
#include "platform/sim/core/SimModel.h"

namespace connectkit::sim {

// What the library wrote to the debugger, kept for tests and the tool. Only
// the newest lines are kept, so a chatty caller cannot grow it without end.
class SimDebugOutput final : public platform::DebugOutput, public SimModel {
public:
    static constexpr size_t kKeptLines = 1000;

    void Write(const std::wstring& text) override;
    std::vector<std::wstring> Lines() const;
    void Clear();

    // A new world starts with no lines.
    void Reset() override { Clear(); }
    void Apply(const Scenario&) override {}

private:
    mutable std::mutex mutex_;
    std::deque<std::wstring> lines_;
};

}  // namespace connectkit::sim
