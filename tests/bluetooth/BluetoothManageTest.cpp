// The Bluetooth radio on the simulated PC: results of switching, the
// registry and device-node fallback, observers and their threads, the lock
// left held on a null observer, and what the registry hands back when it
// holds nonsense. Each test runs in a process of its own, so each meets a
// fresh BluetoothManage built in the world it applied first.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "bluetooth/BluetoothControllerKeys.h"
#include "connectkit/BluetoothManage.h"
#include "support/LogCapture.h"
#include "support/RadioWorld.h"

namespace ConnectKitBluetooth {
// Releases the lock a null registration left held, so the test ends cleanly.
class BluetoothManageInspector {
public:
    static void Unlock(BluetoothManage& manage) { manage.lock_.Unlock(); }
};
}  // namespace ConnectKitBluetooth

namespace connectkit::test {
namespace {

using ConnectKitBluetooth::BluetoothManage;
using platform::RadioKind;
using platform::RadioState;
using platform::RegistryData;
using Radio = Controller::Radio;

RegistryData Dword(uint32_t value) {
    return RegistryData::FromDword(value);
}
RegistryData Text(const std::wstring& text) {
    return RegistryData::FromString(text);
}
RegistryData Binary(const std::string& bytes) {
    return RegistryData::FromBinary({bytes.begin(), bytes.end()});
}

class BluetoothTest : public SimTest {
protected:
    BluetoothManage& Use(const sim::Scenario& world) {
        pc().Apply(world);
        return *BluetoothManage::GetInstance();
    }
    // Lets the platform's switches and events run their course.
    void Settle() { pc().clock().Sleep(5000); }
};

struct EnableCase {
    const char* name;
    std::optional<Radio> radio;  // none: a PC without Bluetooth
    int enable;
    ConnectKitBluetooth::EnableBTResult expected;
    ConnectKitBluetooth::BluetoothState after;
    sim::SimRadioBehaviour::Access access = sim::SimRadioBehaviour::Access::Allowed;
    bool stateThrows = false;
    // The class-name look-up fails for the last device the registry switch
    // walks, one of the system's nodes enumerated after the controller.
    bool lastClassNameFails = false;
};

class EnableBluetoothTest : public BluetoothTest,
                            public ::testing::WithParamInterface<EnableCase> {};

TEST_P(EnableBluetoothTest, AnswersAndLeavesTheRadio) {
    const auto& c = GetParam();
    auto world = c.radio ? BluetoothWorld(*c.radio) : sim::Scenario{};
    if (c.radio) {
        world.bluetooth.controllers[0].behaviour.access = c.access;
        world.bluetooth.controllers[0].behaviour.stateThrows = c.stateThrows;
        world.bluetooth.softwareNodesLast = c.lastClassNameFails;
    }
    auto& manage = Use(world);
    if (c.lastClassNameFails) {
        std::vector<platform::SetupDevice> set;
        ASSERT_EQ(pc().devices().ClassDevices(bluetooth::kBluetoothClassGuid,
                                              platform::kDigcfPresent, set),
                  0u);
        // The state read walks the set once before the switch walks it.
        auto walked = static_cast<uint32_t>(2 * set.size() - 1);
        pc().faults().Add(sim::FaultRule{"devices.className", sim::FaultAction::Fail, walked, 1});
    }
    EXPECT_EQ(manage.EnableBluetooth(c.enable), c.expected);
    Settle();
    EXPECT_EQ(manage.GetBluetoothState2(), c.after);
}

using namespace ConnectKitBluetooth;
using Access = sim::SimRadioBehaviour::Access;

INSTANTIATE_TEST_SUITE_P(
    Table, EnableBluetoothTest,
    ::testing::Values(
        EnableCase{"OnStaysOn", Radio::On, 1, ENABLE_BT_ALREADY, BT_STATE_ON},
        EnableCase{"OnGoesOff", Radio::On, 0, ENABLE_BT_REQUESTED, BT_STATE_OFF},
        EnableCase{"OffGoesOn", Radio::Off, 1, ENABLE_BT_REQUESTED, BT_STATE_ON},
        EnableCase{"OffStaysOff", Radio::Off, 7, ENABLE_BT_ALREADY, BT_STATE_OFF},
        EnableCase{"Disabled", Radio::Disabled, 1, ENABLE_BT_DISABLED, BT_STATE_DISABLED},
        EnableCase{"DeniedChangesNothing", Radio::Off, 1, ENABLE_BT_REQUESTED, BT_STATE_OFF,
                   Access::DeniedByUser},
        EnableCase{"BusyThrows", Radio::Off, 1, ENABLE_BT_FAILED, BT_STATE_OFF, Access::Busy},
        EnableCase{"StateThrows", Radio::On, 1, ENABLE_BT_FAILED, BT_STATE_UNKNOWN, Access::Allowed,
                   true},
        EnableCase{"HardOffOnThroughRegistry", Radio::HardOff, 1, ENABLE_BT_REQUESTED, BT_STATE_ON},
        EnableCase{"HardOffSkippedDeviceFailsAfterTheSwitch", Radio::HardOff, 1, ENABLE_BT_FAILED,
                   BT_STATE_ON, Access::Allowed, false, true},
        EnableCase{"HardOffNoOffThroughRegistry", Radio::HardOff, 0, ENABLE_BT_FAILED,
                   BT_STATE_OFF},
        EnableCase{"NoController", std::nullopt, 1, ENABLE_BT_FAILED, BT_STATE_OFF}),
    [](const auto& info) { return std::string(info.param.name); });

// The fallback writes RadioState 2, restarts the controller (2 s between
// disable and enable) and looks for the radio three times, 300 ms apart,
// listing twice per try (the list holds fewer than two radios, so the
// look-up lists again). Restart times never coincide with a listing's
// completion (every 50 ms from the restart on), whose order against the
// controller's start would be the dispatcher's choice.
struct SearchCase {
    uint32_t restartLatencyMs;
    bool found;
    uint32_t listings;
};

class RadioSearchTest : public BluetoothTest, public ::testing::WithParamInterface<SearchCase> {};

TEST_P(RadioSearchTest, ThreeTriesAfterTheRegistrySwitch) {
    auto world = BluetoothWorld(Radio::HardOff);
    world.bluetooth.controllers[0].restartLatencyMs = GetParam().restartLatencyMs;
    world.bluetooth.listing.latencyMs = 50;
    auto& manage = Use(world);
    auto listingsBefore = pc().bluetooth().History().listings;
    auto before = pc().clock().TickCount64();
    EXPECT_EQ(manage.EnableBluetooth(1), ENABLE_BT_REQUESTED);
    auto spent = pc().clock().TickCount64() - before;
    auto listings = pc().bluetooth().History().listings - listingsBefore;
    RegistryData radioState;
    pc().registry().Read(platform::RegistryHive::LocalMachine, ControllerKey(world), L"RadioState",
                         radioState);
    EXPECT_EQ(radioState.bytes, Dword(2).bytes);
    EXPECT_EQ(manage.IsBluetoothAvailable(), GetParam().found);
    EXPECT_EQ(listings, GetParam().listings);
    uint32_t tries = listings / 2;
    uint32_t pauses = GetParam().found ? tries - 1 : tries;
    EXPECT_EQ(spent, 2000u + 50u * listings + 300u * pauses);
}

INSTANTIATE_TEST_SUITE_P(Table, RadioSearchTest,
                         ::testing::Values(SearchCase{0, true, 2}, SearchCase{420, true, 4},
                                           SearchCase{5000, false, 6}),
                         [](const auto& info) {
                             return "Restart" + std::to_string(info.param.restartLatencyMs) + "ms";
                         });

// Without a platform radio the registry and the device node decide: both
// readings must say on, and EnableBluetooth then announces the radio on to
// observers on the caller's thread. Address and name come through the Win32
// API, or from the registry when the controller has a problem (it runs no
// radio then); of two controllers the last one enumerated wins either way,
// and the system's "BTH\MS" nodes count for nothing wherever they enumerate.
constexpr uint64_t kOwnAddress = 0xA1B2C3D4E5F6;
constexpr wchar_t kOwnName[] = L"LAPTOP-SIM";
constexpr uint64_t kSecondAddress = 0x112233445566;

struct FallbackCase {
    const char* name;
    const wchar_t* value;  // set over the controller's own
    RegistryData data;
    uint32_t problemCode;
    ConnectKitBluetooth::BluetoothState state;
    uint64_t address = kOwnAddress;
    std::wstring btName = kOwnName;
    const wchar_t* log = L"";
    ConnectKitBluetooth::EnableBTResult enabled = ENABLE_BT_REQUESTED;
    // A second controller's RadioState, the first one's in `data`.
    std::optional<uint32_t> secondRadioState = std::nullopt;
    bool softwareNodesLast = false;
};

class FallbackTest : public BluetoothTest, public ::testing::WithParamInterface<FallbackCase> {};

TEST_P(FallbackTest, RegistryAndDeviceNodeDecide) {
    const auto& c = GetParam();
    auto world = BluetoothWorld(Radio::HardOff);
    world.bluetooth.controllers[0].problemCode = c.problemCode;
    world.bluetooth.softwareNodesLast = c.softwareNodesLast;
    if (c.secondRadioState) {
        Controller second;
        second.instanceId = L"USB\\VID_0BDA&PID_B00C\\00E04C000001";
        second.address = kSecondAddress;
        second.radio = Radio::HardOff;
        world.bluetooth.controllers.push_back(second);
        SetControllerValue(world, L"RadioState", Dword(*c.secondRadioState), 1);
    }
    SetControllerValue(world, c.value, c.data);
    LogCapture log;
    auto& manage = Use(world);
    auto listings = pc().bluetooth().History().listings;
    EXPECT_EQ(manage.GetBluetoothState2(), c.state);
    EXPECT_EQ(pc().bluetooth().History().listings, listings);
    EXPECT_EQ(manage.GetBluetoothState(), c.state);
    EXPECT_EQ(manage.GetBtName(), c.btName);
    const auto* address = manage.GetBtMacAndName();
    ASSERT_NE(address, nullptr);
    EXPECT_EQ(address->address, c.address);
    EXPECT_EQ(address->name, c.btName);
    EXPECT_TRUE(!*c.log || log.Contains(c.log));
    RadioRecorder recorder;
    manage.RegistBluetoothStateChangeCallback(&recorder);
    EXPECT_EQ(manage.EnableBluetooth(1), c.enabled);
    auto calls = recorder.Calls();
    bool announced = std::any_of(calls.begin(), calls.end(), [](const Heard& heard) {
        return heard.state == RadioState::On && heard.thread == std::this_thread::get_id();
    });
    EXPECT_EQ(announced, c.enabled == ENABLE_BT_REQUESTED);
}

constexpr wchar_t kState[] = L"RadioState";
constexpr wchar_t kCache[] = L"DeviceAddressCache";
constexpr wchar_t kName[] = L"Local Name";
constexpr wchar_t kNotAnAddress[] = L"is not an address";

INSTANTIATE_TEST_SUITE_P(
    Table, FallbackTest,
    ::testing::Values(
        FallbackCase{"TwoIsOn", kState, Dword(2), 0, BT_STATE_ON},
        FallbackCase{"FourIsOff", kState, Dword(4), 0, BT_STATE_OFF},
        FallbackCase{"OneIsOff", kState, Dword(1), 0, BT_STATE_OFF},
        FallbackCase{"ProblemCodeIsOff", kState, Dword(2), 43, BT_STATE_OFF},
        FallbackCase{"TextIsUnreadable", kState, Text(L"2"), 0, BT_STATE_OFF, kOwnAddress, kOwnName,
                     L"RadioState is not a DWORD", ENABLE_BT_FAILED},
        FallbackCase{"Address", kCache, Text(L"0A1B2C3D4E5F"), 43, BT_STATE_OFF, 0x0A1B2C3D4E5F},
        FallbackCase{"OddLength", kCache, Text(L"A1B2C3D4E5F"), 43, BT_STATE_OFF, 0, kOwnName,
                     kNotAnAddress},
        FallbackCase{"NotHex", kCache, Text(L"A1B2C3D4E5FG"), 43, BT_STATE_OFF, 0, kOwnName,
                     kNotAnAddress},
        FallbackCase{"TwoHundredCharacters", kCache, Text(std::wstring(200, L'A')), 43,
                     BT_STATE_OFF, 0, kOwnName, kNotAnAddress},
        FallbackCase{"Dword", kCache, Dword(7), 43, BT_STATE_OFF, 0, kOwnName,
                     L"BluetoothManage::GetBtmac_ByRegist fail res 1630"},
        FallbackCase{"Utf8", kName, Binary("Caf\xC3\xA9"), 43, BT_STATE_OFF, kOwnAddress,
                     L"Caf\u00E9"},
        FallbackCase{"Over256Bytes", kName, Binary(std::string(257, 'n')), 43, BT_STATE_OFF,
                     kOwnAddress, L"", L"Local Name unreadable res 234"},
        FallbackCase{"NotUtf8", kName, Binary("Caf\xE9"), 43, BT_STATE_OFF, kOwnAddress,
                     L"Caf\uFFFD", L"Local Name is not UTF-8"},
        FallbackCase{"LastOfTwoOn", kState, Dword(4), 0, BT_STATE_ON, kSecondAddress, kOwnName, L"",
                     ENABLE_BT_REQUESTED, 2},
        FallbackCase{"LastOfTwoOff", kState, Dword(2), 0, BT_STATE_OFF, kSecondAddress, kOwnName,
                     L"", ENABLE_BT_REQUESTED, 4},
        FallbackCase{"LastOfTwoOnNodesLast", kState, Dword(4), 0, BT_STATE_ON, kSecondAddress,
                     kOwnName, L"", ENABLE_BT_REQUESTED, 2, true}),
    [](const auto& info) { return std::string(info.param.name); });

// A radio found after construction is reported by the caller's
// GetBluetoothState on its thread; an "on" is dropped while the Win32 API
// finds no radio, except through UpdateBluetoothStateChanged.
TEST_F(BluetoothTest, ObserversHearALateRadioOnTheCallersThread) {
    auto world = BluetoothWorld(Radio::On);
    world.faults.push_back(sim::FaultRule{"radios.list", sim::FaultAction::Throw, 0, 1});
    auto& manage = Use(world);
    ASSERT_FALSE(manage.IsBluetoothAvailable());
    RadioRecorder recorder;
    ASSERT_EQ(manage.RegistBluetoothStateChangeCallback(&recorder), 1);
    EXPECT_EQ(manage.GetBluetoothState(), BT_STATE_ON);
    ASSERT_EQ(recorder.Calls().size(), 1u);
    EXPECT_EQ(recorder.Calls()[0].thread, std::this_thread::get_id());

    pc().faults().Add(sim::FaultRule{"bluetooth.findRadio", sim::FaultAction::Fail, 0, {}});
    manage.NotifyBluetoothStateChanged(RadioState::On);
    EXPECT_EQ(recorder.Calls().size(), 1u);
    manage.NotifyBluetoothStateChanged(RadioState::Off);
    manage.UpdateBluetoothStateChanged(RadioState::On);
    EXPECT_EQ(recorder.Calls().size(), 3u);
}

// Each successful look-up subscribes once more to the same radio's changes.
// With two radios listed the list is not fetched again, so the look-up
// finds the very object it subscribed to at construction. The platform
// reports the one switch twice, and each report reaches observers.
TEST_F(BluetoothTest, EachLookUpAddsASubscription) {
    auto world = BluetoothWorld(Radio::On);
    world.bluetooth.wifi.present = true;
    world.bluetooth.controllers[0].behaviour.stateChangedTwice = true;
    SetControllerValue(world, L"RadioState", Dword(4));
    auto& manage = Use(world);
    ASSERT_EQ(manage.EnableBluetoothWithBtPtrIsNull(1), ENABLE_BT_REQUESTED);
    Settle();
    RadioRecorder recorder;
    manage.RegistBluetoothStateChangeCallback(&recorder);
    pc().bluetooth().SwitchRadio(RadioKind::Bluetooth, RadioState::Off);
    Settle();
    EXPECT_EQ(recorder.Calls().size(), 4u);
}

TEST_F(BluetoothTest, NullRegistrationLeavesTheLockHeld) {
    auto& manage = Use(BluetoothWorld(Radio::On));
    EXPECT_EQ(manage.RegistBluetoothStateChangeCallback(nullptr), 0);
    RadioRecorder recorder;
    EXPECT_EQ(manage.RegistBluetoothStateChangeCallback(&recorder), 1);
    std::atomic<bool> answered{false};
    // Known to the clock from its start, so the sleep cannot end before the
    // other thread has reached the lock.
    auto other = pc().clock().StartThread([&] {
        manage.IsBluetoothAvailable();
        answered = true;
    });
    pc().clock().Sleep(10000);
    EXPECT_FALSE(answered);
    ConnectKitBluetooth::BluetoothManageInspector::Unlock(manage);
    other->Join();
    EXPECT_TRUE(answered);
}

// setradio when the registry has the radio off: it asks for on twice (the
// first switch has not happened when the second request looks) and then for
// off, which a radio still off ignores; a radio already on is asked for off.
struct SetradioCase {
    const char* name;
    Radio radio;
    uint32_t setStateCalls;
    ConnectKitBluetooth::BluetoothState after;
};

class SetradioTest : public BluetoothTest, public ::testing::WithParamInterface<SetradioCase> {};

TEST_P(SetradioTest, RestoresTheRegistrySetting) {
    auto world = BluetoothWorld(GetParam().radio);
    SetControllerValue(world, L"RadioState", Dword(4));
    auto& manage = Use(world);
    RadioRecorder recorder;
    manage.RegistBluetoothStateChangeCallback(&recorder);
    auto setStates = pc().bluetooth().History().setStateCalls;
    manage.setradio();
    Settle();
    EXPECT_EQ(pc().bluetooth().History().setStateCalls - setStates, GetParam().setStateCalls);
    EXPECT_EQ(manage.GetBluetoothState2(), GetParam().after);
    ASSERT_FALSE(recorder.Calls().empty());
    EXPECT_EQ(recorder.Calls()[0].state, RadioState::Off);
    EXPECT_EQ(recorder.Calls()[0].thread, std::this_thread::get_id());
}

INSTANTIATE_TEST_SUITE_P(Table, SetradioTest,
                         ::testing::Values(SetradioCase{"Off", Radio::Off, 2, BT_STATE_ON},
                                           SetradioCase{"On", Radio::On, 1, BT_STATE_OFF}),
                         [](const auto& info) { return std::string(info.param.name); });

// Refused names first: they must leave the name and the controller alone.
TEST_F(BluetoothTest, SetBTNameWritesAndReloads) {
    auto& manage = Use(BluetoothWorld(Radio::On));
    const struct {
        std::wstring newName;
        int expected;
    } cases[] = {{std::wstring(1000, L'x'), 12}, {std::wstring(L"De\0sk", 5), 12}, {L"Desk", 0}};
    for (const auto& [newName, expected] : cases) {
        SCOPED_TRACE(newName.size());
        auto reloads = pc().bluetooth().History().nameReloads;
        EXPECT_EQ(manage.SetBTName(newName), expected);
        EXPECT_EQ(pc().bluetooth().History().nameReloads - reloads, expected == 0 ? 1u : 0u);
        EXPECT_EQ(manage.GetBtName(), expected == 0 ? newName : L"LAPTOP-SIM");
    }
}

// A listing slower than the wait completes later and is used then; the next
// look-up still waits for a listing of its own.
TEST_F(BluetoothTest, LateListingIsUsedLater) {
    auto world = BluetoothWorld(Radio::On);
    world.bluetooth.listing.latencyMs = 4000;
    LogCapture log;
    auto& manage = Use(world);
    EXPECT_FALSE(manage.IsBluetoothAvailable());
    EXPECT_TRUE(log.Contains(L"wait for result failed,errCode:258"));
    EXPECT_TRUE(log.Contains(L"after LoadRadios, radios == NULL"));
    pc().clock().Sleep(2000);
    EXPECT_EQ(manage.GetBluetoothState(), BT_STATE_ON);
    EXPECT_EQ(log.Count(L"wait for result failed,errCode:258"), 2u);
}

TEST_F(BluetoothTest, NullEntriesArePassedOver) {
    auto world = BluetoothWorld(Radio::HardOff);
    world.bluetooth.listing.nullEntries = 2;
    LogCapture log;
    auto& manage = Use(world);
    EXPECT_FALSE(manage.IsBluetoothAvailable());
    EXPECT_EQ(log.Count(L"of the list is null"), 2u);
    EXPECT_TRUE(log.Contains(L"radio is not set value"));
}

// Storms of platform state changes while two host threads switch and ask.
TEST_F(BluetoothTest, StateStormsWhileHostsSwitchAndAsk) {
    auto world = BluetoothWorld(Radio::On);
    world.bluetooth.controllers[0].behaviour.stateChangedTwice = true;
    world.bluetooth.controllers[0].behaviour.latencyMs = 1;
    auto& manage = Use(world);
    RadioRecorder recorder;
    manage.RegistBluetoothStateChangeCallback(&recorder);
    std::atomic<bool> stop{false};
    // Started and joined through the clock, so virtual time knows them.
    auto host = [&](auto call) {
        return pc().clock().StartThread([&, call] {
            while (!stop) {
                call();
                pc().clock().Sleep(1);
            }
        });
    };
    auto switcher = host([&] { manage.EnableBluetooth(1); });
    auto asker = host([&] { manage.GetBluetoothState(); });
    for (int i = 0; i < 200; ++i) {
        pc().bluetooth().SwitchRadio(RadioKind::Bluetooth,
                                     i % 2 ? RadioState::On : RadioState::Off);
        pc().clock().Sleep(1);
    }
    stop = true;
    switcher->Join();
    asker->Join();
    Settle();
    EXPECT_GE(recorder.Calls().size(), 200u);
}

}  // namespace
}  // namespace connectkit::test
