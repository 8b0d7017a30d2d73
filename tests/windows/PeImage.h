#pragma once
// Reads the export and import tables of a 64-bit PE file. The file is
// untrusted input: every offset is checked against its size.

#include <cstdint>
#include <string>
#include <vector>

namespace connectkit::test {

struct PeTables {
    std::vector<std::string> exportedNames;
    std::vector<std::string> importedLibraries;
};

// False with `error` set when the bytes are not a well-formed PE32+ image.
bool ReadPeTables(const std::vector<uint8_t>& image, PeTables& tables, std::string& error);

}  // namespace connectkit::test
