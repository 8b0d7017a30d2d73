// The Radios port against fake runtime objects: listings that complete after
// the call that started them returned, or end otherwise (a factory that
// cannot be had, as on Wine, among them), radios whose state changes arrive
// on the runtime's threads, and radios whose calls fail.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <tuple>
#include <utility>

#include "platform/windows/radios/WinRadios.h"
#include "radios/FakeRadios.h"
#include "support/LogCapture.h"

namespace connectkit::test {
namespace {

using platform::AsyncStatus;
using platform::RadioKind;
using platform::RadioList;
using platform::RadioState;

constexpr HRESULT kRefused = static_cast<HRESULT>(0x80070005);

// What a listing delivered, read only while no runtime thread runs (before
// the fakes let it complete, or once the runtime is quiet).
struct Listing {
    int calls = 0;
    AsyncStatus status = AsyncStatus::Started;
    RadioList radios;

    platform::Radios::ListCompletion Completion() {
        return [this](AsyncStatus ended, RadioList list) {
            ++calls;
            status = ended;
            radios = std::move(list);
        };
    }
};

class WinRadiosTest : public ::testing::Test {
protected:
    void TearDown() override {
        stack.Clear();
        EXPECT_TRUE(runtime->Quiet());
        runtime->ClearFaults();
        EXPECT_EQ(runtime->world().handlers, 0);
        EXPECT_EQ(runtime->world().failedInvokes, 0);
        EXPECT_EQ(runtime->world().live, 0) << "a runtime object was leaked";
    }

    // Lists the radios, lets the listing complete once the call returned and
    // waits until it is delivered.
    void List(Listing& listing) {
        port.GetRadiosAsync(listing.Completion());
        ASSERT_EQ(listing.calls, 0);
        ASSERT_EQ(stack.ReleaseListings(), 1u);
        ASSERT_TRUE(runtime->Quiet());
        ASSERT_EQ(listing.calls, 1);
    }

