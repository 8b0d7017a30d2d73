#include <gtest/gtest.h>
#include <log4cplus/appender.h>

#include <iterator>
#include <string>
#include <vector>

#include "SDK/Util/LogTool/LogTool.h"
#include "SDK/Util/LogTool/Logger.h"
#include "foundation/FunctionName.h"
#include "support/LogCapture.h"

// The qualified names the library's lines begin with (CK_FUNCTION), as
// MSVC's __FUNCTION__ gives them.
namespace ConnectKit {
class Sample {
public:
    Sample() : constructed(CK_FUNCTION) {}
    static std::string Static() { return CK_FUNCTION; }
    const std::string* Pointer() const {
        static const std::string name = CK_FUNCTION;
        return &name;
    }
    std::string operator()(int) const { return CK_FUNCTION; }
    template <class T>
    std::string Templated(T) {
        return CK_FUNCTION;
    }
    std::string constructed;
};
}  // namespace ConnectKit

std::string FreeFunction() {
    return CK_FUNCTION;
}

namespace connectkit::test {
namespace {

TEST(FunctionName, IsTheQualifiedNameWithoutReturnTypeOrParameters) {
    ConnectKit::Sample sample;
    EXPECT_EQ(sample.constructed, "ConnectKit::Sample::Sample");
    EXPECT_EQ(ConnectKit::Sample::Static(), "ConnectKit::Sample::Static");
    EXPECT_EQ(*sample.Pointer(), "ConnectKit::Sample::Pointer");
    EXPECT_EQ(sample(1), "ConnectKit::Sample::operator()");
    EXPECT_EQ(sample.Templated(std::pair<int, int>{}), "ConnectKit::Sample::Templated");
    EXPECT_EQ(FreeFunction(), "FreeFunction");
}

TEST(LogTool, NarrowAndWideLinesCarryTheFunctionsOwnNameFileLineAndSignature) {
    LogCapture capture;
    LogWarnFun("%s start", "ConnectKit::LegacyAP::Start");
    LogErrorFun("%s failed - step %d\n", "X::Y", 2);
    LogWarnFun(L"%ls end", L"Wide::Caller");
    LogErrorFun(L"code %d", 7);
    const CapturedLine expected[] = {
        {30000, L"ConnectKit::LegacyAP::Start start(LogWarnFun)", "", 55,
         "void __cdecl LogWarnFun(const char *,...)"},
        {40000, L"X::Y failed - step 2\n(LogErrorFun)", "", 69,
         "void __cdecl LogErrorFun(const char *,...)"},
        {30000, L"Wide::Caller end(LogWarnFun)", "", 111,
         "void __cdecl LogWarnFun(const wchar_t *,...)"},
        {40000, L"code 7(LogErrorFun)", "", 125, "void __cdecl LogErrorFun(const wchar_t *,...)"},
    };
    auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), std::size(expected));
    for (size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].message, expected[i].message);
        EXPECT_EQ(lines[i].level, expected[i].level) << i;
        EXPECT_EQ(lines[i].line, expected[i].line) << i;
        EXPECT_EQ(lines[i].function, expected[i].function);
        EXPECT_EQ(lines[i].file, "include/SDK/Util/LogTool/LogTool.h");
    }
}

// Narrow bytes above 127 are widened one by one; a text of 512 elements or
// more, and a null format, are dropped whole.
TEST(LogTool, TextsAreWidenedByteByByteAndLongOnesDroppedWhole) {
    LogCapture capture;
    std::string narrow511(511, 'n');
    std::wstring wide511(511, L'w');
    LogWarnFun("caf\xE9 \xFF\x80");
    LogWarnFun("%s", narrow511.c_str());
    LogWarnFun("%s", std::string(512, 'n').c_str());
    LogErrorFun("%s%s", narrow511.c_str(), "x");
    LogWarnFun(L"%ls", wide511.c_str());
    LogWarnFun(L"%ls", std::wstring(512, L'w').c_str());
    LogErrorFun(L"%ls", std::wstring(4000, L'w').c_str());
    LogWarnFun(static_cast<const char*>(nullptr));
    LogErrorFun(static_cast<const wchar_t*>(nullptr));

    std::vector<std::wstring> messages;
    for (const auto& line : capture.Lines()) {
        messages.push_back(line.message);
    }
    const std::wstring accented = {L'c', L'a',          L'f',         wchar_t(0xE9),
                                   L' ', wchar_t(0xFF), wchar_t(0x80)};
    EXPECT_EQ(messages, (std::vector<std::wstring>{accented + L"(LogWarnFun)",
                                                   std::wstring(511, L'n') + L"(LogWarnFun)",
                                                   wide511 + L"(LogWarnFun)"}));
}

TEST(LogTool, ALevelAboveWarningSilencesWarningsOnly) {
    LogCapture capture(log4cplus::ERROR_LOG_LEVEL);
    LogWarnFun("quiet %d", 1);
    LogWarnFun(L"quiet %d", 2);
    LogErrorFun("loud %d", 3);
    LogErrorFun(L"loud %d", 4);
    auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].message, L"loud 3(LogErrorFun)");
    EXPECT_EQ(lines[1].message, L"loud 4(LogErrorFun)");
}

class ThrowingAppender final : public log4cplus::Appender {
public:
    ~ThrowingAppender() override { destructorImpl(); }
    void close() override {}

protected:
    void append(const log4cplus::spi::InternalLoggingEvent&) override {
        throw std::runtime_error("appender broke");
    }
};

TEST(LogTool, ALoggerThatThrowsDoesNotReachTheCaller) {
    LogCapture capture;
    log4cplus::SharedAppenderPtr thrower(new ThrowingAppender());
    log4cplus::Logger logger = GetLogger();
    logger.addAppender(thrower);
    EXPECT_NO_THROW(LogWarnFun("first %d", 1));
    EXPECT_NO_THROW(LogErrorFun(L"second %d", 2));
    logger.removeAppender(thrower);
    // The stream the log functions share must still be usable afterwards.
    LogWarnFun("after");
    auto lines = capture.Lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back().message, L"after(LogWarnFun)");
}

}  // namespace
}  // namespace connectkit::test
