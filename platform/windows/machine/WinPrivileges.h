#pragma once

#include "platform/ports/Privileges.h"

namespace connectkit::win {

// The process token's privileges through advapi32. Each failing step is
// logged with its name and Win32 error.
class WinPrivileges final : public platform::Privileges {
public:
    uint32_t Enable(const std::wstring& name) override;
};

}  // namespace connectkit::win
