#include "connectkit/DataReport.h"

SynergyDataReportClass* SynergyDataReportClass::GetInstance() {
    static SynergyDataReportClass instance;
    return &instance;
}

bool SynergyDataReportClass::Report(SynergyReportTypeEnum type,
                                    const std::vector<std::string>& values) {
    std::lock_guard<std::mutex> lock(mutex_);
    records_.push_back(SynergyReportRecord{type, values});
    return true;
}

std::vector<SynergyReportRecord> SynergyDataReportClass::Records() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return records_;
}

void SynergyDataReportClass::ClearRecords() {
    std::lock_guard<std::mutex> lock(mutex_);
    records_.clear();
}
