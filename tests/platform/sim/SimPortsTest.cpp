#include <gtest/gtest.h>

#include "platform/ports/Errors.h"
#include "platform/sim/SimulatedPc.h"
#include "support/LogCapture.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

using platform::RegistryData;
using platform::RegistryHive;

class SimPortsTest : public SimTest {
protected:
    uint64_t Now() { return pc().clock().TickCount64(); }
};

TEST_F(SimPortsTest, RegistryValuesRoundTripWithoutRegardToCase) {
    auto& registry = pc().registry();
    ASSERT_EQ(registry.Write(RegistryHive::LocalMachine, L"SOFTWARE\\Veltra\\Brisklane", L"Name",
                             RegistryData::FromString(L"laptop")),
              0);
    ASSERT_EQ(registry.Write(RegistryHive::LocalMachine, L"SOFTWARE\\Veltra\\Brisklane", L"Count",
                             RegistryData::FromDword(0xA5A5A5A5)),
              0);
    RegistryData value;
    ASSERT_EQ(
        registry.Read(RegistryHive::LocalMachine, L"software\\veltra\\BRISKLANE", L"NAME", value),
        0);
    std::wstring text;
    ASSERT_TRUE(value.ToString(text));
    EXPECT_EQ(text, L"laptop");
    uint32_t count = 0;
    EXPECT_FALSE(value.ToDword(count));
    ASSERT_EQ(
        registry.Read(RegistryHive::LocalMachine, L"SOFTWARE\\Veltra\\Brisklane", L"Count", value),
        0);
    ASSERT_TRUE(value.ToDword(count));
    EXPECT_EQ(count, 0xA5A5A5A5u);
    // The other hive is a different tree.
    EXPECT_EQ(
        registry.Read(RegistryHive::CurrentUser, L"SOFTWARE\\Veltra\\Brisklane", L"Name", value),
        static_cast<long>(platform::kErrorFileNotFound));
}

TEST_F(SimPortsTest, MissingKeysAndValuesAndTreeDeletion) {
    auto& registry = pc().registry();
    RegistryData value;
    EXPECT_EQ(registry.Read(RegistryHive::LocalMachine, L"SOFTWARE\\Nobody", L"x", value), 2);
    registry.Write(RegistryHive::CurrentUser, L"A\\B\\C", L"v", RegistryData::FromDword(1));
    registry.Write(RegistryHive::CurrentUser, L"A\\Bx", L"v", RegistryData::FromDword(2));
    EXPECT_EQ(registry.DeleteValue(RegistryHive::CurrentUser, L"A\\B\\C", L"missing"), 2);
    EXPECT_EQ(registry.DeleteKey(RegistryHive::CurrentUser, L"A\\B"), 0);
    EXPECT_EQ(registry.Read(RegistryHive::CurrentUser, L"A\\B\\C", L"v", value), 2);
    EXPECT_EQ(registry.Read(RegistryHive::CurrentUser, L"A\\Bx", L"v", value), 0);
    EXPECT_EQ(registry.DeleteKey(RegistryHive::CurrentUser, L""), 2);
}

TEST_F(SimPortsTest, RegistryFaultsFailTimeOutOrThrowAndAreLogged) {
    LogCapture capture;
    auto& registry = pc().registry();
    registry.Write(RegistryHive::LocalMachine, L"K", L"v", RegistryData::FromDword(1));
    pc().faults().Add({"registry.read", sim::FaultAction::Fail, 1, 1, 0, 0});
    pc().faults().Add({"registry.read", sim::FaultAction::TimeOut, 2, 1, 0, 4000});
    pc().faults().Add({"registry.read", sim::FaultAction::Throw, 3, 1, 0, 0});
    RegistryData value;
    EXPECT_EQ(registry.Read(RegistryHive::LocalMachine, L"K", L"v", value), 0);
    EXPECT_EQ(registry.Read(RegistryHive::LocalMachine, L"K", L"v", value),
              static_cast<long>(platform::kErrorAccessDenied));
    uint64_t before = Now();
    EXPECT_EQ(registry.Read(RegistryHive::LocalMachine, L"K", L"v", value),
              static_cast<long>(platform::kErrorTimeout));
    EXPECT_EQ(Now() - before, 4000u);
    EXPECT_THROW(registry.Read(RegistryHive::LocalMachine, L"K", L"v", value),
                 platform::PlatformError);
    EXPECT_EQ(registry.Read(RegistryHive::LocalMachine, L"K", L"v", value), 0);
    EXPECT_EQ(pc().faults().Calls("registry.read"), 5u);
    EXPECT_TRUE(capture.Contains(L"fault injected at registry.read: timeout (call 3)"));
}

int Answer() {
    return 42;
}
int Twice(int x) {
    return 2 * x;
}

