#include <gtest/gtest.h>

#include "platform/suite/DEString.h"

namespace connectkit::test {
namespace {

TEST(DEString, Utf8RoundTripsEveryPlane) {
    std::string utf8 = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x93\xB6";  // a, é, €, 📶
    std::wstring wide = DE::UTF8ToUnicode(utf8);
    if constexpr (sizeof(wchar_t) == 2) {
        EXPECT_EQ(wide.size(), 5u);
    } else {
        EXPECT_EQ(wide, (std::wstring{L'a', wchar_t(0xE9), wchar_t(0x20AC), wchar_t(0x1F4F6)}));
    }
    EXPECT_EQ(DE::UnicodeToUTF8(wide), utf8);
}

TEST(DEString, InvalidInputBecomesReplacementCharacters) {
    const std::wstring replacement(1, wchar_t(0xFFFD));
    EXPECT_EQ(DE::UTF8ToUnicode("\xFF"), replacement);
    EXPECT_EQ(DE::UTF8ToUnicode("\xC3"), replacement);
    EXPECT_EQ(DE::UTF8ToUnicode("\xC0\xAF"), replacement + replacement);
    EXPECT_EQ(DE::UTF8ToUnicode("\xED\xA0\x80"), replacement + replacement + replacement);
    EXPECT_EQ(DE::UnicodeToUTF8(std::wstring(1, wchar_t(0xD800))), "\xEF\xBF\xBD");
    EXPECT_EQ(DE::UTF8ToUnicode(""), L"");
}

}  // namespace
}  // namespace connectkit::test
