#pragma once
// The suite's data-reporting service and the helpers this library adds to
// it. SynergyDataReportClass belongs to the suite's closed utility library;
// where that library is absent, connectkit's substitute keeps every record
// it is given so that the host (and the connectkit tool) can read them back.

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "connectkit/Export.h"

enum SynergyReportTypeEnum : int32_t {
    // One record per connection event of the PC's own Wi-Fi link: Wi-Fi type,
    // connection state, SSID, RSSI, channel, link quality.
    SYNERGY_REPORT_WIFI_REAL_MONITOR = 10300,
};

struct SynergyReportRecord {
    SynergyReportTypeEnum type;
    std::vector<std::string> values;
};

class SynergyDataReportClass {
public:
    static SynergyDataReportClass* GetInstance();

    bool Report(SynergyReportTypeEnum type, const std::vector<std::string>& values);

    // Milliseconds since 1970-01-01 UTC.
    CONNECTKIT_API static unsigned long long GetCurrentMilliSecond();
    // Local time as "20240305-071502-009"; empty if formatting fails.
    CONNECTKIT_API std::string GetSystemTime();

    // Packs the values, in order, into the string vector Report takes
    // (strings as they are, integers in decimal) and reports them.
    template <class... Values>
    bool ReportValues(SynergyReportTypeEnum type, const Values&... values) {
        std::vector<std::string> packed;
        ExpandArgs(packed, values...);
        return Report(type, packed);
    }

    // What the substitute has been given so far, oldest first.
    std::vector<SynergyReportRecord> Records() const;
    void ClearRecords();

private:
    SynergyDataReportClass() = default;

    static void ExpandArgs(std::vector<std::string>&) {}

    template <class First, class... Rest>
    static void ExpandArgs(std::vector<std::string>& packed, const First& first,
                           const Rest&... rest) {
        if constexpr (std::is_enum_v<First>) {
            packed.push_back(std::to_string(static_cast<long long>(first)));
        } else if constexpr (std::is_integral_v<First>) {
            packed.push_back(std::to_string(first));
        } else {
            packed.emplace_back(first);
        }
        ExpandArgs(packed, rest...);
    }

    mutable std::mutex mutex_;
    std::vector<SynergyReportRecord> records_;
};

// Transfer statistics shared by the suite's modules. This library creates
// and destroys the singleton; its statistics are the suite's business.
class CONNECTKIT_API TransferDataReportClass {
public:
    static TransferDataReportClass* GetInstance();

    TransferDataReportClass(const TransferDataReportClass&);
    TransferDataReportClass& operator=(const TransferDataReportClass&);
    ~TransferDataReportClass();

private:
    TransferDataReportClass();

    std::string sessionId_;
    std::vector<std::string> pendingValues_;
    std::map<std::string, unsigned long long> byteCounts_;
};
