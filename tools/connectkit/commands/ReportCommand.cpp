// `report time` prints the data-report time stamps; `report send` packs
// values into a report record the way the library does and shows the records
// the reporting service now holds.

#include <sstream>

#include "Context.h"
#include "commands/Commands.h"
#include "connectkit/DataReport.h"

namespace connectkit::tool {
namespace {

void Time(Context& context) {
    auto* report = SynergyDataReportClass::GetInstance();
    std::string stamp = report->GetSystemTime();
    unsigned long long ms = SynergyDataReportClass::GetCurrentMilliSecond();
    std::ostringstream text;
    text << "system time   " << stamp << "\nmilliseconds  " << ms << " since 1970-01-01 UTC\n";
    context.Print(text.str(), {{"systemTime", stamp}, {"currentMilliSecond", ms}});
}

void Send(Context& context, int32_t type, const std::vector<std::string>& values) {
    auto* report = SynergyDataReportClass::GetInstance();
    bool accepted = report->Report(static_cast<SynergyReportTypeEnum>(type), values);
    std::ostringstream text;
    nlohmann::json records = nlohmann::json::array();
    for (const auto& record : report->Records()) {
        text << "record type " << record.type << ':';
        for (const auto& value : record.values) {
            text << " [" << value << ']';
        }
        text << '\n';
        records.push_back({{"type", record.type}, {"values", record.values}});
    }
    text << (accepted ? "accepted\n" : "refused\n");
    context.Print(text.str(), {{"accepted", accepted}, {"records", records}});
    if (!accepted) {
        context.exitCode = kExitFailed;
    }
}

}  // namespace

void AddReportCommand(CLI::App& app, Context& context) {
    auto* report = app.add_subcommand(
        "report", "Data reports: the time stamp (time), packing a record (send)");
    report->require_subcommand(1);

    auto* time = report->add_subcommand("time", "Print the report time stamp and milliseconds");
    time->callback([&context] { Time(context); });

    auto* send = report->add_subcommand("send", "Report TYPE with VALUE... and show the records");
    static int32_t type = SYNERGY_REPORT_WIFI_REAL_MONITOR;
    static std::vector<std::string> values;
    send->add_option("TYPE", type, "Report type, such as 10300")->required();
    send->add_option("VALUE", values, "Values of the record, in order");
    send->callback([&context] { Send(context, type, values); });
}

}  // namespace connectkit::tool
