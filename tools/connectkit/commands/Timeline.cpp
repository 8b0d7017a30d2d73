#include "commands/Timeline.h"

#include <iomanip>
#include <sstream>

#include "Context.h"
#include "platform/Platform.h"

namespace connectkit::tool {

Timeline::Timeline(Context& context, Start start)
    : context_(context),
      started_(start == Start::Now),
      start_(started_ ? platform::Current().clock().TickCount64() : 0) {}

void Timeline::Emit(const std::string& human, nlohmann::json machine) {
    auto tick = platform::Current().clock().TickCount64();
    std::lock_guard<std::mutex> lock(mutex_);
    if (!started_) {
        started_ = true;
        start_ = tick;
    }
    machine["ms"] = tick - start_;
    std::ostringstream line;
    line << "[+" << std::setw(6) << (tick - start_) << " ms] " << human << '\n';
    context_.Print(line.str(), machine);
}

uint64_t Timeline::ElapsedMs() const {
    auto tick = platform::Current().clock().TickCount64();
    std::lock_guard<std::mutex> lock(mutex_);
    return started_ ? tick - start_ : 0;
}

}  // namespace connectkit::tool
