// The Windows backend tests run on the real backend, so unlike the other
// test programs this one installs no simulated PC. Its Windows Runtime
// objects come from a FakeRuntime that tests can switch to Wine's own, its
// Native Wi-Fi from the wlanapi double, classic Bluetooth from the bthprops
// double.
// CK_DEBUG_LOG=1 in the environment prints the library's log lines.

#include <gtest/gtest.h>
#include <log4cplus/consoleappender.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <cstdlib>

#include "platform/Platform.h"
#include "platform/windows/WindowsBackend.h"
#include "winrt/FakeRuntime.h"

namespace connectkit::test {

std::shared_ptr<FakeRuntime> SharedRuntime() {
    static auto runtime = std::make_shared<FakeRuntime>();
    return runtime;
}

FakeRuntime& InstalledRuntime() {
    return *SharedRuntime();
}

}  // namespace connectkit::test

int main(int argc, char** argv) {
    log4cplus::Initializer initializer;
    log4cplus::Logger::getRoot().addAppender(
        log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
    if (std::getenv("CK_DEBUG_LOG")) {
        log4cplus::Logger::getRoot().addAppender(
            log4cplus::SharedAppenderPtr(new log4cplus::ConsoleAppender(true, true)));
    }
    testing::InitGoogleTest(&argc, argv);
    connectkit::platform::Install(std::make_shared<connectkit::win::WindowsBackend>(
        connectkit::test::SharedRuntime(), connectkit::win::LibrarySource{L"ckwlanapi.dll", 0},
        connectkit::win::BluetoothLibraries{L"ckbthprops.dll", L"ckbthprops.dll", 0}));
    return RUN_ALL_TESTS();
}
