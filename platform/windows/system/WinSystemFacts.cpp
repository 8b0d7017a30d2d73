#include "platform/windows/system/WinSystemFacts.h"

#include <windows.h>

#include <vector>

#include "platform/ports/Registry.h"
#include "platform/suite/DEString.h"
#include "platform/windows/system/SmbiosTable.h"

namespace connectkit::win {
namespace {

constexpr wchar_t kCurrentVersion[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr wchar_t kBiosKey[] = L"HARDWARE\\DESCRIPTION\\System\\BIOS";
// 'RSMB', the raw SMBIOS provider.
constexpr DWORD kRsmb = 0x52534D42;

SmbiosFacts ReadSmbios() {
    UINT size = GetSystemFirmwareTable(kRsmb, 0, nullptr, 0);
    if (size == 0) {
        return {};
    }
    std::vector<uint8_t> table(size);
    UINT got = GetSystemFirmwareTable(kRsmb, 0, table.data(), size);
    if (got == 0 || got > size) {
        return {};
    }
    return ParseSmbios(table.data(), got);
}

}  // namespace

std::wstring WinSystemFacts::RegistryText(const wchar_t* key, const wchar_t* name) {
    platform::RegistryData data;
    std::wstring text;
    if (registry_.Read(platform::RegistryHive::LocalMachine, key, name, data) != 0 ||
        !data.ToString(text)) {
        return L"";
    }
    return text;
}

bool WinSystemFacts::ReadOsVersion(platform::OsVersion& version) {
    using RtlGetVersionFunction = LONG(WINAPI*)(OSVERSIONINFOW*);
    HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    auto rtlGetVersion = ntdll ? reinterpret_cast<RtlGetVersionFunction>(reinterpret_cast<void*>(
                                     GetProcAddress(ntdll, "RtlGetVersion")))
                               : nullptr;
    OSVERSIONINFOW info{};
    info.dwOSVersionInfoSize = sizeof info;
    if (!rtlGetVersion || rtlGetVersion(&info) != 0) {
        return false;
    }
    version =
        platform::OsVersion{info.dwMajorVersion, info.dwMinorVersion, info.dwBuildNumber, 0, L""};
    platform::RegistryData data;
    if (registry_.Read(platform::RegistryHive::LocalMachine, kCurrentVersion, L"UBR", data) == 0) {
        data.ToDword(version.updateRevision);
    }
    version.displayVersion = RegistryText(kCurrentVersion, L"DisplayVersion");
    if (version.displayVersion.empty()) {
        version.displayVersion = RegistryText(kCurrentVersion, L"ReleaseId");
    }
    return true;
}

std::wstring WinSystemFacts::BiosVersion() {
    std::string fromFirmware = ReadSmbios().biosVersion;
    return fromFirmware.empty() ? RegistryText(kBiosKey, L"BIOSVersion")
                                : DE::UTF8ToUnicode(fromFirmware);
}

std::wstring WinSystemFacts::SystemModel() {
    std::string fromFirmware = ReadSmbios().productName;
    return fromFirmware.empty() ? RegistryText(kBiosKey, L"SystemProductName")
                                : DE::UTF8ToUnicode(fromFirmware);
}

std::wstring WinSystemFacts::DeviceId() {
    if (auto uuid = ReadSmbios().uuid) {
        return DE::UTF8ToUnicode(*uuid);
    }
    return RegistryText(L"SOFTWARE\\Microsoft\\Cryptography", L"MachineGuid");
}

uint32_t WinSystemFacts::DisplayDpi() {
    using GetDpiForSystemFunction = UINT(WINAPI*)();
    HMODULE user32 = GetModuleHandleW(L"user32.dll");
    auto getDpiForSystem =
        user32 ? reinterpret_cast<GetDpiForSystemFunction>(
                     reinterpret_cast<void*>(GetProcAddress(user32, "GetDpiForSystem")))
               : nullptr;
    if (getDpiForSystem) {
        return getDpiForSystem();
    }
    HDC screen = GetDC(nullptr);
    if (!screen) {
        return 0;
    }
    int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? static_cast<uint32_t>(dpi) : 0;
}

}  // namespace connectkit::win
