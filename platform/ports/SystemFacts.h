#pragma once
// What the machine says about itself. Each answer is empty (or zero) when its
// source is missing; callers decide what that means.

#include <cstdint>
#include <string>

namespace connectkit::platform {

struct OsVersion {
    uint32_t major = 0;
    uint32_t minor = 0;
    uint32_t build = 0;
    // The cumulative update's revision (the fourth number of 10.0.22631.2861).
    uint32_t updateRevision = 0;
    // The release as Settings shows it, such as "23H2"; empty before 20H2.
    std::wstring displayVersion;
};

class SystemFacts {
public:
    virtual ~SystemFacts() = default;
    // False when the version cannot be read at all.
    virtual bool ReadOsVersion(OsVersion& version) = 0;
    // The firmware's BIOS version text.
    virtual std::wstring BiosVersion() = 0;
    // The maker's model name (SMBIOS system product name), which keys the
    // per-model feature switches.
    virtual std::wstring SystemModel() = 0;
    // An identifier that survives reboots and reinstalling the suite.
    virtual std::wstring DeviceId() = 0;
    // Dots per inch of the system's display scale; 0 when unknown.
    virtual uint32_t DisplayDpi() = 0;
};

}  // namespace connectkit::platform
