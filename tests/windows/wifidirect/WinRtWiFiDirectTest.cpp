// The Windows Runtime Wi-Fi Direct port against fake runtime objects: how it
// holds the runtime's objects and our delegates, and what every failing
// call turns into. LegacyAP over the same fakes is in WinRtLegacyAPTest.

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "platform/ports/Errors.h"
#include "platform/windows/wifidirect/WinRtPublisher.h"
#include "platform/windows/wifidirect/WinWiFiDirect.h"
#include "platform/windows/winrt/Delegate.h"
#include "support/LogCapture.h"
#include "winrt/FakeRuntime.h"

namespace connectkit::test {
namespace {

using platform::AsyncStatus;
using platform::PublisherStatus;
using platform::PublisherStatusChange;
using platform::WiFiDirectPublisher;

constexpr HRESULT kRefused = static_cast<HRESULT>(0x80070005);

class WinRtPortTest : public ::testing::Test {
protected:
    void TearDown() override {
        EXPECT_TRUE(runtime->Quiet());
        EXPECT_EQ(runtime->world().handlers, 0);
        EXPECT_EQ(runtime->world().live, 0) << "a runtime object was leaked";
    }

    std::shared_ptr<FakeRuntime> runtime = std::make_shared<FakeRuntime>();
    win::WinWiFiDirect port{runtime};
};

// What a handler's body throws is tested with the wrappers below.
TEST(WinRtDelegate, AnswersItsOwnInterfaceIUnknownAndAgileOnly) {
    auto handler = win::NewDelegate<win::abi::IDeviceStatusChangedHandler,
                                    win::abi::IWiFiDirectDevice*, IInspectable*>(
        [](win::abi::IWiFiDirectDevice*, IInspectable*) { return S_OK; });
    for (const GUID& iid : {win::abi::IDeviceStatusChangedHandler::kIid, win::abi::kIidUnknown,
                            win::abi::kIidAgileObject}) {
        void* object = nullptr;
        ASSERT_EQ(handler->QueryInterface(iid, &object), S_OK);
        EXPECT_EQ(object, handler.Get());
        static_cast<IUnknown*>(object)->Release();
    }
    for (const GUID& iid :
         {win::abi::kIidInspectable, win::abi::IPublisherStatusChangedHandler::kIid}) {
        void* object = reinterpret_cast<void*>(1);
        EXPECT_EQ(handler->QueryInterface(iid, &object), E_NOINTERFACE);
        EXPECT_EQ(object, nullptr);
    }
    EXPECT_EQ(handler->AddRef(), 2u);
    EXPECT_EQ(handler->Release(), 1u);
}

// Events reach their handlers until removed. The runtime may still call a
// handler whose removal it refused, or one of a wrapper that is gone:
// neither reaches the port's user.
TEST_F(WinRtPortTest, EventsComeUntilRemovedOrTheWrapperIsGone) {
    win::ComPtr<IInspectable> instance;
    ASSERT_EQ(runtime->ActivateInstance(win::abi::kPublisherClass, instance.GetAddressOf()), S_OK);
    auto raw = win::Query<win::abi::IWiFiDirectAdvertisementPublisher>(instance.Get());
    auto publisher = std::make_shared<win::WinRtPublisher>(raw);
    std::atomic<int> removedCalls{0};
    std::atomic<int> keptCalls{0};
    std::atomic<int> last{-1};
    auto removed = publisher->AddStatusChanged([&](auto&, auto&) { ++removedCalls; });
    auto refused = publisher->AddStatusChanged([&](auto&, auto&) { ++removedCalls; });
    auto kept = publisher->AddStatusChanged(
        [&](WiFiDirectPublisher& sender, const PublisherStatusChange& change) {
            EXPECT_EQ(&sender, publisher.get());
            last = static_cast<int>(change.status);
            ++keptCalls;
        });
    EXPECT_NE(kept, 0);
    EXPECT_EQ(runtime->world().handlers, 3);
    publisher->RemoveStatusChanged(removed);
    EXPECT_EQ(runtime->world().handlers, 2);
    runtime->Fail("IWiFiDirectAdvertisementPublisher::remove_StatusChanged", kRefused);
    EXPECT_THROW(publisher->RemoveStatusChanged(refused), platform::PlatformError);
    ASSERT_EQ(raw->Start(), S_OK);
    ASSERT_TRUE(runtime->Quiet());
    EXPECT_EQ(removedCalls, 0);
    EXPECT_EQ(keptCalls, 1);
    EXPECT_EQ(last, static_cast<int>(PublisherStatus::Started));
    EXPECT_EQ(publisher->Status(), PublisherStatus::Started);

    LogCapture log;
    publisher.reset();
    EXPECT_TRUE(log.Contains(
        L"IWiFiDirectAdvertisementPublisher::remove_StatusChanged for a dropped wrapper failed"));
    EXPECT_EQ(runtime->world().handlers, 2);
    ASSERT_EQ(raw->Stop(), S_OK);
    ASSERT_TRUE(runtime->Quiet());
    EXPECT_EQ(keptCalls, 1);
    runtime->ClearFaults();
    raw.Reset();
    instance.Reset();
}

// Each call, failing, throws PlatformError with its own HRESULT and name.
TEST_F(WinRtPortTest, EveryFailingCallThrowsItsResultAndName) {
    std::shared_ptr<WiFiDirectPublisher> publisher = port.NewPublisher();
    auto credential = port.NewPasswordCredential();
    auto listener = port.NewConnectionListener();
    std::shared_ptr<platform::WiFiDirectDevice> device;
    port.DeviceFromIdAsync(L"phone-4", [&](auto, auto opened) { device = opened; });
    ASSERT_TRUE(runtime->Quiet());
    ASSERT_TRUE(publisher && credential && listener && device);
    auto autonomous = [&] { publisher->SetAutonomousGroupOwnerEnabled(true); };
    auto open = [&] { port.DeviceFromIdAsync(L"phone-5", [](auto, auto) { ADD_FAILURE(); }); };
    const FailingUses uses = {
        {"IWiFiDirectAdvertisementPublisher::get_Status", [&] { publisher->Status(); }},
        {"IWiFiDirectAdvertisementPublisher::add_StatusChanged",
         [&] { publisher->AddStatusChanged([](auto&, auto&) {}); }},
        {"IWiFiDirectAdvertisementPublisher::get_Advertisement", autonomous},
        {"IWiFiDirectAdvertisement::put_IsAutonomousGroupOwnerEnabled", autonomous},
        {"IWiFiDirectAdvertisement::get_LegacySettings",
         [&] { publisher->SetLegacyEnabled(true); }},
        {"IWiFiDirectLegacySettings::put_IsEnabled", [&] { publisher->SetLegacyEnabled(true); }},
        {"IWiFiDirectLegacySettings::put_Ssid", [&] { publisher->SetLegacySsid(L"DIRECT-x"); }},
        {"IWiFiDirectLegacySettings::put_Passphrase",
         [&] { publisher->SetLegacyPassphrase(credential); }},
        {"IWiFiDirectAdvertisementPublisher::Start", [&] { publisher->Start(); }},
        {"IWiFiDirectAdvertisementPublisher::Stop", [&] { publisher->Stop(); }},
        {"IPasswordCredential::put_Password", [&] { credential->SetPassword(L"pass1234"); }},
        {"IPasswordCredential::get_Password", [&] { credential->Password(); }},
        {"IWiFiDirectConnectionListener::add_ConnectionRequested",
         [&] { listener->AddConnectionRequested([](auto) {}); }},
        {"IWiFiDirectDevice::get_ConnectionStatus", [&] { device->ConnectionStatus(); }},
        {"IWiFiDirectDevice::get_DeviceId", [&] { device->DeviceId(); }},
        {"IWiFiDirectDevice::add_ConnectionStatusChanged",
         [&] { device->AddConnectionStatusChanged([](auto&) {}); }},
        {"IWiFiDirectDevice::GetConnectionEndpointPairs",
         [&] { device->ConnectionEndpointPairs(); }},
        {"IVectorView<EndpointPair>::get_Size", [&] { device->ConnectionEndpointPairs(); }},
        {"IEndpointPair::get_RemoteHostName", [&] { device->ConnectionEndpointPairs(); }},
        {"IHostName::get_CanonicalName", [&] { device->ConnectionEndpointPairs(); }},
        {"IClosable::Close", [&] { device->Close(); }},
        {"IWiFiDirectDeviceStatics::FromIdAsync", open},
        {"IAsyncOperation<WiFiDirectDevice>::put_Completed", open},
        {"factory:Windows.Devices.WiFiDirect.WiFiDirectDevice", open},
    };
    ExpectEachFailureThrown(*runtime, static_cast<HRESULT>(0x80070015), uses);
    ASSERT_TRUE(runtime->Quiet());
}

// What fails inside one of our event or completion handlers stays there: an
// event that cannot be read is logged and answered S_OK, an exception is
// logged and answered E_FAIL, and neither reaches the runtime's thread. A
// device that cannot be opened reaches the completion once, as an error.
TEST_F(WinRtPortTest, FailuresInsideHandlersStayInsideThem) {
    auto publisher = port.NewPublisher();
    auto listener = port.NewConnectionListener();
    ASSERT_TRUE(publisher && listener);
    // Shared with the handlers: a completion may still come after a failed wait.
    auto delivered = std::make_shared<std::atomic<int>>(0);
    publisher->AddStatusChanged([delivered](auto&, auto&) { ++*delivered; });
    listener->AddConnectionRequested([delivered](auto request) {
        ++*delivered;
        request->DeviceId();
    });
    auto phoneAsks = [&] { runtime->PhoneRequests(L"phone-8", L"192.168.137.28"); };
    auto open = [&](const wchar_t* phone) {
        port.DeviceFromIdAsync(phone, [delivered](AsyncStatus status, auto device) {
            *delivered += status == AsyncStatus::Error && !device ? 1 : 100;
        });
    };
    struct Case {
        const char* fault;
        std::function<void()> trigger;
        const wchar_t* logged;
        int delivered;
        long failedInvokes;
    };
    const Case cases[] = {
        {"IWiFiDirectAdvertisementPublisherStatusChangedEventArgs::get_Status",
         [&] { publisher->Start(); },
         L"StatusChanged: reading the event failed, hresult 0x80070015", 0, 0},
        {"IWiFiDirectConnectionRequestedEventArgs::GetConnectionRequest", phoneAsks,
         L"ConnectionRequested: GetConnectionRequest failed, hresult 0x80070015", 0, 0},
        {"IWiFiDirectConnectionRequest::get_DeviceInformation", phoneAsks, L"handler threw", 1, 1},
        {"",
         [&] { port.DeviceFromIdAsync(L"phone-8", [](auto, auto) { throw std::bad_alloc(); }); },
         L"handler threw", 0, 1},
        {"",
         [&] {
             runtime->RefuseDevice(L"phone-2");
             open(L"phone-2");
         },
         L"FromIdAsync ended with status 3, hresult 0x80070490", 1, 0},
        {"IAsyncOperation<WiFiDirectDevice>::GetResults", [&] { open(L"phone-3"); },
         L"FromIdAsync completed without a device, hresult 0x80070015", 1, 0},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.fault);
        runtime->Fail(test.fault, static_cast<HRESULT>(0x80070015));
        *delivered = 0;
        long failedBefore = runtime->world().failedInvokes;
        LogCapture log;
        test.trigger();
        ASSERT_TRUE(runtime->Quiet());
        EXPECT_EQ(*delivered, test.delivered);
        EXPECT_TRUE(log.Contains(test.logged));
        EXPECT_EQ(runtime->world().failedInvokes - failedBefore, test.failedInvokes);
        runtime->ClearFaults();
    }
}

TEST_F(WinRtPortTest, APassphraseFromElsewhereIsRefused) {
    struct Foreign : platform::PasswordCredential {
        void SetPassword(const std::wstring&) override {}
        std::wstring Password() const override { return L"pass1234"; }
    };
    auto publisher = port.NewPublisher();
    EXPECT_EQ(
        ThrownBy([&] { publisher->SetLegacyPassphrase(std::make_shared<Foreign>()); }).hresult,
        E_INVALIDARG);
}

}  // namespace
}  // namespace connectkit::test
