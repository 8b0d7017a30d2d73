// The system facts as the machine gives them, and the integrity check of
// the suite's files against their manifest.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "connectkit/SystemEnvironment.h"
#if !defined(_WIN32)
#include <sys/resource.h>
#include <unistd.h>
#endif
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

constexpr wchar_t kSuite[] = L"C:\\Suite\\";
constexpr wchar_t kManifest[] = L"C:\\Suite\\config\\CheckFileIntergrity.xml";
constexpr wchar_t kFunction[] = L"(SystemEnvironment::CompareFileIntergrity)";
// FIPS 180-2 test vectors: "abc" and the empty message.
constexpr char kAbc[] = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
constexpr char kAbcUpper[] = "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD";
constexpr char kEmpty[] = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
constexpr char kWrong[] = "0000000000000000000000000000000000000000000000000000000000000000";

std::string Entry(const std::string& path, const std::string& sha) {
    return "<FileAttributes Path=\"" + path + "\" Sha256=\"" + sha + "\"/>";
}

std::string Manifest(const std::string& entries) {
    return "<?xml version=\"1.0\"?>\n<Files>" + entries + "</Files>";
}

class FileIntegrityTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        pc().files().SetMainModuleDirectory(kSuite);
        pc().fileContents().SetText(L"C:\\Suite\\plugin.dll", "abc");
    }
    void SetManifest(const std::string& text) { pc().fileContents().SetText(kManifest, text); }
    // The debugger lines without the function name each must end with.
    std::vector<std::wstring> Messages() {
        std::vector<std::wstring> messages;
        for (const auto& line : pc().debugOutput().Lines()) {
            EXPECT_TRUE(line.ends_with(kFunction)) << std::string(line.begin(), line.end());
            messages.push_back(line.substr(0, line.size() - std::wcslen(kFunction)));
        }
        return messages;
    }
};

struct Case {
    const char* name;
    std::string manifest;
    bool expected;
    std::vector<std::wstring> messages;
    std::string filePath = "\\plugin.dll";
};

std::wstring Failed(const std::string& actual, const std::string& listed) {
    std::string text =
        "Sha256 Check faild \\plugin.dll pluginsha256:" + actual + " fileNodeSha256:" + listed;
    return std::wstring(text.begin(), text.end());
}

class ManifestCases : public FileIntegrityTest, public ::testing::WithParamInterface<Case> {};

TEST_P(ManifestCases, AnswerAndDebuggerLines) {
    const Case& c = GetParam();
    SetManifest(c.manifest);
    EXPECT_EQ(SystemEnvironment::CompareFileIntergrity(c.filePath), c.expected);
    EXPECT_EQ(Messages(), c.messages);
}

std::string Repeat(const std::string& text, int times) {
    std::string out;
    for (int i = 0; i < times; ++i) {
        out += text;
    }
    return out;
}