    std::shared_ptr<FakeRuntime> runtime = std::make_shared<FakeRuntime>();
    FakeRadioStack stack{*runtime};
    win::WinRadios port{runtime};
};

TEST_F(WinRadiosTest, ListsEveryRadioNullEntriesIncluded) {
    stack.Add(3, 1, L"Bluetooth");
    stack.AddNull();
    stack.Add(1, 2, L"Wi-Fi");
    Listing listing;
    List(listing);
    EXPECT_EQ(listing.status, AsyncStatus::Completed);
    ASSERT_EQ(listing.radios.size(), 3u);
    EXPECT_FALSE(listing.radios[1]);
    for (auto [index, kind, state, name] :
         {std::tuple{0, RadioKind::Bluetooth, RadioState::On, L"Bluetooth"},
          std::tuple{2, RadioKind::WiFi, RadioState::Off, L"Wi-Fi"}}) {
        auto& radio = *listing.radios[index];
        EXPECT_EQ(radio.Kind(), kind);
        EXPECT_EQ(radio.State(), state);
        EXPECT_EQ(radio.Name(), name);
    }
}

// However a listing ends, the completion runs once, with an empty list, and
// the end is logged; a listing that cannot start throws and never completes.
TEST_F(WinRadiosTest, ListingsThatDoNotCompleteDeliverTheirStatusOnceOrThrow) {
    stack.Add(3, 1, L"Bluetooth");
    struct Case {
        int32_t status;
        HRESULT error;
        const char* failingCall;
        AsyncStatus delivered;
        const wchar_t* logged;  // null: the listing cannot start
    } cases[] = {
        {2, S_OK, "", AsyncStatus::Canceled,
         L"GetRadiosAsync ended with status 2, hresult 0x00000000"},
        {3, kRefused, "", AsyncStatus::Error,
         L"GetRadiosAsync ended with status 3, hresult 0x80070005"},
        {1, S_OK, "IAsyncOperation<IVectorView<Radio>>::GetResults", AsyncStatus::Error,
         L"IAsyncOperation<IVectorView<Radio>>::GetResults failed, hresult 0x80070005"},
        {1, S_OK, "IVectorView<Radio>::GetAt", AsyncStatus::Error,
         L"IVectorView<Radio>::GetAt failed, hresult 0x80070005"},
        {1, S_OK, "factory:Windows.Devices.Radios.Radio", AsyncStatus::Started, nullptr},
        {1, S_OK, "IRadioStatics::GetRadiosAsync", AsyncStatus::Started, nullptr},
        {1, S_OK, "IAsyncOperation<IVectorView<Radio>>::put_Completed", AsyncStatus::Started,
         nullptr},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(std::to_string(test.status) + test.failingCall);
        stack.EndListingsWith(test.status, test.error);
        runtime->Fail(test.failingCall, kRefused);
        LogCapture log;
        Listing listing;
        if (test.logged) {
            List(listing);
            EXPECT_TRUE(listing.radios.empty());
            EXPECT_TRUE(log.Contains(test.logged));
        } else {
            EXPECT_EQ(ThrownBy([&] { port.GetRadiosAsync(listing.Completion()); }).hresult,
                      kRefused);
            EXPECT_EQ(stack.ReleaseListings(), 0u);
            ASSERT_TRUE(runtime->Quiet());
            EXPECT_EQ(listing.calls, 0);
        }
        EXPECT_EQ(listing.status, test.delivered);
        runtime->ClearFaults();
    }
}

// SetStateAsync starts the switch and lets go of its operation; the change
// arrives as StateChanged, twice for one change, to every handler still
// registered. A dropped wrapper takes its handlers off.
TEST_F(WinRadiosTest, StateChangesArriveForEveryHandlerStillRegistered) {
    auto fake = stack.Add(3, 1, L"Bluetooth");
    Listing listing;
    List(listing);
    auto radio = listing.radios.at(0);
    listing.radios.clear();
    std::atomic<int> kept{0};
    std::atomic<int> removed{0};
    std::atomic<int> seen{-1};
    radio->AddStateChanged([&](platform::Radio& sender) {
        EXPECT_EQ(&sender, radio.get());
        seen = static_cast<int>(sender.State());
        ++kept;
    });
    auto removedToken = radio->AddStateChanged([&](platform::Radio&) { ++removed; });
    EXPECT_EQ(runtime->world().handlers, 2);

    long live = runtime->world().live;
    radio->SetStateAsync(RadioState::Off);
    ASSERT_TRUE(runtime->Quiet());
    EXPECT_EQ(runtime->world().live, live) << "the operation was kept";
    EXPECT_EQ(kept, 2);
    EXPECT_EQ(removed, 2);
    EXPECT_EQ(seen, static_cast<int>(RadioState::Off));

    radio->RemoveStateChanged(removedToken);
    radio->RemoveStateChanged(removedToken);
    EXPECT_EQ(runtime->world().handlers, 1);
    ASSERT_TRUE(fake->Change(1));
    ASSERT_TRUE(runtime->Quiet());
    EXPECT_EQ(kept, 4);
    EXPECT_EQ(removed, 2);

    radio.reset();
    EXPECT_EQ(runtime->world().handlers, 0);
}

// A radio the platform took away (a controller pulled) keeps its object,
// whose calls fail: each throws the runtime's answer.
TEST_F(WinRadiosTest, EveryFailingRadioCallThrowsTheRuntimesAnswer) {
    stack.Add(3, 1, L"Bluetooth");
    Listing listing;
    List(listing);
    auto radio = listing.radios.at(0);
    const FailingUses uses = {
        {"IRadio::get_Kind", [&] { radio->Kind(); }},
        {"IRadio::get_State", [&] { radio->State(); }},
        {"IRadio::get_Name", [&] { radio->Name(); }},
        {"IRadio::SetStateAsync", [&] { radio->SetStateAsync(RadioState::On); }},
        {"IRadio::add_StateChanged", [&] { radio->AddStateChanged([](platform::Radio&) {}); }},
    };
    ExpectEachFailureThrown(*runtime, kRefused, uses);
}

}  // namespace
}  // namespace connectkit::test
