#pragma once
// Winsock's start-up and clean-up. Start-ups are counted, as Winsock counts
// them: each successful Startup needs its Cleanup, and a Cleanup without one
// fails with WSANOTINITIALISED.

#include <cstdint>

namespace connectkit::platform {

inline constexpr int kWsaNotInitialised = 10093;
inline constexpr uint16_t kWinsockVersion22 = 0x0202;

class Sockets {
public:
    virtual ~Sockets() = default;
    // WSAStartup: 0 or the Winsock error code.
    virtual int Startup(uint16_t version) = 0;
    // WSACleanup: 0, or the Winsock error code (WSAGetLastError) of its failure.
    virtual int Cleanup() = 0;
};

}  // namespace connectkit::platform
