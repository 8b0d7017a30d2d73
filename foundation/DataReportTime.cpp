#include <cstdio>

#include "SDK/Util/LogTool/LogTool.h"
#include "connectkit/DataReport.h"
#include "platform/Platform.h"

unsigned long long SynergyDataReportClass::GetCurrentMilliSecond() {
    return connectkit::platform::Current().clock().UnixTimeMs();
}

std::string SynergyDataReportClass::GetSystemTime() {
    auto now = connectkit::platform::Current().clock().LocalNow();
    char buffer[128] = {};
    int length = std::snprintf(buffer, 127, "%4d%02d%02d-%02d%02d%02d-%03d", now.year, now.month,
                               now.day, now.hour, now.minute, now.second, now.milliseconds);
    if (length < 1) {
        LogWarnFun("%s sprintf_s failed.", "SynergyDataReportClass::GetSystemTime");
        return "";
    }
    return buffer;
}
