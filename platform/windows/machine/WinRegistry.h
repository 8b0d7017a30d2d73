#pragma once

#include "platform/ports/Registry.h"

namespace connectkit::win {

// The 64-bit registry view, whatever the bitness of the host.
class WinRegistry final : public platform::Registry {
public:
    long Read(platform::RegistryHive hive, const std::wstring& key, const std::wstring& name,
              platform::RegistryData& value) override;
    long WriteExisting(platform::RegistryHive hive, const std::wstring& key,
                       const std::wstring& name, const platform::RegistryData& value) override;
    long Write(platform::RegistryHive hive, const std::wstring& key, const std::wstring& name,
               const platform::RegistryData& value) override;
    long DeleteValue(platform::RegistryHive hive, const std::wstring& key,
                     const std::wstring& name) override;
    long DeleteKey(platform::RegistryHive hive, const std::wstring& key) override;
};

}  // namespace connectkit::win
