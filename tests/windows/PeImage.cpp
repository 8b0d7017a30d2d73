#include "PeImage.h"

#include <cstring>

namespace connectkit::test {
namespace {

class Reader {
public:
    explicit Reader(const std::vector<uint8_t>& bytes) : bytes_(bytes) {}

    template <class T>
    bool Read(uint64_t offset, T& value) const {
        if (offset > bytes_.size() || bytes_.size() - offset < sizeof(T)) {
            return false;
        }
        std::memcpy(&value, bytes_.data() + offset, sizeof(T));
        return true;
    }

    bool String(uint64_t offset, std::string& text) const {
        text.clear();
        for (uint64_t i = offset; i < bytes_.size(); ++i) {
            if (bytes_[i] == 0) {
                return true;
            }
            text.push_back(static_cast<char>(bytes_[i]));
        }
        return false;
    }

private:
    const std::vector<uint8_t>& bytes_;
};

struct Section {
    uint32_t virtualAddress;
    uint32_t virtualSize;
    uint32_t rawOffset;
    uint32_t rawSize;
};

bool ToOffset(const std::vector<Section>& sections, uint32_t rva, uint64_t& offset) {
    for (const auto& section : sections) {
        uint32_t size = std::max(section.virtualSize, section.rawSize);
        if (rva >= section.virtualAddress && rva - section.virtualAddress < size) {
            offset = uint64_t{section.rawOffset} + (rva - section.virtualAddress);
            return true;
        }
    }
    return false;
}

}  // namespace

bool ReadPeTables(const std::vector<uint8_t>& image, PeTables& tables, std::string& error) {
    Reader reader(image);
    uint16_t mz = 0;
    uint32_t peOffset = 0;
    uint32_t signature = 0;
    if (!reader.Read(0, mz) || mz != 0x5A4D || !reader.Read(0x3C, peOffset) ||
        !reader.Read(peOffset, signature) || signature != 0x00004550) {
        error = "not a PE file";
        return false;
    }
    uint64_t coff = uint64_t{peOffset} + 4;
    uint16_t sectionCount = 0;
    uint16_t optionalSize = 0;
    uint16_t magic = 0;
    if (!reader.Read(coff + 2, sectionCount) || !reader.Read(coff + 16, optionalSize) ||
        !reader.Read(coff + 20, magic) || magic != 0x20B) {
        error = "not a PE32+ image";
        return false;
    }
    uint64_t optional = coff + 20;
    uint32_t directoryCount = 0;
    if (!reader.Read(optional + 108, directoryCount) || directoryCount < 2) {
        error = "no data directories";
        return false;
    }
    uint32_t exportRva = 0;
    uint32_t importRva = 0;
    reader.Read(optional + 112, exportRva);
    reader.Read(optional + 120, importRva);

    std::vector<Section> sections;
    uint64_t table = optional + optionalSize;
    for (uint16_t i = 0; i < sectionCount; ++i) {
        Section section{};
        uint64_t entry = table + uint64_t{i} * 40;
        if (!reader.Read(entry + 8, section.virtualSize) ||
            !reader.Read(entry + 12, section.virtualAddress) ||
            !reader.Read(entry + 16, section.rawSize) ||
            !reader.Read(entry + 20, section.rawOffset)) {
            error = "section table cut short";
            return false;
        }
        sections.push_back(section);
    }

    uint64_t exports = 0;
    if (exportRva != 0 && ToOffset(sections, exportRva, exports)) {
        uint32_t nameCount = 0;
        uint32_t namesRva = 0;
        uint64_t names = 0;
        if (!reader.Read(exports + 24, nameCount) || !reader.Read(exports + 32, namesRva) ||
            (nameCount > 0 && !ToOffset(sections, namesRva, names))) {
            error = "export directory cut short";
            return false;
        }
        for (uint32_t i = 0; i < nameCount; ++i) {
            uint32_t nameRva = 0;
            uint64_t nameOffset = 0;
            std::string name;
            if (!reader.Read(names + uint64_t{i} * 4, nameRva) ||
                !ToOffset(sections, nameRva, nameOffset) || !reader.String(nameOffset, name)) {
                error = "export name table cut short";
                return false;
            }
            tables.exportedNames.push_back(name);
        }
    }

    uint64_t imports = 0;
    if (importRva != 0 && ToOffset(sections, importRva, imports)) {
        for (uint64_t entry = imports;; entry += 20) {
            uint32_t nameRva = 0;
            uint64_t nameOffset = 0;
            std::string name;
            if (!reader.Read(entry + 12, nameRva)) {
                error = "import directory cut short";
                return false;
            }
            if (nameRva == 0) {
                break;
            }
            if (!ToOffset(sections, nameRva, nameOffset) || !reader.String(nameOffset, name)) {
                error = "import name cut short";
                return false;
            }
            tables.importedLibraries.push_back(name);
        }
    }
    return true;
}

}  // namespace connectkit::test
