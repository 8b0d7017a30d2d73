#pragma once
// HSTRING ownership: an HString owns one string and deletes it; Text reads
// any HSTRING (null is the empty string) without taking it.

#include <string>

#include "platform/windows/winrt/abi/Foundation.h"

namespace connectkit::win {

class HString {
public:
    HString() = default;
    // Throws PlatformError when the runtime cannot make the string.
    explicit HString(const std::wstring& text);
    ~HString();
    HString(const HString&) = delete;
    HString& operator=(const HString&) = delete;

    HSTRING get() const { return string_; }
    // For an [out] HSTRING: the string the callee writes becomes this one's.
    HSTRING* Put();
    std::wstring Text() const;

private:
    HSTRING string_ = nullptr;
};

std::wstring Text(HSTRING string);

}  // namespace connectkit::win
