#pragma once

#include "platform/ports/DebugOutput.h"

namespace connectkit::win {

class WinDebugOutput final : public platform::DebugOutput {
public:
    void Write(const std::wstring& text) override;
};

}  // namespace connectkit::win
