#pragma once
// What CreateSoftAP answers, named, with the one table of meanings that the
// library, the tool and the tests share. GetSoftApError keeps the same
// values, except those marked as not kept.

enum SoftAPResult : int {
    SOFTAP_READY = 0,
    // The access point did not start; no adapter restart had been tried.
    SOFTAP_START_FAILED = -26,
    // No MAC address after 30 tries; only ever seen during a creation, which
    // replaces it with one of the next two.
    SOFTAP_NO_MAC = -90,
    SOFTAP_NO_MAC_IP_ABSENT = -91,
    SOFTAP_NO_MAC_IP_PRESENT = -92,
    SOFTAP_MAC_COPY_FAILED = -93,
    SOFTAP_FOREIGN_GROUP_OWNER = -94,
    SOFTAP_START_FAILED_AFTER_RESTART = -95,
    SOFTAP_START_FAILED_ADAPTER_MISSING = -96,
    SOFTAP_START_FAILED_ADAPTER_DISABLED = -97,
};

struct SoftAPResultEntry {
    SoftAPResult result;
    const char* meaning;
    // Whether GetSoftApError reports it after the creation returned it.
    bool kept;
};

inline constexpr SoftAPResultEntry kSoftAPResults[] = {
    {SOFTAP_READY, "hotspot ready", true},
    {SOFTAP_START_FAILED, "the access point did not start", false},
    {SOFTAP_NO_MAC, "no MAC address after 30 tries", true},
    {SOFTAP_NO_MAC_IP_ABSENT, "no MAC address; the access point's IP is on no adapter; stopped",
     true},
    {SOFTAP_NO_MAC_IP_PRESENT, "no MAC address; the access point's IP is present; stopped", true},
    {SOFTAP_MAC_COPY_FAILED, "copying the MAC address failed", true},
    {SOFTAP_FOREIGN_GROUP_OWNER,
     "a group owner started by someone else stayed after an adapter restart", true},
    {SOFTAP_START_FAILED_AFTER_RESTART, "the access point did not start after an adapter restart",
     false},
    {SOFTAP_START_FAILED_ADAPTER_MISSING,
     "the access point did not start; the Wi-Fi Direct virtual adapter is missing", false},
    {SOFTAP_START_FAILED_ADAPTER_DISABLED,
     "the access point did not start; the Wi-Fi Direct virtual adapter is disabled", false},
};

// "unexpected failure" for a value outside the table.
inline const char* SoftAPResultMeaning(int result) {
    for (const auto& entry : kSoftAPResults) {
        if (entry.result == result) {
            return entry.meaning;
        }
    }
    return "unexpected failure";
}
