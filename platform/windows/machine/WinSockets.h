#pragma once

#include "platform/ports/Sockets.h"

namespace connectkit::win {

class WinSockets final : public platform::Sockets {
public:
    int Startup(uint16_t version) override;
    int Cleanup() override;
};

}  // namespace connectkit::win
