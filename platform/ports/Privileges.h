#pragma once
// The privileges of the process's own token (OpenProcessToken,
// LookupPrivilegeValueW, AdjustTokenPrivileges). A privilege can only be
// enabled when the token holds it: an administrator's token holds
// SeLoadDriverPrivilege, an ordinary user's does not.

#include <cstdint>
#include <string>

namespace connectkit::platform {

// ERROR_NOT_ALL_ASSIGNED: the token does not hold the privilege.
inline constexpr uint32_t kErrorNotAllAssigned = 1300;
inline constexpr wchar_t kLoadDriverPrivilege[] = L"SeLoadDriverPrivilege";

class Privileges {
public:
    virtual ~Privileges() = default;
    // Enables `name` in the process token: 0, or the Win32 error
    // (kErrorNotAllAssigned when the token lacks it).
    virtual uint32_t Enable(const std::wstring& name) = 0;
};

}  // namespace connectkit::platform
