#pragma once
// The Windows registry, with Win32 error codes as results.

#include <cstdint>
#include <string>
#include <vector>

namespace connectkit::platform {

enum class RegistryHive { LocalMachine, CurrentUser };

// Value types with their REG_* numbers.
enum class RegistryType : uint32_t {
    None = 0,
    String = 1,
    ExpandString = 2,
    Binary = 3,
    Dword = 4,
    MultiString = 7,
    Qword = 11,
};

// A value as the registry stores it: its type and raw bytes (strings are
// UTF-16LE with their terminating zero, as RegSetValueExW writes them).
struct RegistryData {
    RegistryType type = RegistryType::None;
    std::vector<uint8_t> bytes;

    static RegistryData FromString(const std::wstring& text);
    static RegistryData FromDword(uint32_t value);
    static RegistryData FromBinary(std::vector<uint8_t> bytes);
    // Text up to the first zero; false for non-string types.
    bool ToString(std::wstring& text) const;
    bool ToDword(uint32_t& value) const;
};

class Registry {
public:
    virtual ~Registry() = default;
    // Keys are paths below the hive with backslashes ("SOFTWARE\\Veltra").
    virtual long Read(RegistryHive hive, const std::wstring& key, const std::wstring& name,
                      RegistryData& value) = 0;
    // Creates the key (and its parents) when missing.
    virtual long Write(RegistryHive hive, const std::wstring& key, const std::wstring& name,
                       const RegistryData& value) = 0;
    virtual long DeleteValue(RegistryHive hive, const std::wstring& key,
                             const std::wstring& name) = 0;
    // Opens an existing key with full access (never creates it) and writes
    // the value: what a caller does that must not leave keys behind.
    virtual long WriteExisting(RegistryHive hive, const std::wstring& key, const std::wstring& name,
                               const RegistryData& value) = 0;
    // Deletes the key with everything below it.
    virtual long DeleteKey(RegistryHive hive, const std::wstring& key) = 0;
};

}  // namespace connectkit::platform
