// `integrity check PATH` asks the library whether an installed file still
// matches the manifest beside the executable and shows what it wrote to the
// debugger; `integrity manifest DIR` writes that manifest for the files
// under DIR, as a release engineer needs it (the manifest itself left out).

#include <tinyxml2.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Context.h"
#include "Machine.h"
#include "commands/Commands.h"
#include "connectkit/SystemEnvironment.h"
#include "platform/suite/DEFile.h"
#include "platform/suite/DEString.h"

namespace connectkit::tool {
namespace {

namespace fs = std::filesystem;

constexpr char kManifestName[] = "config/CheckFileIntergrity.xml";

void Check(Context& context, const std::string& path) {
    bool intact = SystemEnvironment::CompareFileIntergrity(path);
    std::ostringstream text;
    text << path << ": " << (intact ? "true" : "false") << '\n';
    nlohmann::json lines = nlohmann::json::array();
    for (const auto& line : DebuggerLines()) {
        std::string narrow = DE::UnicodeToUTF8(line);
        text << "debugger: " << narrow << '\n';
        lines.push_back(narrow);
    }
    context.Print(text.str(), {{"path", path}, {"intact", intact}, {"debugOutput", lines}});
    if (!intact) {
        context.exitCode = kExitFailed;
    }
}

// The files are read through the library's own digest, with DIR standing in
// for the executable's folder, so the manifest holds exactly what the check
// will compute.
void Manifest(Context& context, const std::string& directory, const std::string& output) {
    fs::path root(directory);
    std::string error;
    std::string base;
    if (!UseInstallationFolder(directory, base, error)) {
        context.Fail(kExitFailed, error);
        return;
    }
    std::vector<std::string> paths;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        std::string relative = entry.path().lexically_relative(root).generic_string();
        if (entry.is_regular_file() && relative != kManifestName) {
            std::replace(relative.begin(), relative.end(), '/', '\\');
            paths.push_back("\\" + relative);
        }
    }
    std::sort(paths.begin(), paths.end());
    tinyxml2::XMLPrinter printer;
    printer.PushDeclaration("xml version=\"1.0\" encoding=\"UTF-8\"");
    printer.OpenElement("CheckFileIntergrity");
    nlohmann::json entries = nlohmann::json::array();
    for (const auto& path : paths) {
        std::string sha;
        if (!DE::GetFileSha256Hex(base + path, sha)) {
            context.Fail(kExitFailed, path + ": cannot be read");
            return;
        }
        printer.OpenElement("FileAttributes");
        printer.PushAttribute("Path", path.c_str());
        printer.PushAttribute("Sha256", sha.c_str());
        printer.CloseElement();
        entries.push_back({{"Path", path}, {"Sha256", sha}});
    }
    printer.CloseElement();
    std::string xml = printer.CStr();
    if (!output.empty()) {
        std::ofstream file(output, std::ios::binary);
        if (!(file << xml)) {
            context.Fail(kExitFailed, output + ": cannot be written");
            return;
        }
    }
    std::string human =
        output.empty() ? xml : std::to_string(paths.size()) + " files listed in " + output + "\n";
    context.Print(human, {{"directory", directory}, {"entries", entries}});
}

}  // namespace

void AddIntegrityCommand(CLI::App& app, Context& context) {
    auto* integrity = app.add_subcommand("integrity", "Installed files against their manifest");
    integrity->require_subcommand(1);

    auto* check = integrity->add_subcommand(
        "check", "Is PATH (relative to the executable's folder, e.g. \\plugins\\a.dll) intact?");
    static std::string path;
    check->add_option("PATH", path, "The file, as the host passes it")->required();
    check->callback([&context] { Check(context, path); });

    auto* manifest = integrity->add_subcommand(
        "manifest", "Write the manifest (config\\CheckFileIntergrity.xml) for the files under DIR");
    static std::string directory;
    static std::string output;
    manifest->add_option("DIR", directory, "The installation folder")
        ->required()
        ->check(CLI::ExistingDirectory);
    manifest->add_option("-o,--output", output, "Write the manifest to FILE instead of stdout");
    manifest->callback([&context] { Manifest(context, directory, output); });
}

}  // namespace connectkit::tool
