#pragma once

#include "platform/ports/FileContents.h"

namespace connectkit::win {

class WinFileContents final : public platform::FileContents {
public:
    long Read(const std::wstring& path, const Sink& sink) override;
};

}  // namespace connectkit::win
