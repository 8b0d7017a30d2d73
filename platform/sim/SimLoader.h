#pragma once

#include <atomic>

#include "platform/ports/Loader.h"

namespace connectkit::platform {
class Clock;
}

namespace connectkit::sim {

class FaultInjector;
class SimFileSystem;

// Loads simulated DLLs from the simulated file system: a bare name is looked
// for in the main module's folder and then in System32, as LoadLibraryW
// would; a path must name the file exactly.
class SimLoader final : public platform::Loader {
public:
    SimLoader(platform::Clock& clock, FaultInjector& faults, SimFileSystem& files)
        : clock_(clock), faults_(faults), files_(files) {}

    std::unique_ptr<platform::LoadedLibrary> Load(const std::wstring& nameOrPath,
                                                  uint32_t& error) override;

    // Libraries loaded and not yet freed.
    size_t OpenLibraries() const { return open_->load(); }

private:
    platform::Clock& clock_;
    FaultInjector& faults_;
    SimFileSystem& files_;
    std::shared_ptr<std::atomic<size_t>> open_ = std::make_shared<std::atomic<size_t>>(0);
};

}  // namespace connectkit::sim
