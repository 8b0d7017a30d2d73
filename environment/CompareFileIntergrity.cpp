// The installation check. Two choices the manifest format leaves open:
//  - A manifest path is relative to the executable's folder, like the path
//    the caller passes, so the digest is taken of that folder joined with
//    the path, not of the path as written (which would name a file relative
//    to whatever the host's current directory happens to be).
//  - Digests are lower-case hex, as sha256sum prints them, so a release
//    engineer can build the manifest from its output. The comparison stays
//    exact: a manifest in upper case never matches.
// Beyond that, input is untrusted: a path that climbs out of the
// executable's folder is refused, a file that cannot be read to its end has
// no digest and matches nothing (not even an empty "Sha256"), and the file is
// hashed once however many entries name it.

#include <optional>

#include "SDK/Util/LogTool/LogTool.h"
#include "connectkit/SystemEnvironment.h"
#include "platform/Platform.h"
#include "platform/suite/DEFile.h"
#include "platform/suite/DEString.h"
#include "platform/suite/VtXml.h"

namespace {

constexpr char kManifest[] = "\\config\\CheckFileIntergrity.xml";

void Say(const std::string& message) {
    connectkit::platform::Current().debugOutput().Write(
        DE::UTF8ToUnicode(message) + L"(SystemEnvironment::CompareFileIntergrity)");
}

// The executable's folder without its closing backslash, so that the
// caller's leading backslash joins it.
std::string ExecutableDirectory() {
    std::wstring directory = connectkit::platform::Current().files().MainModuleDirectory();
    while (!directory.empty() && (directory.back() == L'\\' || directory.back() == L'/')) {
        directory.pop_back();
    }
    return DE::UnicodeToUTF8(directory);
}

bool LeavesDirectory(const std::string& path) {
    int depth = 0;
    size_t start = 0;
    while (start <= path.size()) {
        size_t end = path.find_first_of("\\/", start);
        if (end == std::string::npos) {
            end = path.size();
        }
        std::string_view part(path.data() + start, end - start);
        if (part == "..") {
            if (--depth < 0) {
                return true;
            }
        } else if (!part.empty() && part != ".") {
            ++depth;
        }
        start = end + 1;
    }
    return false;
}

bool Compare(const std::string& filePath) {
    if (LeavesDirectory(filePath)) {
        Say("filePath leaves the executable directory: " + filePath);
        return false;
    }
    const std::string directory = ExecutableDirectory();
    if (!DE::FileExists(directory + filePath)) {
        Say("filePath is not exist: " + filePath);
        return false;
    }
    const std::string manifest = directory + kManifest;
    if (!DE::FileExists(manifest)) {
        Say("CheckFileIntergrity.xml is not exist ");
        return false;
    }
    VtXMLDocument document;
    if (!document.LoadFile(manifest)) {
        Say("load xml file failed");
        return false;
    }
    VtXmlElement root = document.RootElement();
    if (root.IsElementNull()) {
        Say("node1 is nullptr ");
        return false;
    }
    std::optional<std::string> actual;
    bool readable = false;
    for (VtXmlElement entry = root.FirstNode("FileAttributes"); !entry.IsElementNull();
         entry = entry.NextSiblingElement("")) {
        VtXmlAttribute path = entry.FirstAttribute("Path");
        if (path.IsAttributeNull() || path.Value() != filePath) {
            continue;
        }
        if (!actual) {
            actual.emplace();
            readable = DE::GetFileSha256Hex(directory + path.Value(), *actual);
        }
        VtXmlAttribute expected = entry.FirstAttribute("Sha256");
        if (!expected.IsAttributeNull() && readable && expected.Value() == *actual) {
            return true;
        }
        if (expected.IsAttributeNull()) {
            Say("Sha256 Check sha node null");
        } else {
            Say("Sha256 Check faild " + filePath + " pluginsha256:" + *actual +
                " fileNodeSha256:" + expected.Value());
        }
    }
    return false;
}

}  // namespace

bool SystemEnvironment::CompareFileIntergrity(const std::string& filePath) {
    try {
        return Compare(filePath);
    } catch (const std::exception& error) {
        // Out of memory on a hostile manifest, or a platform failure: the
        // file is not vouched for.
        LogErrorFun("%s catch exception: %.200s", "SystemEnvironment::CompareFileIntergrity",
                    error.what());
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", "SystemEnvironment::CompareFileIntergrity");
    }
    return false;
}
