#include "platform/windows/winrt/HString.h"

#include "platform/windows/winrt/RuntimeCall.h"

namespace connectkit::win {

HString::HString(const std::wstring& text) {
    Check(WindowsCreateString(text.c_str(), static_cast<UINT32>(text.size()), &string_),
          "WindowsCreateString");
}

HString::~HString() {
    WindowsDeleteString(string_);
}

HSTRING* HString::Put() {
    WindowsDeleteString(string_);
    string_ = nullptr;
    return &string_;
}

std::wstring HString::Text() const {
    return win::Text(string_);
}

std::wstring Text(HSTRING string) {
    UINT32 length = 0;
    const wchar_t* buffer = WindowsGetStringRawBuffer(string, &length);
    return buffer ? std::wstring(buffer, length) : std::wstring();
}

}  // namespace connectkit::win
