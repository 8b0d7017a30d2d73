#include "platform/windows/machine/WinSockets.h"

#include <winsock2.h>

namespace connectkit::win {

int WinSockets::Startup(uint16_t version) {
    WSADATA data{};
    return WSAStartup(version, &data);
}

int WinSockets::Cleanup() {
    return WSACleanup() == 0 ? 0 : WSAGetLastError();
}

}  // namespace connectkit::win
