// The Windows backend against a real Win32 (Wine in the test lane).

#include <gtest/gtest.h>

#include <memory>

#include "platform/ports/Errors.h"
#include "platform/windows/core/WinClock.h"
#include "platform/windows/machine/WinFileSystem.h"
#include "platform/windows/machine/WinLoader.h"
#include "platform/windows/machine/WinProcesses.h"
#include "platform/windows/machine/WinRegistry.h"
#include "support/LogCapture.h"

namespace connectkit::test {
namespace {

using platform::RegistryData;
using platform::RegistryHive;
using platform::WaitResult;

const wchar_t* kTestKey = L"Software\\connectkit-tests";

// Text values are read back by the vendor discovery (VendorDriverTest).
TEST(WinRegistry, ValuesAreWrittenReadBackAndDeleted) {
    win::WinRegistry registry;
    const auto user = RegistryHive::CurrentUser;
    registry.DeleteKey(user, kTestKey);
    const std::wstring key = std::wstring(kTestKey) + L"\\Nested";
    ASSERT_EQ(registry.Write(user, key, L"Count", RegistryData::FromDword(7)), 0);
    RegistryData value;
    uint32_t count = 0;
    ASSERT_EQ(registry.Read(user, key, L"count", value), 0);
    ASSERT_TRUE(value.ToDword(count));
    EXPECT_EQ(count, 7u);

    const auto notFound = static_cast<long>(platform::kErrorFileNotFound);
    EXPECT_EQ(registry.DeleteValue(user, key, L"Count"), 0);
    EXPECT_EQ(registry.Read(user, key, L"Count", value), notFound);
    ASSERT_EQ(registry.Write(user, key, L"Count", RegistryData::FromDword(7)), 0);
    EXPECT_EQ(registry.DeleteKey(user, kTestKey), 0);
    EXPECT_EQ(registry.Read(user, key, L"Count", value), notFound);
}

// The probe DLL beside the tests is found in the program's own folder and
// loaded by name. Calls through what the loader finds, and the program's
// folder, are the vendor double cases' (VendorDriverTest).
TEST(WinLoader, LoadsByNameAndFindsExportsByNameAndOrdinal) {
    win::WinFileSystem files;
    const std::wstring directory = files.MainModuleDirectory();
    EXPECT_TRUE(files.Exists(directory + L"ckprobe.dll"));
    EXPECT_FALSE(files.Exists(directory + L"no-such-file.dll"));
    EXPECT_FALSE(files.Exists(L""));

    win::WinLoader loader;
    uint32_t error = 0;
    auto library = loader.Load(L"ckprobe.dll", error);
    ASSERT_TRUE(library) << error;
    EXPECT_NE(library->FindSymbol("ProbeAnswer"), nullptr);
    EXPECT_NE(library->FindOrdinal(68), nullptr);
    EXPECT_EQ(library->FindSymbol("ProbeTwice"), nullptr);
    EXPECT_EQ(library->FindOrdinal(69), nullptr);

    EXPECT_FALSE(loader.Load(L"connectkit-missing-vendor.dll", error));
    EXPECT_EQ(error, platform::kErrorModNotFound);
}

TEST(WinProcesses, RunsAProgramAndReportsItsExitCode) {
    win::WinProcesses processes;
    auto outcome = processes.Run(L"cmd.exe /c exit 3", 30000);
    ASSERT_EQ(outcome.error, 0u);
    EXPECT_TRUE(outcome.finished);
    EXPECT_EQ(outcome.exitCode, 3u);
    auto missing = processes.Run(L"connectkit-no-such-program.exe", 1000);
    EXPECT_NE(missing.error, 0u);
}

// The mutexes carry every Wine case of the hotspot, a condition variable
// the error status's deliveries in the unload cases.
TEST(WinClock, TimedWaitsAndWallTime) {
    win::WinClock clock;
    auto semaphore = clock.NewSemaphore(0, 1);
    ASSERT_TRUE(semaphore);
    uint64_t before = clock.TickCount64();
    EXPECT_EQ(semaphore->Wait(100), WaitResult::TimedOut);
    EXPECT_GE(clock.TickCount64() - before, 90u);
    EXPECT_TRUE(semaphore->Release());
    EXPECT_FALSE(semaphore->Release());

    auto local = clock.LocalNow();
    EXPECT_GE(local.year, 2020);
    EXPECT_GT(clock.UnixTimeMs(), 1577836800000ull);
}

// Each detached thread is awaited before the next starts, so one may end
// before its starter has detached it: every body still runs.
TEST(WinClock, EveryDetachedThreadRunsItsBody) {
    win::WinClock clock;
    std::shared_ptr<platform::Semaphore> ran = clock.NewSemaphore(0, 1);
    for (int started = 0; started < 1000; ++started) {
        clock.StartDetachedThread([ran] { ran->Release(); });
        ASSERT_EQ(ran->Wait(10000), WaitResult::Signaled) << "thread " << started;
    }
}

}  // namespace
}  // namespace connectkit::test
