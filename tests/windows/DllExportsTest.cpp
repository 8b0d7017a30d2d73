// connectkit.dll exports exactly the names the suite calls, and imports no
// vendor library, so it loads on a PC without vendor drivers.

#include <windows.h>

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "PeImage.h"
#include "platform/windows/machine/WinFileSystem.h"

namespace connectkit::test {
namespace {

const char kExpectedExports[] =
#include "ExpectedExports.inc"
    ;

std::string Demangle(const std::string& name) {
    int status = 0;
    char* text = abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status);
    std::string result = status == 0 && text ? text : name;
    std::free(text);
    return result;
}

std::set<std::string> ExpectedNames() {
    std::set<std::string> names;
    std::istringstream lines(kExpectedExports);
    std::string line;
    while (std::getline(lines, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (!line.empty() && line[0] != '#') {
            names.insert(line);
        }
    }
    return names;
}

std::string DllPath() {
    std::wstring directory = win::WinFileSystem().MainModuleDirectory();
    return std::string(directory.begin(), directory.end()) + "connectkit.dll";
}

PeTables ReadDll() {
    std::ifstream file(DllPath(), std::ios::binary);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), {});
    PeTables tables;
    std::string error;
    EXPECT_TRUE(ReadPeTables(bytes, tables, error)) << error;
    return tables;
}

TEST(DllExports, AreExactlyTheExpectedList) {
    PeTables tables = ReadDll();
    std::set<std::string> actual;
    for (const auto& name : tables.exportedNames) {
        actual.insert(Demangle(name));
    }
    std::set<std::string> expected = ExpectedNames();
    std::vector<std::string> missing;
    std::vector<std::string> extra;
    std::set_difference(expected.begin(), expected.end(), actual.begin(), actual.end(),
                        std::back_inserter(missing));
    std::set_difference(actual.begin(), actual.end(), expected.begin(), expected.end(),
                        std::back_inserter(extra));
    std::ostringstream report;
    for (const auto& name : missing)
        report << "missing: " << name << '\n';
    for (const auto& name : extra)
        report << "unexpected: " << name << '\n';
    EXPECT_TRUE(missing.empty() && extra.empty()) << report.str();
}

TEST(DllExports, NoVendorLibraryIsImported) {
    PeTables tables = ReadDll();
    ASSERT_FALSE(tables.importedLibraries.empty());
    for (auto name : tables.importedLibraries) {
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        EXPECT_EQ(name.find("murocapi"), std::string::npos);
        EXPECT_EQ(name.find("realtek"), std::string::npos);
    }
}

template <class Function>
Function Export(HMODULE dll, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(dll, name)));
}

TEST(DllExports, TheDllLoadsAndItsExportsRun) {
    HMODULE dll = LoadLibraryW(L"connectkit.dll");
    ASSERT_NE(dll, nullptr) << GetLastError();
    auto milliseconds = Export<unsigned long long (*)()>(
        dll, "_ZN22SynergyDataReportClass21GetCurrentMilliSecondEv");
    ASSERT_NE(milliseconds, nullptr);
    // 2020-01-01 in milliseconds since 1970: the DLL reads the real clock.
    EXPECT_GT(milliseconds(), 1577836800000ull);
    auto instance = Export<void* (*)()>(dll, "_ZN11ErrorStatus11GetInstanceEv");
    ASSERT_NE(instance, nullptr);
    EXPECT_NE(instance(), nullptr);
}

TEST(PeImage, RejectsTruncatedAndForeignFiles) {
    PeTables tables;
    std::string error;
    EXPECT_FALSE(ReadPeTables({}, tables, error));
    EXPECT_FALSE(ReadPeTables({'M', 'Z', 0, 0}, tables, error));
    std::ifstream file(DllPath(), std::ios::binary);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), {});
    ASSERT_GT(bytes.size(), 1024u);
    bytes.resize(512);
    EXPECT_FALSE(ReadPeTables(bytes, tables, error));
}

}  // namespace
}  // namespace connectkit::test
