#pragma once

#include "platform/ports/FileSystem.h"

namespace connectkit::win {

class WinFileSystem final : public platform::FileSystem {
public:
    bool Exists(const std::wstring& path) override;
    std::wstring MainModuleDirectory() override;
};

}  // namespace connectkit::win
