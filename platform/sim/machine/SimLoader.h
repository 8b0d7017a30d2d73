#pragma once

#include <memory>

#include "platform/ports/Loader.h"
#include "platform/sim/core/SimModel.h"

namespace connectkit::platform {
class Clock;
}

namespace connectkit::sim {

class FaultInjector;
class SimFileSystem;

// Loads simulated DLLs from the simulated file system: a bare name is looked
// for in the main module's folder and then in System32, as LoadLibraryW
// would; a path must name the file exactly.
class SimLoader final : public platform::Loader, public SimModel {
public:
    SimLoader(platform::Clock& clock, FaultInjector& faults, SimFileSystem& files);

    std::unique_ptr<platform::LoadedLibrary> Load(const std::wstring& nameOrPath,
                                                  uint32_t& error) override;
    void FreeVendorBuffer(void* buffer) override;

    // Libraries loaded and not yet freed.
    size_t OpenLibraries() const;
    void Count(SimCensus& census) const override { census.openLibraries += OpenLibraries(); }

    struct OpenSet;

private:
    platform::Clock& clock_;
    FaultInjector& faults_;
    SimFileSystem& files_;
    // Every loaded library is listed here until it is freed, so a library
    // that its owner deliberately never frees stays reachable, as the real
    // module stays mapped.
    std::shared_ptr<OpenSet> open_;
};

}  // namespace connectkit::sim
