#include <gtest/gtest.h>

#include "connectkit/DataReport.h"
#include "platform/sim/core/VirtualClock.h"
#include "support/SimWorld.h"

namespace connectkit::test {
namespace {

class DataReportTest : public SimTest {
protected:
    void SetTime(const std::string& text, int utcOffsetMinutes = 0) {
        platform::LocalTime time;
        ASSERT_TRUE(sim::ParseLocalTime(text, time)) << text;
        pc().clock().SetLocalTime(time, utcOffsetMinutes);
    }
};

TEST_F(DataReportTest, SystemTimeIsTheLocalTimeStampAndMilliSecondsAreUtc) {
    SetTime("2024-03-05T09:05:03.007");
    EXPECT_EQ(SynergyDataReportClass::GetInstance()->GetSystemTime(), "20240305-090503-007");
    pc().clock().Sleep(3600000 + 2 * 60000 + 993);
    EXPECT_EQ(SynergyDataReportClass::GetInstance()->GetSystemTime(), "20240305-100704-000");
    // The clock carries a leap day over into March.
    SetTime("2024-02-28T23:59:59.900");
    pc().clock().Sleep(100 + 24 * 3600 * 1000);
    EXPECT_EQ(SynergyDataReportClass::GetInstance()->GetSystemTime(), "20240301-000000-000");
    // Years below 1000 are padded with blanks.
    SetTime("0999-12-31T23:59:59.999");
    EXPECT_EQ(SynergyDataReportClass::GetInstance()->GetSystemTime(), " 9991231-235959-999");
    // Milliseconds count from the Unix epoch in UTC.
    SetTime("1970-01-01T02:00:01.500", 120);
    EXPECT_EQ(SynergyDataReportClass::GetCurrentMilliSecond(), 1500u);
    pc().clock().Sleep(250);
    EXPECT_EQ(SynergyDataReportClass::GetCurrentMilliSecond(), 1750u);
}

TEST_F(DataReportTest, ValuesArePackedInOrderAndKeptByTheService) {
    auto* service = SynergyDataReportClass::GetInstance();
    service->ClearRecords();
    EXPECT_TRUE(service->ReportValues(SYNERGY_REPORT_WIFI_REAL_MONITOR, "5G",
                                      std::string("Connected"), "Home", -61, 149u,
                                      18446744073709551615ull));
    EXPECT_TRUE(service->ReportValues(static_cast<SynergyReportTypeEnum>(7)));
    auto records = service->Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].type, SYNERGY_REPORT_WIFI_REAL_MONITOR);
    EXPECT_EQ(records[0].values, (std::vector<std::string>{"5G", "Connected", "Home", "-61", "149",
                                                           "18446744073709551615"}));
    EXPECT_EQ(records[1].type, 7);
    EXPECT_TRUE(records[1].values.empty());
    service->ClearRecords();
}

}  // namespace
}  // namespace connectkit::test
