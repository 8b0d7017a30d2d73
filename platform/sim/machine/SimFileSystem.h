#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/ports/FileSystem.h"
#include "platform/ports/Loader.h"
#include "platform/sim/core/SimModel.h"

namespace connectkit::platform {
class Clock;
}

namespace connectkit::sim {

class FaultInjector;

// What a simulated DLL exports: entry points by name and by ordinal, real C
// functions with the calling shapes of the DLL they stand for.
struct SimLibraryImage {
    std::map<std::string, platform::ProcAddress> symbols;
    std::map<uint16_t, platform::ProcAddress> ordinals;
};

// The simulated PC's files. Only existence matters so far; a file can carry
// a library image, which makes it loadable through the loader port.
class SimFileSystem final : public platform::FileSystem, public SimModel {
public:
    static constexpr const wchar_t* kDefaultMainModuleDirectory =
        L"C:\\Program Files\\Veltra\\Brisklane\\";
    static constexpr const wchar_t* kSystemDirectory = L"C:\\Windows\\System32\\";

    SimFileSystem(platform::Clock& clock, FaultInjector& faults);

    bool Exists(const std::wstring& path) override;
    std::wstring MainModuleDirectory() override;

    void AddFile(const std::wstring& path, std::shared_ptr<const SimLibraryImage> image = nullptr);
    void RemoveFile(const std::wstring& path);
    void SetMainModuleDirectory(const std::wstring& directory);
    void Reset() override;
    // Adds the scenario's "files" and main module directory.
    void Apply(const Scenario& scenario) override;
    // The image of an existing file; `present` tells whether the file exists.
    std::shared_ptr<const SimLibraryImage> Image(const std::wstring& path, bool& present);

private:
    platform::Clock& clock_;
    FaultInjector& faults_;
    std::mutex mutex_;
    std::wstring mainModuleDirectory_;
    std::map<std::wstring, std::shared_ptr<const SimLibraryImage>> files_;
};

}  // namespace connectkit::sim
