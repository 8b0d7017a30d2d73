// A hundred thousand Native Wi-Fi notifications, to the WLAN network service
// and the real-time monitor at once, must leave nothing behind: no handle
// beyond the two they keep, no pending platform events, no threads, and a
// heap that stops growing.
#include <gtest/gtest.h>

#include <memory>

#include "connectkit/DataReport.h"
#include "connectkit/WifiNetworkService.h"
#include "connectkit/WifiRealMonitor.h"
#include "support/SimWorld.h"
#include "support/Soak.h"

namespace connectkit::test {
namespace {

using WifiConnectManage::WifiNetworkService;

constexpr uint64_t kNotifications = 100000 / kSoakDivisor;
constexpr uint32_t kSettleLimitMs = 30000;

class Settled final : public WifiNetworkService::IWifiNetworkServiceObserver {
public:
    Settled() : event_(Pc().clock().NewEvent(false, false)) {}
    void OnWifiStateChanged(std::wstring, WifiConnectManage::WifiConnectState state) override {
        if (state == WifiConnectManage::WifiDisConnected) {
            event_->Set();
        }
    }
    bool Wait() { return event_->Wait(kSettleLimitMs) == platform::WaitResult::Signaled; }
    void Reset() { event_->Reset(); }

private:
    std::unique_ptr<platform::Event> event_;
};

using WifiSoakTest = SimTest;

TEST_F(WifiSoakTest, NotificationsLeaveNothingBehind) {
    ApplyExampleWorld("wifi-phone-ap");
    auto* service = WifiNetworkService::GetInstance();
    auto* reports = SynergyDataReportClass::GetInstance();
    Settled settled;
    ASSERT_TRUE(service->RegistObserver(&settled));
    ASSERT_TRUE(StartWifiRealMonitor());
    // Opens the service's handle, which it keeps for the process's life.
    ASSERT_TRUE(service->Scan());
    auto before = pc().TakeCensus();
    size_t heapAfterWarmUp = 0;
    uint64_t start = pc().wlan().History().notifications;
    for (int cycle = 1; pc().wlan().History().notifications - start < kNotifications; ++cycle) {
        settled.Reset();
        ASSERT_TRUE(service->Connect(L"DIRECT-Xy-PHONE", L"8aK3pQ2m", false, 0, {}, false));
        ASSERT_TRUE(settled.Wait()) << "cycle " << cycle;
        service->DisConnnect();
        pc().clock().Sleep(100);
        // The report service keeps what it is given; that is the host's
        // memory, not ours.
        reports->ClearRecords();
        if (cycle == 200) {
            heapAfterWarmUp = HeapInUse();
        }
    }
    StopWifiRealMonitor();
    service->UnregistObserver(&settled);
    pc().clock().Sleep(1000);
    auto after = ExpectNothingLeftBehind(before, heapAfterWarmUp);
    EXPECT_EQ(after.wlanHandles, before.wlanHandles - 1) << "the monitor closes its handle";
}

}  // namespace
}  // namespace connectkit::test
