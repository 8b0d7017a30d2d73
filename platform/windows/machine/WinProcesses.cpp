#include "platform/windows/machine/WinProcesses.h"

#include <windows.h>

#include <vector>

#include "platform/windows/core/UniqueHandle.h"

namespace connectkit::win {

platform::ProcessOutcome WinProcesses::Run(const std::wstring& commandLine, uint32_t waitMs) {
    platform::ProcessOutcome outcome;
    // CreateProcessW may write into the command line.
    std::vector<wchar_t> mutableLine(commandLine.begin(), commandLine.end());
    mutableLine.push_back(L'\0');
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_HIDE;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, mutableLine.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW,
                        nullptr, nullptr, &startup, &process)) {
        outcome.error = GetLastError();
        return outcome;
    }
    KernelHandle thread(process.hThread);
    KernelHandle child(process.hProcess);
    outcome.finished = WaitForSingleObject(child.Get(), waitMs) == WAIT_OBJECT_0;
    DWORD exitCode = STILL_ACTIVE;
    GetExitCodeProcess(child.Get(), &exitCode);
    outcome.exitCode = exitCode;
    return outcome;
}

}  // namespace connectkit::win
