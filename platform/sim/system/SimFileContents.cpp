#include "platform/sim/system/SimFileContents.h"

#include <algorithm>
#include <fstream>
#include <vector>

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/SimText.h"
#include "platform/sim/machine/SimFileSystem.h"

namespace connectkit::sim {
namespace {

// The chunk the Windows backend reads too, so sinks see the same pieces.
constexpr size_t kChunk = 1u << 20;

}  // namespace

SimFileContents::SimFileContents(platform::Clock& clock, FaultInjector& faults,
                                 SimFileSystem& files)
    : clock_(clock), faults_(faults), files_(files) {}

long SimFileContents::Read(const std::wstring& path, const Sink& sink) {
    if (auto fault = FaultedCall(faults_, clock_, "files.read", platform::kErrorAccessDenied)) {
        return static_cast<long>(*fault);
    }
    bool present = false;
    files_.Image(path, present);
    if (!present) {
        // A folder cannot be opened as a file.
        return files_.Exists(path) ? platform::kErrorAccessDenied : platform::kErrorFileNotFound;
    }
    Source source;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = sources_.find(NormalPath(path));
        if (found != sources_.end()) {
            source = found->second;
        }
    }
    if (!source.host.empty()) {
        return ReadHost(source.host, sink);
    }
    if (source.text) {
        const std::string& text = *source.text;
        for (size_t at = 0; at < text.size(); at += kChunk) {
            size_t size = std::min(kChunk, text.size() - at);
            if (!sink(reinterpret_cast<const uint8_t*>(text.data() + at), size)) {
                return platform::kErrorOperationAborted;
            }
        }
    }
    return 0;
}

long SimFileContents::ReadHost(const std::filesystem::path& host, const Sink& sink) {
    std::error_code error;
    if (std::filesystem::is_directory(host, error)) {
        return platform::kErrorAccessDenied;
    }
    std::ifstream file(host, std::ios::binary);
    if (!file) {
        return platform::kErrorFileNotFound;
    }
    std::vector<char> buffer(kChunk);
    for (;;) {
        file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        auto got = static_cast<size_t>(file.gcount());
        if (got > 0 && !sink(reinterpret_cast<const uint8_t*>(buffer.data()), got)) {
            return platform::kErrorOperationAborted;
        }
        if (file.bad()) {
            return platform::kErrorAccessDenied;
        }
        if (!file) {
            return 0;
        }
    }
}

void SimFileContents::SetText(const std::wstring& path, std::string bytes) {
    files_.AddFile(path);
    std::lock_guard<std::mutex> lock(mutex_);
    sources_[NormalPath(path)] = Source{std::make_shared<const std::string>(std::move(bytes)), {}};
}

bool SimFileContents::MapHostFolder(const std::wstring& folder,
                                    const std::filesystem::path& hostFolder, std::string& error) {
    std::wstring base = folder;
    if (!base.empty() && base.back() != L'\\') {
        base += L'\\';
    }
    std::map<std::wstring, std::filesystem::path> found;
    std::error_code walkError;
    std::filesystem::recursive_directory_iterator walk(hostFolder, walkError);
    for (; !walkError && walk != std::filesystem::recursive_directory_iterator();
         walk.increment(walkError)) {
        std::error_code typeError;
        if (!walk->is_regular_file(typeError)) {
            continue;
        }
        if (found.size() == kMaxMappedFiles) {
            error =
                hostFolder.string() + ": more than " + std::to_string(kMaxMappedFiles) + " files";
            return false;
        }
        std::wstring relative = walk->path().lexically_relative(hostFolder).wstring();
        std::replace(relative.begin(), relative.end(), L'/', L'\\');
        found[base + relative] = walk->path();
    }
    if (walkError) {
        error = hostFolder.string() + ": " + walkError.message();
        return false;
    }
    for (const auto& [path, host] : found) {
        files_.AddFile(path);
        std::lock_guard<std::mutex> lock(mutex_);
        sources_[NormalPath(path)] = Source{nullptr, host};
    }
    return true;
}

void SimFileContents::Apply(const Scenario& scenario) {
    for (const auto& [path, text] : scenario.fileContents) {
        SetText(path, text);
    }
    for (const auto& [folder, host] : scenario.hostFolders) {
        std::string error;
        if (!MapHostFolder(folder, std::filesystem::u8path(host), error)) {
            LogErrorFun("[SimulatedPc] host folder not mapped: %s", error.c_str());
        }
    }
}

void SimFileContents::Clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    sources_.clear();
}

}  // namespace connectkit::sim