INSTANTIATE_TEST_SUITE_P(
    Walk, ManifestCases,
    ::testing::Values(
        Case{"SecondEntryRight",
             Manifest(Entry("\\plugin.dll", kWrong) + Entry("\\plugin.dll", kAbc)),
             true,
             {Failed(kAbc, kWrong)}},
        Case{"MissingSha256IsSkipped",
             Manifest("<FileAttributes Path=\"\\plugin.dll\"/>" + Entry("\\plugin.dll", kAbc)),
             true,
             {L"Sha256 Check sha node null"}},
        Case{"OtherLetterCaseNeverMatches",
             Manifest(Entry("\\plugin.dll", kAbcUpper)),
             false,
             {Failed(kAbc, kAbcUpper)}},
        Case{"PathComparedWithCase", Manifest(Entry("\\Plugin.dll", kAbc)), false, {}},
        // The walk starts at the first FileAttributes but then visits
        // siblings of any name; attributes it does not know are ignored.
        Case{"WalkStartsAtFirstFileAttributes",
             Manifest("<Other Path=\"\\plugin.dll\" Sha256=\"" + std::string(kAbc) + "\"/>" +
                      "<FileAttributes/><Other Extra=\"1\" Path=\"\\plugin.dll\" Sha256=\"" + kAbc +
                      "\"/>"),
             true,
             {}},
        Case{"EntriesWithoutAttributes",
             Manifest("<FileAttributes/><FileAttributes></FileAttributes>"),
             false,
             {}},
        Case{"NotXml", "this is not xml", false, {L"load xml file failed"}},
        Case{"NoRootElement", "<!-- only a comment -->", false, {L"node1 is nullptr "}},
        Case{"DeeplyNested",
             Repeat("<a>", 5000) + Repeat("</a>", 5000),
             false,
             {L"load xml file failed"}},
        // Entities are never expanded: the "Sha256" holds the reference text.
        Case{"EntitiesStayText",
             "<!DOCTYPE f [<!ENTITY a \"" + std::string(kAbc) +
                 "\">]><Files><FileAttributes Path=\"\\plugin.dll\" Sha256=\"&a;\"/></Files>",
             false,
             {Failed(kAbc, "&a;")}},
        Case{"FileMissing",
             Manifest(Entry("\\gone.dll", kAbc)),
             false,
             {L"filePath is not exist: \\gone.dll"},
             "\\gone.dll"},
        Case{"LeavesExecutableFolder",
             Manifest(Entry("\\..\\Suite\\plugin.dll", kAbc)),
             false,
             {L"filePath leaves the executable directory: \\..\\Suite\\plugin.dll"},
             "\\..\\Suite\\plugin.dll"}),
    [](const ::testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

TEST_F(FileIntegrityTest, OversizedManifestIsRefusedUnread) {
    SetManifest(Manifest(Entry("\\plugin.dll", kAbc) + std::string(17u << 20, ' ')));
    EXPECT_FALSE(SystemEnvironment::CompareFileIntergrity("\\plugin.dll"));
    EXPECT_EQ(Messages(), std::vector<std::wstring>{L"load xml file failed"});
}

TEST_F(FileIntegrityTest, EmptyFileAndFolderInPlaceOfAFile) {
    pc().files().AddFile(L"C:\\Suite\\empty.dat");
    pc().files().AddFile(L"C:\\Suite\\plugins\\a.dll");
    // An unreadable file has no digest, so even an empty "Sha256" is no match.
    SetManifest(Manifest(Entry("\\empty.dat", kEmpty) + Entry("\\plugins", "")));
    EXPECT_TRUE(SystemEnvironment::CompareFileIntergrity("\\empty.dat"));
    EXPECT_FALSE(SystemEnvironment::CompareFileIntergrity("\\plugins"));
    EXPECT_EQ(Messages(), std::vector<std::wstring>{
                              L"Sha256 Check faild \\plugins pluginsha256: fileNodeSha256:"});
}

#if !defined(_WIN32)
// A file past 4 GiB on this machine (no 32-bit size or offset on the way) is
// hashed whole, and the process's peak memory stays where it was: the file
// is streamed, never held.
TEST_F(FileIntegrityTest, FileOver4GiBIsStreamedInFlatMemory) {
    namespace fs = std::filesystem;
    const fs::path root = fs::temp_directory_path() / ("ck-integrity-" + std::to_string(getpid()));
    fs::remove_all(root);
    fs::create_directories(root / "config");
    {
        std::ofstream file(root / "huge.bin", std::ios::binary);
        file.seekp(static_cast<std::streamoff>(4ull << 30));
        file.put('\0');
    }
    // sha256sum's digest of that many zero bytes.
    std::ofstream(root / "config/CheckFileIntergrity.xml") << Manifest(
        Entry("\\huge.bin", "fbb82f7b353676bb562eb82157fcf0ea42c36492ca13ee56dbf82c08b6802c5c"));
    std::string error;
    ASSERT_TRUE(pc().fileContents().MapHostFolder(kSuite, root, error)) << error;
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    EXPECT_TRUE(SystemEnvironment::CompareFileIntergrity("\\huge.bin"));
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 32 * 1024) << "KiB more at the peak";
    fs::remove_all(root);
}
#endif

using SystemFactsTest = SimTest;

// Each fact as the machine gives it, and what an empty source gives.
TEST_F(SystemFactsTest, FactsComeFromTheMachine) {
    const char* machines[] = {
        R"j({"system": {"os": {"version": "10.0.22631", "updateRevision": 2861,
             "displayVersion": "23H2"}, "biosVersion": "N3HET82W (1.54)", "model": "Book 14",
             "deviceId": "4C4C4544-0042-3510-8051-B2C04F4B4E32", "dpi": 120}})j",
        R"j({"system": {"os": {"version": "", "displayVersion": ""}, "biosVersion": "",
             "model": "", "deviceId": "", "dpi": 0}})j"};
    const std::vector<std::string> expected[] = {
        {"10.0.22631.2861", "22631", "23H2", "N3HET82W (1.54)", "Book 14",
         "4C4C4544-0042-3510-8051-B2C04F4B4E32", "120"},
        {"", "0", "", "", "", "", "96"}};
    for (int i = 0; i < 2; ++i) {
        ApplyJsonWorld(machines[i]);
        EXPECT_EQ((std::vector<std::string>{
                      SystemEnvironment::GetOsVersion(),
                      std::to_string(SystemEnvironment::GetOsBuildNumber()),
                      SystemEnvironment::GetOsDisplayVersion(), SystemEnvironment::GetBiosVersion(),
                      SystemEnvironment::GetModelName(), SystemEnvironment::GetDeviceId(),
                      std::to_string(SystemEnvironment::GetDisplayDpi())}),
                  expected[i]);
    }
}

TEST_F(SystemFactsTest, FeatureSwitchesByModelThenDefaultThenOff) {
    ApplyJsonWorld(R"j({"system": {"model": "Book 14"},
              "registry": [
                {"key": "HKLM\\SOFTWARE\\Veltra\\Brisklane\\ModelFeatures\\Book 14",
                 "values": {"Cast": {"dword": 1}, "Mirror": {"dword": 0}, "Text": {"string": "1"}}},
                {"key": "HKLM\\SOFTWARE\\Veltra\\Brisklane\\ModelFeatures\\Default",
                 "values": {"Mirror": {"dword": 1}, "Audio": {"dword": 1}}}]})j");
    EXPECT_TRUE(SystemEnvironment::GetModelFeatureSwitch("Cast"));
    // The model's own row wins over the default, even to say off.
    EXPECT_FALSE(SystemEnvironment::GetModelFeatureSwitch("Mirror"));
    EXPECT_TRUE(SystemEnvironment::GetModelFeatureSwitch("Audio"));
    EXPECT_FALSE(SystemEnvironment::GetModelFeatureSwitch("Text"));
    EXPECT_FALSE(SystemEnvironment::GetModelFeatureSwitch("Unknown"));
    EXPECT_FALSE(SystemEnvironment::GetModelFeatureSwitch(""));
}

}  // namespace
}  // namespace connectkit::test
