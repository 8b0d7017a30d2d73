#include "platform/windows/machine/WinRegistry.h"

#include <windows.h>

#include "platform/windows/core/UniqueHandle.h"

namespace connectkit::win {
namespace {

HKEY Root(platform::RegistryHive hive) {
    return hive == platform::RegistryHive::LocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

}  // namespace

long WinRegistry::Read(platform::RegistryHive hive, const std::wstring& key,
                       const std::wstring& name, platform::RegistryData& value) {
    RegistryKey open;
    LONG status =
        RegOpenKeyExW(Root(hive), key.c_str(), 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, open.Put());
    if (status != ERROR_SUCCESS) {
        return status;
    }
    DWORD type = 0;
    DWORD size = 0;
    status = RegQueryValueExW(open.Get(), name.c_str(), nullptr, &type, nullptr, &size);
    // The value can grow between the two calls; try again with its new size.
    for (int attempt = 0; attempt < 3 && status == ERROR_SUCCESS; ++attempt) {
        std::vector<uint8_t> bytes(size);
        status = RegQueryValueExW(open.Get(), name.c_str(), nullptr, &type,
                                  bytes.empty() ? nullptr : bytes.data(), &size);
        if (status == ERROR_SUCCESS) {
            bytes.resize(size);
            value.type = static_cast<platform::RegistryType>(type);
            value.bytes = std::move(bytes);
            return ERROR_SUCCESS;
        }
        if (status == ERROR_MORE_DATA) {
            status = ERROR_SUCCESS;
        }
    }
    return status;
}

long WinRegistry::Write(platform::RegistryHive hive, const std::wstring& key,
                        const std::wstring& name, const platform::RegistryData& value) {
    RegistryKey open;
    LONG status = RegCreateKeyExW(Root(hive), key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                  KEY_SET_VALUE | KEY_WOW64_64KEY, nullptr, open.Put(), nullptr);
    if (status != ERROR_SUCCESS) {
        return status;
    }
    return RegSetValueExW(open.Get(), name.c_str(), 0, static_cast<DWORD>(value.type),
                          value.bytes.data(), static_cast<DWORD>(value.bytes.size()));
}

long WinRegistry::WriteExisting(platform::RegistryHive hive, const std::wstring& key,
                                const std::wstring& name, const platform::RegistryData& value) {
    RegistryKey open;
    LONG status =
        RegOpenKeyExW(Root(hive), key.c_str(), 0, KEY_ALL_ACCESS | KEY_WOW64_64KEY, open.Put());
    if (status != ERROR_SUCCESS) {
        return status;
    }
    return RegSetValueExW(open.Get(), name.c_str(), 0, static_cast<DWORD>(value.type),
                          value.bytes.data(), static_cast<DWORD>(value.bytes.size()));
}

long WinRegistry::DeleteValue(platform::RegistryHive hive, const std::wstring& key,
                              const std::wstring& name) {
    RegistryKey open;
    LONG status =
        RegOpenKeyExW(Root(hive), key.c_str(), 0, KEY_SET_VALUE | KEY_WOW64_64KEY, open.Put());
    if (status != ERROR_SUCCESS) {
        return status;
    }
    return RegDeleteValueW(open.Get(), name.c_str());
}

long WinRegistry::DeleteKey(platform::RegistryHive hive, const std::wstring& key) {
    if (key.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    return RegDeleteTreeW(Root(hive), key.c_str());
}

}  // namespace connectkit::win
