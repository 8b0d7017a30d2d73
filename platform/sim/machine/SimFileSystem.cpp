#include "platform/sim/machine/SimFileSystem.h"

#include "platform/sim/core/Scenario.h"

#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/SimText.h"

namespace connectkit::sim {

SimFileSystem::SimFileSystem(platform::Clock& clock, FaultInjector& faults)
    : clock_(clock), faults_(faults), mainModuleDirectory_(kDefaultMainModuleDirectory) {}

bool SimFileSystem::Exists(const std::wstring& path) {
    if (FaultedCall(faults_, clock_, "files.exists", platform::kErrorAccessDenied)) {
        return false;
    }
    std::wstring normal = NormalPath(path);
    if (normal.empty()) {
        return false;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = files_.lower_bound(normal);
    if (found == files_.end()) {
        return false;
    }
    // A directory exists when some file lies below it.
    return found->first == normal || found->first.starts_with(normal + L'\\');
}

std::wstring SimFileSystem::MainModuleDirectory() {
    if (FaultedCall(faults_, clock_, "files.mainModuleDirectory", platform::kErrorAccessDenied)) {
        return L"";
    }
    std::lock_guard<std::mutex> lock(mutex_);
    return mainModuleDirectory_;
}

void SimFileSystem::AddFile(const std::wstring& path,
                            std::shared_ptr<const SimLibraryImage> image) {
    std::lock_guard<std::mutex> lock(mutex_);
    files_[NormalPath(path)] = std::move(image);
}

void SimFileSystem::RemoveFile(const std::wstring& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    files_.erase(NormalPath(path));
}

void SimFileSystem::SetMainModuleDirectory(const std::wstring& directory) {
    std::lock_guard<std::mutex> lock(mutex_);
    mainModuleDirectory_ = directory;
    if (!mainModuleDirectory_.empty() && mainModuleDirectory_.back() != L'\\') {
        mainModuleDirectory_ += L'\\';
    }
}

void SimFileSystem::Apply(const Scenario& scenario) {
    if (scenario.mainModuleDirectory) {
        SetMainModuleDirectory(*scenario.mainModuleDirectory);
    }
    for (const auto& file : scenario.files) {
        AddFile(file);
    }
}

void SimFileSystem::Reset() {
    std::lock_guard<std::mutex> lock(mutex_);
    files_.clear();
    mainModuleDirectory_ = kDefaultMainModuleDirectory;
}

std::shared_ptr<const SimLibraryImage> SimFileSystem::Image(const std::wstring& path,
                                                            bool& present) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = files_.find(NormalPath(path));
    present = found != files_.end();
    return present ? found->second : nullptr;
}

}  // namespace connectkit::sim
