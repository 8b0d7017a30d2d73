#include <gtest/gtest.h>
#include <log4cplus/appender.h>

#include <string>

#include "SDK/Util/LogTool/LogTool.h"
#include "SDK/Util/LogTool/Logger.h"
#include "support/LogCapture.h"

namespace connectkit::test {
namespace {

TEST(LogTool, NarrowAndWideLinesCarryTheFunctionsOwnNameFileLineAndSignature) {
    LogCapture capture;
    LogWarnFun("%s start", "ConnectKit::LegacyAP::Start");
    LogErrorFun("%s failed - step %d\n", "X::Y", 2);
    LogWarnFun(L"%ls end", L"Wide::Caller");
    LogErrorFun(L"code %d", 7);

    auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0].message, L"ConnectKit::LegacyAP::Start start(LogWarnFun)");
    EXPECT_EQ(lines[0].level, 30000);
    EXPECT_EQ(lines[0].line, 55);
    EXPECT_EQ(lines[0].function, "void __cdecl LogWarnFun(const char *,...)");
    EXPECT_EQ(lines[0].file, "include/SDK/Util/LogTool/LogTool.h");

    EXPECT_EQ(lines[1].message, L"X::Y failed - step 2\n(LogErrorFun)");
    EXPECT_EQ(lines[1].level, 40000);
    EXPECT_EQ(lines[1].line, 69);
    EXPECT_EQ(lines[1].function, "void __cdecl LogErrorFun(const char *,...)");

    EXPECT_EQ(lines[2].message, L"Wide::Caller end(LogWarnFun)");
    EXPECT_EQ(lines[2].line, 111);
    EXPECT_EQ(lines[2].function, "void __cdecl LogWarnFun(const wchar_t *,...)");

    EXPECT_EQ(lines[3].message, L"code 7(LogErrorFun)");
    EXPECT_EQ(lines[3].level, 40000);
    EXPECT_EQ(lines[3].line, 125);
    EXPECT_EQ(lines[3].function, "void __cdecl LogErrorFun(const wchar_t *,...)");
}

TEST(LogTool, MessagesOf512ElementsOrMoreAndNullFormatsAreDroppedWhole) {
    LogCapture capture;
    std::string narrow511(511, 'n');
    std::string narrow512(512, 'n');
    std::wstring wide511(511, L'w');
    std::wstring wide512(512, L'w');

    LogWarnFun("%s", narrow511.c_str());
    LogWarnFun("%s", narrow512.c_str());
    LogErrorFun("%s%s", narrow511.c_str(), "x");
    LogWarnFun(L"%ls", wide511.c_str());
    LogWarnFun(L"%ls", wide512.c_str());
    LogErrorFun(L"%ls", std::wstring(4000, L'w').c_str());
    LogWarnFun(static_cast<const char*>(nullptr));
    LogErrorFun(static_cast<const wchar_t*>(nullptr));

    auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].message, std::wstring(511, L'n') + L"(LogWarnFun)");
    EXPECT_EQ(lines[1].message, wide511 + L"(LogWarnFun)");
}

TEST(LogTool, NarrowBytesAbove127AreWidenedOneByOne) {
    LogCapture capture;
    LogWarnFun("caf\xE9 \xFF\x80");
    auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 1u);
    std::wstring expected = {L'c', L'a', L'f', wchar_t(0xE9), L' ', wchar_t(0xFF), wchar_t(0x80)};
    EXPECT_EQ(lines[0].message, expected + L"(LogWarnFun)");
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
