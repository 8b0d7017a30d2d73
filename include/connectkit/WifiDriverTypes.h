#pragma once
// Structures that cross into the Wi-Fi card makers' driver libraries
// unchanged: wire formats with fixed sizes, little-endian.

#include <cstdint>

#pragma pack(push, 1)

// Channels on which the card can run a Wi-Fi Direct group owner. An area
// code of 0 with no channels means the driver had no answer yet.
struct _GO_SUPPORTTED_CHANNELS {
    uint16_t areaCode;
    uint8_t channelCount;
    // Channel numbers; above 13 is 5 GHz.
    uint8_t channels[255];
};

// The vendor keeps the inner layout of the next two to itself; these are
// connectkit's own layouts, defined here and nowhere else. The channel
// planner writes them and the simulated drivers read them; only the sizes
// are the vendor's.

// The group owner's current operating channel setting, as read back.
struct _GO_OPERATION_CHANNEL_SETTING {
    uint32_t band;  // kDriverBand24 or kDriverBand5
    uint32_t channel;
    uint32_t width;  // MHz
    uint32_t flags;
};

// Preferred group-owner channels, most preferred first.
struct _INTEL_GO_PREFERRED_CHANNEL {
    uint32_t version;  // kPreferredChannelVersion
    // 0 states no preference.
    uint32_t channelCount;
    struct Entry {
        uint8_t channel;
        uint8_t band;       // kDriverBand24 or kDriverBand5
        uint16_t priority;  // 0 is the most preferred
    } entries[131];
};

// Discovery filter: opaque to connectkit.
struct _WIFI_DISCOVER_FILTER {
    uint8_t bytes[1160];
};

// Restricts the legacy group owner's scan to one network.
struct _WIFI_LEGACY_GO_SCAN_FILTER {
    uint8_t filterFlag;
    uint8_t bssid[6];
    uint8_t reserved;
    uint32_t ssidLength;
    uint8_t ssid[32];  // not terminated
};

// Precedes every request to the Intel driver library.
struct _INTEL_REQUEST_HEADER {
    uint32_t magic;  // always 156
    uint32_t size;   // per request, see WifiIntelAPI
};

#pragma pack(pop)

static_assert(sizeof(_GO_SUPPORTTED_CHANNELS) == 258);
static_assert(sizeof(_GO_OPERATION_CHANNEL_SETTING) == 16);
static_assert(sizeof(_INTEL_GO_PREFERRED_CHANNEL) == 532);
static_assert(sizeof(_WIFI_DISCOVER_FILTER) == 1160);
static_assert(sizeof(_WIFI_LEGACY_GO_SCAN_FILTER) == 44);
static_assert(sizeof(_INTEL_REQUEST_HEADER) == 8);

namespace ConnectKit {

// Calling shapes of the Intel driver library's exports.
using IntelGetAdapterList = int (*)(_INTEL_REQUEST_HEADER* header, void** list);
using IntelQuery = int (*)(int adapter, _INTEL_REQUEST_HEADER* header, void* structure);
using IntelSetPreferred = int (*)(int adapter, _INTEL_REQUEST_HEADER* header,
                                  _INTEL_GO_PREFERRED_CHANNEL* channels, uint32_t* driverResult);
using IntelSetWithFlag = int (*)(int adapter, _INTEL_REQUEST_HEADER* header, void* structure,
                                 uint32_t zero);
using IntelReset = int (*)(int adapter, _INTEL_REQUEST_HEADER* header);

// Calling shapes of the Realtek driver library's ordinals.
using RealtekWithStructure = int (*)(void* structure);
using RealtekPlain = int (*)();

// Layout of the Intel adapter list: a u32 count, then entries every 1,256
// bytes from the list's start, each with its handle at +4 and an in-use word
// at +1,232.
inline constexpr uint32_t kIntelAdapterStride = 1256;
inline constexpr uint32_t kIntelAdapterHandleOffset = 4;
inline constexpr uint32_t kIntelAdapterInUseOffset = 1232;
inline constexpr uint32_t kIntelRequestMagic = 156;

// Values of our layouts of the preferred and operating channel structures.
inline constexpr uint32_t kPreferredChannelVersion = 1;
inline constexpr uint8_t kDriverBand24 = 0;
inline constexpr uint8_t kDriverBand5 = 1;

}  // namespace ConnectKit
