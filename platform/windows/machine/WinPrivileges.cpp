#include "platform/windows/machine/WinPrivileges.h"

#include "SDK/Util/LogTool/LogTool.h"
#include "platform/windows/core/UniqueHandle.h"

namespace connectkit::win {
namespace {

uint32_t Failed(const wchar_t* call, const std::wstring& name) {
    DWORD error = GetLastError();
    LogErrorFun(L"[Privileges] %ls for %ls failed, error %lu", call, name.c_str(),
                static_cast<unsigned long>(error));
    return error;
}

}  // namespace

uint32_t WinPrivileges::Enable(const std::wstring& name) {
    KernelHandle token;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY,
                          token.Put())) {
        return Failed(L"OpenProcessToken", name);
    }
    TOKEN_PRIVILEGES privileges{};
    privileges.PrivilegeCount = 1;
    privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    if (!LookupPrivilegeValueW(nullptr, name.c_str(), &privileges.Privileges[0].Luid)) {
        return Failed(L"LookupPrivilegeValueW", name);
    }
    // AdjustTokenPrivileges succeeds even when the token lacks the
    // privilege; only its last error tells.
    if (!AdjustTokenPrivileges(token.Get(), FALSE, &privileges, sizeof(privileges), nullptr,
                               nullptr) ||
        GetLastError() != ERROR_SUCCESS) {
        return Failed(L"AdjustTokenPrivileges", name);
    }
    return ERROR_SUCCESS;
}

}  // namespace connectkit::win
