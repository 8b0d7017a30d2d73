#pragma once
// Network adapter helpers of the hotspot: where the Wi-Fi Direct soft-AP
// adapter is, what its MAC and IPv4 address are, and the two repairs the
// hotspot tries when the adapter misbehaves.
//
// The soft-AP adapter is the "Microsoft Wi-Fi Direct Virtual Adapter" that
// IP Helper reports as up: Windows brings a Wi-Fi Direct virtual adapter up
// only while a group owner runs on it, so "up" means "a group owner exists",
// whoever started it. Its device node is found by the virtual adapter's
// hardware id, kWiFiDirectVirtualAdapterHardwareId.
//
// The virtual-adapter status check answers two conditions, which tell the
// suite why the group owner could not start when the Wi-Fi card itself is
// fine:
//   adapterMissing  no Wi-Fi Direct virtual adapter device node exists: the
//                   Wi-Fi driver does not offer Wi-Fi Direct (or it is off in
//                   the driver's advanced settings);
//   adapterDisabled a node exists but every one of them is disabled (someone
//                   disabled it in Device Manager, or a policy did).
// The check fails (returns false) only when the device list cannot be read.
#include <array>
#include <cstdint>
#include <string>

inline constexpr wchar_t kWiFiDirectVirtualAdapterHardwareId[] =
    L"{5d624f94-8850-40c3-a3fa-a4fd2080baf3}\\vwifimp_wfd";

// The address Windows gives a Wi-Fi Direct group owner; the legacy AP's DHCP
// server hands out the rest of 192.168.137.0/24.
inline constexpr char kDefaultLegacyAPIP[] = "192.168.137.1";

class CommonAPI {
public:
    // The soft-AP adapter's interface index (0 when no group owner runs) and
    // its MAC, all zero when it has none yet.
    static int GetSoftapAdapterIndex(unsigned char mac[6]);
    // True when the soft-AP adapter is up; `mac` may still be all zero.
    static bool GetMacAddress(unsigned char mac[6]);
    // The soft-AP adapter's IPv4 address, or kDefaultLegacyAPIP when it shows
    // none.
    static std::string GetLegacyAPIP();
    // Whether any adapter holds `ip`.
    static bool IsIPPresent(const std::string& ip);
    // Disables and re-enables every Wi-Fi Direct virtual adapter. With
    // `waitUntilStarted`, waits up to 5 s for them to run again, so that a
    // caller checking the adapter next sees the result. False when no
    // adapter was found or a step failed.
    static bool RestartWiFiDirectVirtualAdapter(bool waitUntilStarted);
    // Re-applies the group owner's address to the Wi-Fi Direct virtual
    // adapter ("netsh interface ipv4 set address"): a virtual adapter that
    // came up without its IP interface bound reports no MAC until then.
    static bool NetshInterfaceIp();
    static bool CheckWiFiDirectVirtualAdapterStatus(bool& adapterMissing, bool& adapterDisabled);
};
