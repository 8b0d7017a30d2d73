// The system environment's Windows sources against Wine's real Win32.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "platform/ports/Errors.h"
#include "platform/windows/machine/WinRegistry.h"
#include "platform/windows/system/SmbiosTable.h"
#include "platform/windows/system/WinFileContents.h"
#include "platform/windows/system/WinSystemFacts.h"

namespace connectkit::test {
namespace {

namespace fs = std::filesystem;

TEST(WinFileContents, StreamsInPiecesAndRefusesFoldersAndMissingFiles) {
    fs::path folder = fs::temp_directory_path() / "ck-win-contents";
    fs::create_directories(folder);
    // Over one read chunk, so the file arrives in several pieces.
    const size_t size = (1u << 20) + 3;
    std::ofstream(folder / "a.bin", std::ios::binary) << std::string(size, 'a');
    win::WinFileContents contents;
    size_t pieces = 0;
    std::string read;
    ASSERT_EQ(contents.Read((folder / "a.bin").wstring(),
                            [&](const uint8_t* data, size_t bytes) {
                                ++pieces;
                                read.append(reinterpret_cast<const char*>(data), bytes);
                                return true;
                            }),
              0);
    EXPECT_EQ(pieces, 2u);
    EXPECT_EQ(read, std::string(size, 'a'));

    auto ignore = [](const uint8_t*, size_t) { return true; };
    EXPECT_EQ(contents.Read(folder.wstring(), ignore),
              static_cast<long>(platform::kErrorAccessDenied));
    EXPECT_EQ(contents.Read((folder / "missing.bin").wstring(), ignore),
              static_cast<long>(platform::kErrorFileNotFound));
    EXPECT_EQ(
        contents.Read((folder / "a.bin").wstring(), [](const uint8_t*, size_t) { return false; }),
        static_cast<long>(platform::kErrorOperationAborted));
    fs::remove_all(folder);
}

TEST(WinSystemFacts, AnswersFromWinesRegistryAndApis) {
    win::WinRegistry registry;
    win::WinSystemFacts facts(registry);
    platform::OsVersion os;
    ASSERT_TRUE(facts.ReadOsVersion(os));
    platform::RegistryData data;
    std::wstring build;
    ASSERT_EQ(registry.Read(platform::RegistryHive::LocalMachine,
                            L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion",
                            L"CurrentBuildNumber", data),
              0);
    ASSERT_TRUE(data.ToString(build));
    EXPECT_EQ(std::to_wstring(os.build), build);
    EXPECT_GE(os.major, 6u);
    EXPECT_GT(facts.DisplayDpi(), 0u);
    std::wstring id = facts.DeviceId();
    EXPECT_FALSE(id.empty());
    EXPECT_EQ(facts.DeviceId(), id);
}

// Builds a RawSMBIOSData block (version 3.4) from structures given as bytes.
std::vector<uint8_t> Raw(const std::vector<std::vector<uint8_t>>& structures) {
    std::vector<uint8_t> raw = {0, 3, 4, 0, 0, 0, 0, 0};
    for (const auto& s : structures) {
        raw.insert(raw.end(), s.begin(), s.end());
    }
    const uint32_t length = static_cast<uint32_t>(raw.size() - 8);
    std::memcpy(raw.data() + 4, &length, sizeof(length));
    return raw;
}

std::vector<uint8_t> WithStrings(std::vector<uint8_t> formatted, const std::string& strings) {
    formatted.insert(formatted.end(), strings.begin(), strings.end());
    formatted.push_back(0);
    formatted.push_back(0);
    return formatted;
}

TEST(SmbiosTable, ReadsBiosModelAndUuidWithinTheBytesGiven) {
    std::vector<uint8_t> bios = {0, 0x12, 0, 0, 1, 2};
    bios.resize(0x12, 0);
    std::vector<uint8_t> system = {1, 0x19, 1, 0, 1, 2, 0, 0};
    for (uint8_t i = 0; i < 16; ++i) {
        system.push_back(i + 1);
    }
    system.push_back(6);
    auto raw = Raw({WithStrings(bios, std::string("Veltra\0N3HET82W (1.54)", 22)),
                    WithStrings(system, std::string("Veltra\0Book 14", 14)),
                    {127, 4, 2, 0, 0, 0}});
    auto facts = win::ParseSmbios(raw.data(), raw.size());
    EXPECT_EQ(facts.biosVersion, "N3HET82W (1.54)");
    EXPECT_EQ(facts.productName, "Book 14");
    EXPECT_EQ(facts.uuid, "04030201-0605-0807-090A-0B0C0D0E0F10");

    // Every cut of the table stays inside it and answers what it can.
    for (size_t size = 0; size < raw.size(); ++size) {
        std::vector<uint8_t> cut(raw.begin(), raw.begin() + size);
        auto partial = win::ParseSmbios(cut.data(), cut.size());
        EXPECT_TRUE(partial.biosVersion.empty() || partial.biosVersion == "N3HET82W (1.54)");
    }
    // A string index beyond the set and an unset UUID give nothing.
    bios[5] = 9;
    std::fill(system.begin() + 8, system.begin() + 24, 0xFF);
    raw = Raw({WithStrings(bios, "x"), WithStrings(system, "y")});
    facts = win::ParseSmbios(raw.data(), raw.size());
    EXPECT_EQ(facts.biosVersion, "");
    EXPECT_FALSE(facts.uuid.has_value());
}

}  // namespace
}  // namespace connectkit::test