TEST_F(SimPortsTest, LibrariesLoadByNameOrPathAndExportByNameAndOrdinal) {
    auto image = std::make_shared<sim::SimLibraryImage>();
    image->symbols["Answer"] = reinterpret_cast<platform::ProcAddress>(&Answer);
    image->ordinals[68] = reinterpret_cast<platform::ProcAddress>(&Twice);
    pc().files().AddFile(L"C:\\Windows\\System32\\vendor.dll", image);
    pc().files().AddFile(L"C:\\Drivers\\other.dll", image);
    pc().files().AddFile(L"C:\\Drivers\\notes.txt");

    uint32_t error = 99;
    auto byName = pc().loader().Load(L"VENDOR.DLL", error);
    ASSERT_TRUE(byName);
    EXPECT_EQ(error, 0u);
    auto answer = reinterpret_cast<int (*)()>(byName->FindSymbol("Answer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    auto twice = reinterpret_cast<int (*)(int)>(byName->FindOrdinal(68));
    ASSERT_NE(twice, nullptr);
    EXPECT_EQ(twice(21), 42);
    EXPECT_EQ(byName->FindSymbol("Missing"), nullptr);
    EXPECT_EQ(byName->FindOrdinal(69), nullptr);

    EXPECT_FALSE(pc().loader().Load(L"other.dll", error));
    EXPECT_EQ(error, platform::kErrorModNotFound);
    auto byPath = pc().loader().Load(L"c:/drivers/OTHER.dll", error);
    EXPECT_TRUE(byPath);
    EXPECT_FALSE(pc().loader().Load(L"C:\\Drivers\\notes.txt", error));
    EXPECT_EQ(error, 193u);
    EXPECT_FALSE(pc().loader().Load(L"", error));

    EXPECT_EQ(pc().loader().OpenLibraries(), 2u);
    byName.reset();
    byPath.reset();
    EXPECT_EQ(pc().loader().OpenLibraries(), 0u);
}

TEST_F(SimPortsTest, LoaderFaultsHideLibrariesAndExports) {
    auto image = std::make_shared<sim::SimLibraryImage>();
    image->symbols["Answer"] = reinterpret_cast<platform::ProcAddress>(&Answer);
    pc().files().AddFile(L"C:\\Windows\\System32\\vendor.dll", image);
    pc().faults().Add({"loader.load", sim::FaultAction::Fail, 0, 1, 0, 0});
    pc().faults().Add({"loader.symbol", sim::FaultAction::Fail, 0, 1, 0, 0});
    uint32_t error = 0;
    EXPECT_FALSE(pc().loader().Load(L"vendor.dll", error));
    EXPECT_EQ(error, platform::kErrorModNotFound);
    auto library = pc().loader().Load(L"vendor.dll", error);
    ASSERT_TRUE(library);
    EXPECT_EQ(library->FindSymbol("Answer"), nullptr);
    EXPECT_NE(library->FindSymbol("Answer"), nullptr);
}

TEST_F(SimPortsTest, FilesAndMainModuleDirectory) {
    auto& files = pc().files();
    EXPECT_EQ(files.MainModuleDirectory(), L"C:\\Program Files\\Veltra\\Brisklane\\");
    pc().files().SetMainModuleDirectory(L"D:\\Suite");
    EXPECT_EQ(files.MainModuleDirectory(), L"D:\\Suite\\");
    pc().files().AddFile(L"D:\\Suite\\config\\CheckFileIntergrity.xml");
    EXPECT_TRUE(files.Exists(L"d:\\suite\\CONFIG\\checkfileintergrity.xml"));
    EXPECT_TRUE(files.Exists(L"D:\\Suite\\config"));
    EXPECT_FALSE(files.Exists(L"D:\\Suite\\conf"));
    EXPECT_FALSE(files.Exists(L""));
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

TEST_F(SimPortsTest, ApplyingAScenarioReplacesTheWorld) {
    sim::Scenario scenario;
    ASSERT_EQ(
        pc().registry().Write(RegistryHive::LocalMachine, L"Old", L"v", RegistryData::FromDword(1)),
        0);
    scenario.registry.push_back(
        {RegistryHive::CurrentUser, L"New", L"v", RegistryData::FromDword(2)});
    scenario.files.push_back(L"C:\\x.txt");
    scenario.programs.push_back({L"cmd", 3, 10});
    scenario.faults.push_back({"files.exists", sim::FaultAction::Fail, 1, std::nullopt, 0, 0});
    pc().Apply(scenario);
    RegistryData value;
    EXPECT_EQ(pc().registry().Read(RegistryHive::LocalMachine, L"Old", L"v", value), 2);
    EXPECT_EQ(pc().registry().Read(RegistryHive::CurrentUser, L"New", L"v", value), 0);
    EXPECT_TRUE(pc().files().Exists(L"C:\\x.txt"));
    EXPECT_FALSE(pc().files().Exists(L"C:\\x.txt"));
    EXPECT_EQ(pc().processes().Run(L"cmd /c", 100).exitCode, 3u);
}

TEST_F(SimPortsTest, ClockFaultsRefuseObjectsAndBreakWaits) {
    pc().faults().Add({"clock.newSemaphore", sim::FaultAction::Fail, 0, 1, 0, 0});
    pc().faults().Add({"semaphore.wait", sim::FaultAction::Fail, 0, 1, 0, 0});
    pc().faults().Add({"event.wait", sim::FaultAction::TimeOut, 0, 1, 0, 250});
    EXPECT_EQ(pc().clock().NewSemaphore(1, 1), nullptr);
    auto semaphore = pc().clock().NewSemaphore(1, 1);
    ASSERT_TRUE(semaphore);
    EXPECT_EQ(semaphore->Wait(10), platform::WaitResult::Failed);
    EXPECT_EQ(semaphore->Wait(10), platform::WaitResult::Signaled);
    auto event = pc().clock().NewEvent(true, true);
    uint64_t before = Now();
    EXPECT_EQ(event->Wait(10), platform::WaitResult::TimedOut);
    EXPECT_EQ(Now() - before, 250u);
    EXPECT_FALSE(pc().faults().Add({"no.such.call", sim::FaultAction::Fail, 0, 1, 0, 0}));
}

}  // namespace
}  // namespace connectkit::test
