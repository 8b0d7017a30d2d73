#include "platform/sim/system/SimDebugOutput.h"

namespace connectkit::sim {

void SimDebugOutput::Write(const std::wstring& text) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (lines_.size() == kKeptLines) {
        lines_.pop_front();
    }
    lines_.push_back(text);
}

std::vector<std::wstring> SimDebugOutput::Lines() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return {lines_.begin(), lines_.end()};
}

void SimDebugOutput::Clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    lines_.clear();
}

}  // namespace connectkit::sim
