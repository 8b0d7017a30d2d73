#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/ports/FileContents.h"
#include "platform/sim/core/SimModel.h"

namespace connectkit::platform {
class Clock;
}

namespace connectkit::sim {

class FaultInjector;
class SimFileSystem;

// The bytes of the simulated PC's files. A file is present when the file
// system says so; its bytes are given text, or a real file on this machine
// read at the moment the library reads it (so a test can change or delete it
// behind the simulated PC's back). A present file with neither is empty.
class SimFileContents final : public platform::FileContents, public SimModel {
public:
    // Files beyond this many under one host folder are not mapped: a
    // mistyped folder such as "/" must not stall the simulated PC.
    static constexpr size_t kMaxMappedFiles = 100000;

    SimFileContents(platform::Clock& clock, FaultInjector& faults, SimFileSystem& files);

    long Read(const std::wstring& path, const Sink& sink) override;

    // Makes the file present with these bytes.
    void SetText(const std::wstring& path, std::string bytes);
    // Makes every regular file below `hostFolder` present below `folder`
    // (a simulated path such as "C:\\Suite\\"). False, with `error`, when the
    // host folder cannot be walked or holds too many files.
    bool MapHostFolder(const std::wstring& folder, const std::filesystem::path& hostFolder,
                       std::string& error);
    void Clear();

    void Reset() override { Clear(); }
    // The files section's "contents" and "hostFolders"; a host folder that
    // cannot be mapped is logged and left out.
    void Apply(const Scenario& scenario) override;

private:
    struct Source {
        std::shared_ptr<const std::string> text;
        std::filesystem::path host;
    };

    long ReadHost(const std::filesystem::path& host, const Sink& sink);

    platform::Clock& clock_;
    FaultInjector& faults_;
    SimFileSystem& files_;
    std::mutex mutex_;
    std::map<std::wstring, Source> sources_;
};

}  // namespace connectkit::sim
