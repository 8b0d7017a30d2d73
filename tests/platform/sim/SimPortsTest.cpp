#include <gtest/gtest.h>

#include "platform/Platform.h"
#include "platform/ports/Errors.h"
#include "platform/sim/SimulatedPc.h"
#include "support/LogCapture.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

using platform::RegistryData;
using platform::RegistryHive;

using SimPortsTest = SimTest;

TEST(Platform, TheBackendCannotBeReplacedOnceInUse) {
    LogCapture capture;
    EXPECT_EQ(&platform::Current(), static_cast<platform::Backend*>(&Pc()));
    EXPECT_FALSE(platform::Install(std::make_shared<sim::SimulatedPc>()));
    EXPECT_FALSE(platform::Install(nullptr));
    EXPECT_EQ(&platform::Current(), static_cast<platform::Backend*>(&Pc()));
    EXPECT_EQ(capture.Count(L"connectkit::platform::Install refused"), 2u);
}

TEST_F(SimPortsTest, RegistryAndClockFaultsFailOrTimeOutAndAreLogged) {
    LogCapture capture;
    auto& registry = pc().registry();
    registry.Write(RegistryHive::LocalMachine, L"K", L"v", RegistryData::FromDword(1));
    pc().faults().Add({"registry.read", sim::FaultAction::Fail, 1, 1, 0, 0});
    pc().faults().Add({"registry.read", sim::FaultAction::TimeOut, 2, 1, 0, 4000});
    RegistryData value;
    EXPECT_EQ(registry.Read(RegistryHive::LocalMachine, L"K", L"v", value), 0);
    EXPECT_EQ(registry.Read(RegistryHive::LocalMachine, L"K", L"v", value),
              static_cast<long>(platform::kErrorAccessDenied));
    uint64_t before = Now();
    EXPECT_EQ(registry.Read(RegistryHive::LocalMachine, L"K", L"v", value),
              static_cast<long>(platform::kErrorTimeout));
    EXPECT_EQ(Now() - before, 4000u);
    EXPECT_EQ(registry.Read(RegistryHive::LocalMachine, L"K", L"v", value), 0);
    EXPECT_EQ(pc().faults().Calls("registry.read"), 4u);
    EXPECT_TRUE(capture.Contains(L"fault injected at registry.read: timeout (call 3)"));
    // The clock's objects refuse creation and break waits the same way.
    pc().faults().Add({"clock.newSemaphore", sim::FaultAction::Fail, 0, 1, 0, 0});
    pc().faults().Add({"semaphore.wait", sim::FaultAction::Fail, 0, 1, 0, 0});
    pc().faults().Add({"event.wait", sim::FaultAction::TimeOut, 0, 1, 0, 250});
    EXPECT_EQ(pc().clock().NewSemaphore(1, 1), nullptr);
    auto semaphore = pc().clock().NewSemaphore(1, 1);
    ASSERT_TRUE(semaphore);
    EXPECT_EQ(semaphore->Wait(10), platform::WaitResult::Failed);
    EXPECT_EQ(semaphore->Wait(10), platform::WaitResult::Signaled);
    auto event = pc().clock().NewEvent(true, true);
    before = Now();
    EXPECT_EQ(event->Wait(10), platform::WaitResult::TimedOut);
    EXPECT_EQ(Now() - before, 250u);
    EXPECT_FALSE(pc().faults().Add({"no.such.call", sim::FaultAction::Fail, 0, 1, 0, 0}));
}

