#pragma once

#include "platform/ports/SystemFacts.h"

namespace connectkit::platform {
class Registry;
}

namespace connectkit::win {

// Sources, and what each answers when its source is missing:
//  - OS version: RtlGetVersion (unlike GetVersionEx, not capped at the
//    version the host's manifest declares); the update revision ("UBR") and
//    the display version ("DisplayVersion", before 20H2 "ReleaseId") from
//    HKLM\SOFTWARE\Microsoft\Windows NT\CurrentVersion: 0 and "" when absent.
//  - BIOS version and model: the SMBIOS table (GetSystemFirmwareTable
//    'RSMB'), else HKLM\HARDWARE\DESCRIPTION\System\BIOS "BIOSVersion" and
//    "SystemProductName"; "" when neither has it.
//  - Device identifier: the SMBIOS system UUID, which survives reinstalling
//    Windows; boards that leave it unset (all zero or all ones) fall back to
//    the Windows installation's MachineGuid; "" when neither exists.
//  - DPI: GetDpiForSystem (Windows 10 1607 and later), else the screen's
//    LOGPIXELSX; 0 when neither answers.
class WinSystemFacts final : public platform::SystemFacts {
public:
    explicit WinSystemFacts(platform::Registry& registry) : registry_(registry) {}

    bool ReadOsVersion(platform::OsVersion& version) override;
    std::wstring BiosVersion() override;
    std::wstring SystemModel() override;
    std::wstring DeviceId() override;
    uint32_t DisplayDpi() override;

private:
    std::wstring RegistryText(const wchar_t* key, const wchar_t* name);

    platform::Registry& registry_;
};

}  // namespace connectkit::win
