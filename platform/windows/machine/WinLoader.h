#pragma once

#include "platform/ports/Loader.h"

namespace connectkit::win {

class WinLoader final : public platform::Loader {
public:
    std::unique_ptr<platform::LoadedLibrary> Load(const std::wstring& nameOrPath,
                                                  uint32_t& error) override;
    void FreeVendorBuffer(void* buffer) override;
};

}  // namespace connectkit::win
