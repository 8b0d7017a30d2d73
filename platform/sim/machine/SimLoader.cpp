#include "platform/sim/machine/SimLoader.h"

#include <mutex>
#include <set>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/machine/SimFileSystem.h"
#include "platform/sim/wificard/SimWifiCard.h"

namespace connectkit::sim {

struct SimLoader::OpenSet {
    std::mutex mutex;
    std::set<const void*> libraries;
};

namespace {

constexpr uint32_t kErrorBadExeFormat = 193;

class SimLoadedLibrary final : public platform::LoadedLibrary {
public:
    SimLoadedLibrary(std::shared_ptr<const SimLibraryImage> image, FaultInjector& faults,
                     std::shared_ptr<SimLoader::OpenSet> open)
        : image_(std::move(image)), faults_(faults), open_(std::move(open)) {
        std::lock_guard<std::mutex> lock(open_->mutex);
        open_->libraries.insert(this);
    }
    ~SimLoadedLibrary() override {
        std::lock_guard<std::mutex> lock(open_->mutex);
        open_->libraries.erase(this);
    }

    platform::ProcAddress FindSymbol(const std::string& name) override {
        if (Faulted("loader.symbol")) {
            return nullptr;
        }
        auto found = image_->symbols.find(name);
        return found == image_->symbols.end() ? nullptr : found->second;
    }

    platform::ProcAddress FindOrdinal(uint16_t ordinal) override {
        if (Faulted("loader.ordinal")) {
            return nullptr;
        }
        auto found = image_->ordinals.find(ordinal);
        return found == image_->ordinals.end() ? nullptr : found->second;
    }

private:
    // GetProcAddress has no time-out of its own: any fault but a throw makes
    // the export look missing.
    bool Faulted(std::string_view call) {
        Fault fault = faults_.Check(call);
        if (fault.action == FaultAction::Throw) {
            ThrowInjectedFault(call);
        }
        return static_cast<bool>(fault);
    }

    std::shared_ptr<const SimLibraryImage> image_;
    FaultInjector& faults_;
    std::shared_ptr<SimLoader::OpenSet> open_;
};

bool IsPath(const std::wstring& name) {
    return name.find_first_of(L"\\/:") != std::wstring::npos;
}

}  // namespace

SimLoader::SimLoader(platform::Clock& clock, FaultInjector& faults, SimFileSystem& files)
    : clock_(clock), faults_(faults), files_(files), open_(std::make_shared<OpenSet>()) {}

size_t SimLoader::OpenLibraries() const {
    std::lock_guard<std::mutex> lock(open_->mutex);
    return open_->libraries.size();
}

std::unique_ptr<platform::LoadedLibrary> SimLoader::Load(const std::wstring& nameOrPath,
                                                         uint32_t& error) {
    if (auto faulted = FaultedCall(faults_, clock_, "loader.load", platform::kErrorModNotFound)) {
        error = *faulted;
        return nullptr;
    }
    std::vector<std::wstring> candidates;
    if (IsPath(nameOrPath)) {
        candidates.push_back(nameOrPath);
    } else if (!nameOrPath.empty()) {
        candidates.push_back(files_.MainModuleDirectory() + nameOrPath);
        candidates.push_back(SimFileSystem::kSystemDirectory + nameOrPath);
    }
    for (const auto& candidate : candidates) {
        bool present = false;
        auto image = files_.Image(candidate, present);
        if (!present) {
            continue;
        }
        if (!image) {
            error = kErrorBadExeFormat;
            return nullptr;
        }
        error = platform::kErrorSuccess;
        return std::make_unique<SimLoadedLibrary>(std::move(image), faults_, open_);
    }
    error = platform::kErrorModNotFound;
    return nullptr;
}

void SimLoader::FreeVendorBuffer(void* buffer) {
    if (buffer && !FreeSimDriverBuffer(buffer)) {
        LogErrorFun("[SimLoader] freeing %p, which no simulated driver handed out", buffer);
    }
}

size_t SimLoader::VendorBufferSize(const void* buffer) {
    return SimDriverBufferSize(buffer);
}

}  // namespace connectkit::sim
