#include "platform/windows/system/WinDebugOutput.h"

#include <windows.h>

namespace connectkit::win {

void WinDebugOutput::Write(const std::wstring& text) {
    OutputDebugStringW(text.c_str());
}

}  // namespace connectkit::win
