// LegacyAP on the Windows backend: over fake runtime objects for what Wine
// cannot run (a publisher that starts, phones that connect), and over Wine's
// own runtime, which has no Wi-Fi Direct classes at all.

#include "connectkit/LegacyAP.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/Platform.h"
#include "support/HotspotWorld.h"
#include "support/LogCapture.h"
#include "winrt/FakeRuntime.h"

namespace connectkit::test {
namespace {

using ConnectKit::E_GO_PURPOSE_GENERAL;
using ConnectKit::E_GO_PURPOSE_SOFTAP;
using ConnectKit::LegacyAP;

class WinRtLegacyAPTest : public ::testing::Test {
protected:
    void SetUp() override {
        runtime().ClearFaults();
        runtime().UseSystem(false);
        // The access point keeps one PasswordCredential for its lifetime.
        ap().SetPassphrase(L"pass1234");
        ap().RegisterLegacyAPNotificationEventCallback(&recorder);
        baseline = runtime().world().live;
    }

    void TearDown() override {
        StopAndExpectNothingLeft();
        ap().UnRegisterLegacyAPNotificationEventCallback(&recorder);
        runtime().UseSystem(false);
    }

    void StopAndExpectNothingLeft() {
        ap().Stop(true, false, false, 0, 5000, E_GO_PURPOSE_SOFTAP);
        ap().Stop(true, false, false, 0, 5000, E_GO_PURPOSE_GENERAL);
        runtime().ClearFaults();
        EXPECT_TRUE(runtime().Quiet());
        EXPECT_EQ(runtime().world().handlers, 0) << "a handler outlived the access point";
        EXPECT_EQ(runtime().world().live, baseline) << "a runtime object was leaked";
    }

    static FakeRuntime& runtime() { return InstalledRuntime(); }
    static LegacyAP& ap() { return *LegacyAP::GetInstance(); }

    Recorder recorder;
    long baseline = 0;
};

// What the runtime hands over reaches the access point's observers: the
// settings it started with, the phone's id and address from the request
// and its endpoint pair, its leaving from the device's status event.
TEST_F(WinRtLegacyAPTest, AStartedAccessPointServesAPhoneUntilItLeaves) {
    ap().SetSSID(L"ab12");
    ASSERT_EQ(ap().Start(E_GO_PURPOSE_GENERAL), 0);
    EXPECT_EQ(runtime().Started().ssid, L"DIRECT-ab12-veltra");
    EXPECT_EQ(runtime().Started().password, L"pass1234");
    EXPECT_TRUE(runtime().Started().asLegacyGroupOwner);

    // The listener opens on the notification thread, after Start returned.
    ASSERT_TRUE(Eventually([] { return runtime().PhoneRequests(L"phone-1", L"192.168.137.23"); }));
    ASSERT_TRUE(Eventually([this] { return recorder.Connections().size() == 1; }));
    ASSERT_TRUE(runtime().PhoneLeaves(L"phone-1"));
    ASSERT_TRUE(Eventually([this] { return recorder.Connections().size() == 2; }));
    EXPECT_EQ(recorder.Connections(),
              (std::vector<Recorder::Connection>{
                  {ConnectKit::LEGACY_AP_DEVICE_CONNECTED, L"phone-1", L"192.168.137.23"},
                  {ConnectKit::LEGACY_AP_DEVICE_DISCONNECTED, L"phone-1", L""}}));
    EXPECT_EQ(ap().Stop(true, false, false, 0, 5000, E_GO_PURPOSE_GENERAL), 0);
    EXPECT_GE(runtime().world().closedRequests, 1);
}

// Whatever runtime call fails, and an aborted start with the runtime's own
// status and error, Start answers -1 and leaves nothing behind.
TEST_F(WinRtLegacyAPTest, AnAbortedStartOrAFailingRuntimeCallMakesStartFailCleanly) {
    runtime().AbortStarts(2);
    LogCapture aborted;
    EXPECT_EQ(ap().Start(E_GO_PURPOSE_GENERAL), -1);
    EXPECT_TRUE(aborted.Contains(L"status 3, error 2"));
    StopAndExpectNothingLeft();
    for (const char* call : {
             "activate:Windows.Devices.WiFiDirect.WiFiDirectAdvertisementPublisher",
             "IWiFiDirectAdvertisementPublisher::add_StatusChanged",
             "IWiFiDirectLegacySettings::put_Passphrase",
             "IWiFiDirectAdvertisementPublisher::Start",
         }) {
        SCOPED_TRACE(call);
        runtime().Fail(call, static_cast<HRESULT>(0x80070015));
        LogCapture log;
        EXPECT_EQ(ap().Start(E_GO_PURPOSE_GENERAL), -1);
        EXPECT_TRUE(log.Contains(L"0x80070015"));
        StopAndExpectNothingLeft();
    }
}

// Wine registers none of the Wi-Fi Direct classes: the real activation
// path must fail quickly and say so.
TEST_F(WinRtLegacyAPTest, WithoutTheRuntimeClassesStartFailsAndSaysWhy) {
    runtime().UseSystem(true);
    LogCapture log;
    EXPECT_EQ(ap().Start(E_GO_PURPOSE_GENERAL), -1);
    EXPECT_TRUE(log.Contains(L"new WiFiDirectAdvertisementPublisher() failed"));
    EXPECT_TRUE(log.Contains(
        L"activating Windows.Devices.WiFiDirect.WiFiDirectAdvertisementPublisher failed, hresult "
        L"0x80040154"));

    auto& port = platform::Current().wifiDirect();
    EXPECT_FALSE(port.NewConnectionListener());
    EXPECT_FALSE(port.NewPasswordCredential());
    auto open = [&] { port.DeviceFromIdAsync(L"phone-1", [](auto, auto) { ADD_FAILURE(); }); };
    EXPECT_EQ(static_cast<uint32_t>(ThrownBy(open).hresult), 0x80040154u);
}

}  // namespace
}  // namespace connectkit::test