TEST_F(SimPortsTest, ProgramsTakeVirtualTimeAndReportExitCodes) {
    int effects = 0;
    pc().processes().Install(L"IpConfig",
                             {0, 1200, [&](const std::wstring& line) {
                                  ++effects;
                                  return line.find(L"/renew") != std::wstring::npos ? 0u : 1u;
                              }});
    uint64_t before = Now();
    auto finished = pc().processes().Run(L"\"C:\\Windows\\System32\\ipconfig.exe\" /renew", 5000);
    EXPECT_EQ(finished.error, 0u);
    EXPECT_TRUE(finished.finished);
    EXPECT_EQ(finished.exitCode, 0u);
    EXPECT_EQ(Now() - before, 1200u);

    before = Now();
    auto running = pc().processes().Run(L"ipconfig /all", 500);
    EXPECT_FALSE(running.finished);
    EXPECT_EQ(running.exitCode, platform::kStillActive);
    EXPECT_EQ(Now() - before, 500u);
    pc().clock().Sleep(701);
    EXPECT_EQ(effects, 2);

    auto unknown = pc().processes().Run(L"route print", 100);
    EXPECT_EQ(unknown.error, platform::kErrorFileNotFound);
    EXPECT_EQ(pc().processes().History().size(), 2u);

    EXPECT_EQ(sim::SimProcesses::ProgramName(L"  \"C:\\a b\\Tool.EXE\" x"), L"tool");
    EXPECT_EQ(sim::SimProcesses::ProgramName(L"   "), L"");
}

// A world file, read and applied, shows through the ports (names without
// regard to case) and replaces what was there before.
TEST_F(SimPortsTest, AWorldFileReplacesTheWorld) {
    EXPECT_EQ(pc().files().MainModuleDirectory(), L"C:\\Program Files\\Veltra\\Brisklane\\");
    auto& registry = pc().registry();
    ASSERT_EQ(registry.Write(RegistryHive::LocalMachine, L"Old", L"v", RegistryData::FromDword(1)),
              0);
    const char* text = R"({
      "description": "office laptop",
      "registry": [{"key": "HKLM\\SOFTWARE\\Intel",
                    "values": {"Flags": {"dword": 4294967295}, "Blob": {"binary": "0aFF"}}},
                   {"key": "HKEY_CURRENT_USER\\Software\\X", "values": {"V": {"dword": 2}}}],
      "files": {"mainModuleDirectory": "C:\\Suite", "present": ["C:\\Suite\\config\\a.dll"]},
      "programs": [{"name": "cmd", "exitCode": 3, "durationMs": 300}],
      "faults": [{"call": "files.exists", "action": "timeout", "after": 1, "times": 1,
                  "delayMs": 100}]
    })";
    ApplyJsonWorld(text);

    auto read = [&](RegistryHive hive, const wchar_t* key, const wchar_t* name) {
        RegistryData value;
        EXPECT_EQ(registry.Read(hive, key, name, value), 0) << name;
        return std::make_pair(value.type, value.bytes);
    };
    auto typed = [](const RegistryData& data) { return std::make_pair(data.type, data.bytes); };
    RegistryData old;
    EXPECT_EQ(registry.Read(RegistryHive::LocalMachine, L"Old", L"v", old), 2);
    EXPECT_EQ(read(RegistryHive::LocalMachine, L"software\\INTEL", L"blob"),
              typed(RegistryData::FromBinary({0x0A, 0xFF})));
    EXPECT_EQ(read(RegistryHive::LocalMachine, L"SOFTWARE\\Intel", L"Flags"),
              typed(RegistryData::FromDword(0xFFFFFFFFu)));
    EXPECT_EQ(read(RegistryHive::CurrentUser, L"Software\\X", L"V"),
              typed(RegistryData::FromDword(2)));
    EXPECT_EQ(registry.Read(RegistryHive::LocalMachine, L"Software\\X", L"V", old), 2);

    auto& files = pc().files();
    EXPECT_EQ(files.MainModuleDirectory(), L"C:\\Suite\\");
    EXPECT_TRUE(files.Exists(L"c:\\SUITE\\config\\A.dll"));
    uint64_t before = Now();
    EXPECT_FALSE(files.Exists(L"C:\\Suite\\config\\a.dll"));
    EXPECT_TRUE(files.Exists(L"C:\\Suite\\config"));
    EXPECT_FALSE(files.Exists(L"C:\\Suite\\conf"));
    EXPECT_FALSE(files.Exists(L""));
    EXPECT_EQ(pc().processes().Run(L"cmd /c", 1000).exitCode, 3u);
    EXPECT_EQ(Now() - before, 100u + 300u);
}

}  // namespace
}  // namespace connectkit::test
