#pragma once
// Lines stamped with the PC's milliseconds, for the commands that print what
// the library's threads report as it happens.

#include <cstdint>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>

namespace connectkit::tool {

class Context;

// Safe to call from any thread; each line goes out whole. With --json the
// stamp is the object's "ms".
class Timeline {
public:
    enum class Start { Now, AtFirstLine };
    explicit Timeline(Context& context, Start start = Start::Now);

    void Emit(const std::string& human, nlohmann::json machine);
    uint64_t ElapsedMs() const;

private:
    Context& context_;
    mutable std::mutex mutex_;
    bool started_;
    uint64_t start_;
};

}  // namespace connectkit::tool
