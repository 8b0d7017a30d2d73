// connectkit.dll exports exactly the names the suite calls, and imports no
// vendor library, so it loads on a PC without vendor drivers. The tables
// are read from the image as the Windows loader mapped it.

#include <windows.h>

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <sstream>
#include <string>

namespace connectkit::test {
namespace {

const char kExpectedExports[] =
#include "ExpectedExports.inc"
    ;

std::string Demangle(const char* name) {
    int status = 0;
    char* text = abi::__cxa_demangle(name, nullptr, nullptr, &status);
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

class DllExports : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(dll_, nullptr) << GetLastError(); }

    template <class T>
    const T* At(DWORD rva) const {
        return reinterpret_cast<const T*>(reinterpret_cast<const BYTE*>(dll_) + rva);
    }
    DWORD Directory(int entry) const {
        auto* nt = At<IMAGE_NT_HEADERS64>(At<IMAGE_DOS_HEADER>(0)->e_lfanew);
        return nt->OptionalHeader.DataDirectory[entry].VirtualAddress;
    }

    HMODULE dll_ = LoadLibraryW(L"connectkit.dll");
};

TEST_F(DllExports, AreExactlyTheExpectedList) {
    auto* exports = At<IMAGE_EXPORT_DIRECTORY>(Directory(IMAGE_DIRECTORY_ENTRY_EXPORT));
    auto* names = At<DWORD>(exports->AddressOfNames);
    std::set<std::string> actual;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
        actual.insert(Demangle(At<char>(names[i])));
    }
    EXPECT_EQ(actual, ExpectedNames());
}

TEST_F(DllExports, NoVendorLibraryIsImported) {
    auto* entry = At<IMAGE_IMPORT_DESCRIPTOR>(Directory(IMAGE_DIRECTORY_ENTRY_IMPORT));
    ASSERT_NE(entry->Name, 0u);
    for (; entry->Name != 0; ++entry) {
        std::string name = At<char>(entry->Name);
        CharLowerA(name.data());
        // Native Wi-Fi and classic Bluetooth are loaded at run time too: a PC
        // may lack them, and the tests put doubles in their place.
        for (const char* loaded : {"murocapi", "realtek", "wlanapi", "bthprops"}) {
            EXPECT_EQ(name.find(loaded), std::string::npos) << name;
        }
    }
}

}  // namespace
}  // namespace connectkit::test
